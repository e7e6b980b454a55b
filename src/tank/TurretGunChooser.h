#pragma once

#include "GunShells.h"
#include "Singleton.h"
#include "XmlHelpers.h"

#include <QObject>
#include <QString>
#include <QVector>

// One gun a turret may carry, as the vehicle file and the shared gun file
// describe it. Angles are degrees, as the window's spin boxes want them.
struct Gun
{
    QString tag;
    QString name; // translated; the key of the choice
    QString undamagedModel;
    QString destroyedModel;
    QString collisionModel;
    // Both 0 when the gun adds no yaw limit of its own.
    float yawMin = 0;
    float yawMax = 0;
    Vector4 tiling{1, 1, 1, 1};
    // Minus the second and minus the first number of the file's pitchLimits.
    float pitchMin = 0;
    float pitchMax = 0;
    Vector3 back{0, 0, 0};
    Vector3 front{0, 0, 0};
    QString exclusionMask;
    // The vehicle file's own shots, else the gun file's; may be empty.
    QVector<Shell> shells;
};

// One turret of a vehicle with the guns it may carry. Positions have x
// negated, as every position read from the game's files.
struct Turret
{
    QString tag;
    QString name; // translated userString; the key of the choice
    QString exclusionMask;
    Vector4 tiling{1, 1, 1, 1};
    Vector3 position{0, 0, 0};
    Vector3 gunPosition{0, 0, 0};
    Vector3 hullPosition{0, 0, 0};
    QString undamagedModel;
    QString collisionModel;
    QString destroyedModel;
    int maxHealth = 0;
    float yawMin = 0;
    float yawMax = 0;
    QVector<Gun> guns;

    const Gun* gun(const QString& gunName) const;
};

// The shared record of what a loaded vehicle may be fitted with and what is
// fitted now. TankLoader fills it; the window reads it and changes the
// choice through TankLoader.
class TurretGunChooser : public QObject, public Singleton<TurretGunChooser>
{
    Q_OBJECT
public:
    explicit TurretGunChooser(QObject* parent = nullptr);

    void setTurrets(const QVector<Turret>& list);
    void clear();

    // Null when the list is empty or nothing has the current name.
    const Turret* currentTurret() const;
    // The first gun of that name, turret by turret in list order.
    const Gun* currentGun() const;
    bool turretHasGun(const QString& gunName) const;
    const Turret* turret(const QString& turretName) const;

    QVector<Turret> turrets;
    bool valid = false;
    QString currentGunName;
    QString currentTurretName;
};
