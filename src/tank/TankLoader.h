#pragma once

#include "CollisionState.h"
#include "Singleton.h"
#include "TankWindowSink.h"
#include "TransformChain.h"
#include "VehicleFile.h"

#include <QDomDocument>
#include <QObject>
#include <QString>
#include <QVector>

#include <memory>

class Material;
class Mesh;
class ShaderProgram;
class TankInfo;
class TankMesh;
class TurretGunChooser;

// The state of a vehicle: which of its models is shown.
enum TankModel
{
    Intact = 0,
    Destroyed = 1,
    Collision = 2
};

// Turns the display name of a vehicle into its placed parts: reads the
// vehicle file and the shared gun file, fills the turret and gun choice,
// loads chassis, hull, turret and gun in each state and draws them on one
// transform chain. Works without a window; what it shows there goes through
// `window`.
class TankLoader : public QObject, public Singleton<TankLoader>
{
    Q_OBJECT
public:
    enum Part
    {
        ChassisPart = 0,
        HullPart,
        TurretPart,
        GunPart,
        PartCount
    };
    // Where the vehicle file was found.
    enum class Source
    {
        None,
        ModFolder,
        LooseFile,
        Archive
    };
    // Intact and destroyed have meshes; the collision state gets its own
    // meshes with the armour inspection.
    static constexpr int MeshStates = 2;

    explicit TankLoader(QObject* parent = nullptr);
    ~TankLoader() override;

    void unload();
    bool reload();
    void changeTurret(const QString& turretName);
    void loadTurretGun(const QString& turretName, const QString& gunName);
    void applyLimits();
    void showVisualText();
    // pass 0: depth pass, 1: colour pass.
    void render(int pass);
    int triangleCount() const;
    void setTankRotation(float angle);
    void setTurretRotation(float angle);
    void setGunRotation(float angle);

    // The mesh of a part in a state; null for a state without meshes.
    TankMesh* mesh(int part, int state) const;
    // The same for any state, the collision state included.
    Mesh* partMesh(int part, int state) const;

    // Gives the loader its collision state (state 2 and the armour read);
    // without one a vehicle has no collision state. Once, before a load.
    void setCollisionState(std::unique_ptr<CollisionState> state);
    CollisionState* collisionState() const { return collision.get(); }
    // Puts the collision objects where the vehicle stands, with the turret
    // and gun as turned, without drawing: what each frame of armour mode
    // does before the intact model is drawn.
    void placeCollisionModels();
    // Runs the chain of a state's parts as a frame does, drawing nothing:
    // afterwards each part's Mesh::placement is where the frame puts it.
    void placeParts(int state);
    // Where the turret turns and where the gun pitches, in the frame the
    // chain stands in when each is applied (the hull's, the turret's).
    Vector3 turretPivot(int state) const;
    Vector3 gunPivot(int state) const;
    static QString sourceName(Source source);

    QString tier;
    QString name;
    QString category;
    QString nation;
    QVector<Mesh*> chassis;
    QVector<Mesh*> hull;
    QVector<Mesh*> turret;
    QVector<Mesh*> gun;
    bool loaded = false;
    bool wireframe = false;
    bool solidWire = false;
    bool texturesFromArchives = false;
    bool hideChassis = false;
    bool hideHull = false;
    bool hideTurret = false;
    bool hideGun = false;
    bool gridTexture = false;
    bool armourMode = false;
    int damageMode = Intact;
    int armourModel = 0;
    int loadedState = 0;
    QDomDocument vehicleDocument;
    QDomDocument gunDocument;
    bool sharedGun = false;
    int startIndex = 0;
    int chassisHealth = 0;
    int hullHealth = 0;
    int turretHealth = 0;
    TransformChain chain;
    Matrix tankRotation;
    Matrix turretRotation;
    Matrix gunRotation;

    // The vehicle as read from its files, its path and where it was found.
    VehicleFile vehicle;
    QString vehicleFilePath;
    Source vehicleSource = Source::None;

    TankWindowSink window;
    TankInfo* info;
    TurretGunChooser* chooser;

signals:
    void tankLoaded();

public slots:
    bool load(QString tankName);
    // The OBJ files of chassis, hull, turret and gun of the state shown, at
    // zero rotation, below the mod folder. False when nothing is loaded, the
    // state has no meshes, or a part could not be written (the other parts
    // are written all the same).
    bool exportAll();
    void damageModeChanged(TankModel model);
    void armorToggle(bool val);

private:
    // Opens the vehicle file and the gun file and reads them into vehicle;
    // false (with a log line and a box) when the vehicle cannot be assembled.
    bool readVehicle(const QString& tankName);
    bool loadState(int state);
    bool loadCollisionState();
    bool loadCollisionTurretAndGun(const Turret& turretRecord);
    void readArmor();
    bool loadTurretAndGun(int state, const Turret& turretRecord, const Gun& gunRecord);
    void loadExclusionMasks();
    // Unloads what a failed load left, so that nothing half-built is drawn.
    void abandonLoad();
    void unloadMeshes();
    void drawParts(int state, int pass, Material* material, ShaderProgram* shader,
                   bool allHidden = false);
    void resetChain();
    bool failLoad(const QString& tankName, const QString& reason);

    std::unique_ptr<CollisionState> collision;
};
