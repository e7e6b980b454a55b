#pragma once

#include "Singleton.h"

#include <QDomDocument>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVector>

#include <array>
#include <functional>

class QStandardItemModel;

// One armour material of a chassis or hull: the name is the tag of its
// element and the material name of the collision model's groups.
struct ArmorValue
{
    float value = 0; // mm, as the file gives it
    QString name;
    bool spaced = false;
};

// One armour material of a turret or gun, with the display name of its owner.
struct OwnedArmorValue : ArmorValue
{
    QString owner;
};

// Red, green, blue, alpha.
using Colour = std::array<float, 4>;

// Where the armour read looks: the vehicle document as the assembly read it,
// with the turret and gun now fitted.
struct ArmorSource
{
    QDomDocument vehicle;
    QDomDocument guns; // components/guns.xml
    int startIndex = 0;
    // The last gun the assembly read took its data from the gun file.
    bool sharedGun = false;
    QString turret; // display names
    QString gun;
};

// The armour table of the vehicle on screen: each material of the four
// parts with its thickness and kind, and the colours each thickness shows
// in, on the collision model and in the window's two armour lists.
class CollisionArmor : public QObject, public Singleton<CollisionArmor>
{
    Q_OBJECT
public:
    explicit CollisionArmor(QObject* parent = nullptr);
    ~CollisionArmor() override;

    void clear();
    void addChassisArmor(float value, const QString& name, bool spaced);
    void addHullArmor(float value, const QString& name, bool spaced);
    void addTurretArmor(float value, const QString& name, const QString& owner, bool spaced);
    void addGunArmor(float value, const QString& name, const QString& owner, bool spaced);
    // Sorts the thicknesses, builds their colours and the two list models.
    void finish();

    // Hull, chassis, the fitted turret and gun of source, after a clear();
    // finish() is left to the caller, who first puts the armour on the
    // collision meshes.
    void read(const ArmorSource& source);

    ArmorValue chassisArmorFor(const QString& name) const;
    ArmorValue hullArmorFor(const QString& name) const;
    OwnedArmorValue turretArmorFor(const QString& name, const QString& owner) const;
    OwnedArmorValue gunArmorFor(const QString& name, const QString& owner) const;
    // In the range 0 to 1.
    Colour colourFor(float value, bool spaced, bool surveying) const;

    // A click on a row of the regular (or spaced) list: selects its value,
    // or clears the selection when the value is selected already. Answers
    // whether a value is selected afterwards; when not, the view's own
    // selection is to be cleared.
    bool toggleRegularSelection(float value);
    bool toggleSpacedSelection(float value);

    QList<ArmorValue*> chassisArmor;
    QList<ArmorValue*> hullArmor;
    QList<OwnedArmorValue*> gunArmor;
    QList<OwnedArmorValue*> turretArmor;
    QMap<float, Colour> spacedColors;
    QMap<float, Colour> regularColors;
    QVector<float> spacedValues;
    QVector<float> regularValues;
    bool finished = false;
    bool regularSelected = false;
    bool spacedSelected = false;
    float selectedRegular = -1;
    float selectedSpaced = -1;
    // "Hide Spaced Armor": spaced plates are not drawn (still hit).
    bool hideSpacedArmor = false;

    // The models of armorTableView and spacedArmorTableView, made anew by
    // each finish(); the old ones go with deleteLater. Owned.
    QStandardItemModel* regularModel = nullptr;
    QStandardItemModel* spacedModel = nullptr;
    // Called after finish() has made new models, for the window to set them
    // on its views.
    std::function<void(QStandardItemModel* regular, QStandardItemModel* spaced)> tablesChanged;

private:
    void addValue(float value, bool spaced);
    QStandardItemModel* buildModel(const QVector<float>& values,
                                   const QMap<float, Colour>& colours);
    void readTurretsAndGuns(const ArmorSource& source);
};
