#include "CollisionArmor.h"

#include "Log.h"
#include "MoReaderCached.h"
#include "VehicleFile.h"

#include <QBrush>
#include <QColor>
#include <QStandardItemModel>

#include <algorithm>
#include <cmath>

namespace {

template <typename Record> void deleteAll(QList<Record*>& list)
{
    qDeleteAll(list);
    list.clear();
}

QString translated(const QString& key)
{
    MoReaderCached* catalogues = MoReaderCached::instance();
    return catalogues ? catalogues->translate(key) : key;
}

// Spaced armour carries a vehicleDamageFactor as its first child element.
bool isSpaced(const QDomElement& element)
{
    return element.firstChildElement().tagName() == QLatin1String("vehicleDamageFactor");
}

// "nan" and "inf" parse as numbers but order nothing: the lists and the
// colour table sort by thickness, so such a plate counts as 0 mm.
float thickness(const QDomElement& element)
{
    const float value = element.firstChild().toText().data().toFloat();
    if (std::isfinite(value))
        return value;
    Log::log(QStringLiteral("Armour ") + element.tagName() +
                 QStringLiteral(" has no finite thickness; read as 0 mm."),
             Log::Warning);
    return 0;
}

// Every armour element below list, each as (thickness, name, spaced).
template <typename Add> void forEachArmor(const QDomElement& list, int startIndex, Add add)
{
    for (const QDomElement& element : listedElements(list, startIndex))
        add(thickness(element), element.tagName(), isSpaced(element));
}

// (value - selected) / selected, dividing by 1 when nothing was selected
// with a value of 0.
bool differs(float value, float selected)
{
    const float divisor = selected == 0.0f ? 1.0f : selected;
    return std::fabs((value - selected) / divisor) >= 1.1920929e-07f;
}

template <typename Record>
Record findArmor(const QList<Record*>& list, const QString& name, const QString* owner)
{
    Record found;
    for (const Record* record : list) {
        if (record->name != name)
            continue;
        if constexpr (std::is_same_v<Record, OwnedArmorValue>)
            if (record->owner != *owner)
                continue;
        found = *record;
    }
    return found;
}

} // namespace

CollisionArmor::CollisionArmor(QObject* parent) : QObject(parent) {}

CollisionArmor::~CollisionArmor()
{
    clear();
}

void CollisionArmor::clear()
{
    deleteAll(chassisArmor);
    deleteAll(hullArmor);
    deleteAll(gunArmor);
    deleteAll(turretArmor);
    spacedColors.clear();
    regularColors.clear();
    spacedValues.clear();
    regularValues.clear();
    finished = false;
    regularSelected = spacedSelected = false;
    selectedRegular = selectedSpaced = -1;
}

void CollisionArmor::addValue(float value, bool spaced)
{
    QVector<float>& values = spaced ? spacedValues : regularValues;
    if (!values.contains(value))
        values.append(value);
}

void CollisionArmor::addChassisArmor(float value, const QString& name, bool spaced)
{
    chassisArmor.append(new ArmorValue{value, name, spaced});
    addValue(value, spaced);
}

void CollisionArmor::addHullArmor(float value, const QString& name, bool spaced)
{
    hullArmor.append(new ArmorValue{value, name, spaced});
    // The surveying device has a colour of its own, not a thickness's.
    if (!spaced && name == QLatin1String("surveyingDevice"))
        return;
    addValue(value, spaced);
}

void CollisionArmor::addTurretArmor(float value, const QString& name, const QString& owner,
                                    bool spaced)
{
    auto* record = new OwnedArmorValue;
    *static_cast<ArmorValue*>(record) = {value, name, spaced};
    record->owner = owner;
    turretArmor.append(record);
    addValue(value, spaced);
}

void CollisionArmor::addGunArmor(float value, const QString& name, const QString& owner,
                                 bool spaced)
{
    auto* record = new OwnedArmorValue;
    *static_cast<ArmorValue*>(record) = {value, name, spaced};
    record->owner = owner;
    gunArmor.append(record);
    addValue(value, spaced);
}

void CollisionArmor::finish()
{
    finished = true;
    std::sort(spacedValues.begin(), spacedValues.end());
    std::sort(regularValues.begin(), regularValues.end());

    // Thin armour red, then yellow, the thickest towards green.
    if (!regularValues.isEmpty()) {
        const int step = 2 * (255 / int(regularValues.size()));
        int red = 255;
        int green = 0;
        for (int i = 0; i < regularValues.size(); ++i) {
            if (i > 0) {
                if (green < 255)
                    green = std::min(green + step, 255);
                else
                    red -= step;
            }
            regularColors.insert(regularValues[i], {float(red), float(green), 0, 0});
        }
    }
    // Spaced armour from magenta towards white.
    const int spacedStep = 255 / std::max(int(spacedValues.size()), 1);
    for (int i = 0; i < spacedValues.size(); ++i)
        spacedColors.insert(spacedValues[i], {255, float(i * spacedStep), 255, 0});

    if (regularModel)
        regularModel->deleteLater();
    if (spacedModel)
        spacedModel->deleteLater();
    regularModel = buildModel(regularValues, regularColors);
    spacedModel = buildModel(spacedValues, spacedColors);
    if (tablesChanged)
        tablesChanged(regularModel, spacedModel);
}

QStandardItemModel* CollisionArmor::buildModel(const QVector<float>& values,
                                               const QMap<float, Colour>& colours)
{
    auto* model = new QStandardItemModel(0, 1, this);
    model->setHorizontalHeaderItem(0, new QStandardItem);
    for (int row = 0; row < values.size(); ++row) {
        const Colour colour = colours.value(values[row]);
        auto* item = new QStandardItem(QString::number(values[row], 'g', 6));
        item->setBackground(
            QBrush(QColor(int(colour[0]), int(colour[1]), int(colour[2]), 255), Qt::SolidPattern));
        model->setItem(row, 0, item);
    }
    return model;
}

void CollisionArmor::read(const ArmorSource& source)
{
    clear();
    const QDomElement root = source.vehicle.documentElement();
    forEachArmor(
        root.firstChildElement(QStringLiteral("hull")).firstChildElement(QStringLiteral("armor")),
        source.startIndex, [this](float value, const QString& name, bool spaced) {
            addHullArmor(value, name, spaced);
        });
    // Only the first chassis of a vehicle counts.
    const QVector<QDomElement> chassisList =
        listedElements(root.firstChildElement(QStringLiteral("chassis")), source.startIndex);
    if (!chassisList.isEmpty())
        forEachArmor(chassisList.first().firstChildElement(QStringLiteral("armor")),
                     source.startIndex, [this](float value, const QString& name, bool spaced) {
                         addChassisArmor(value, name, spaced);
                     });
    readTurretsAndGuns(source);
}

void CollisionArmor::readTurretsAndGuns(const ArmorSource& source)
{
    const QDomElement root = source.vehicle.documentElement();
    const QDomElement sharedGuns =
        source.guns.documentElement().firstChildElement(QStringLiteral("shared"));
    const auto turrets =
        listedElements(root.firstChildElement(QStringLiteral("turrets0")), source.startIndex);
    for (const QDomElement& turretElement : turrets) {
        const QString userString =
            turretElement.firstChildElement(QStringLiteral("userString")).text();
        const QString owner = translated(userString);
        const QDomElement armor = turretElement.firstChildElement(QStringLiteral("armor"));
        if (owner == source.turret)
            forEachArmor(armor, source.startIndex,
                         [&](float value, const QString& name, bool spaced) {
                             addTurretArmor(value, name, owner, spaced);
                         });
        // Guns of every turret, fitted or not: a gun is found by its name.
        const QString prefix = userString.section(QLatin1Char(':'), 0, 0);
        const auto guns = listedElements(turretElement.firstChildElement(QStringLiteral("guns")),
                                         source.startIndex);
        for (const QDomElement& gunElement : guns) {
            const QString tag = gunElement.tagName();
            const QString gunName =
                source.sharedGun ? translated(sharedGuns.firstChildElement(tag)
                                                  .firstChildElement(QStringLiteral("userString"))
                                                  .text())
                                 : translated(prefix + QLatin1Char(':') + tag);
            if (gunName != source.gun)
                continue;
            forEachArmor(gunElement.firstChildElement(QStringLiteral("armor")), source.startIndex,
                         [&](float value, const QString& name, bool spaced) {
                             addGunArmor(value, name, gunName, spaced);
                         });
        }
    }
}

ArmorValue CollisionArmor::chassisArmorFor(const QString& name) const
{
    return findArmor(chassisArmor, name, nullptr);
}

ArmorValue CollisionArmor::hullArmorFor(const QString& name) const
{
    return findArmor(hullArmor, name, nullptr);
}

OwnedArmorValue CollisionArmor::turretArmorFor(const QString& name, const QString& owner) const
{
    return findArmor(turretArmor, name, &owner);
}

OwnedArmorValue CollisionArmor::gunArmorFor(const QString& name, const QString& owner) const
{
    return findArmor(gunArmor, name, &owner);
}

Colour CollisionArmor::colourFor(float value, bool spaced, bool surveying) const
{
    if (surveying) {
        const QColor purple(QStringLiteral("purple"));
        return {float(purple.redF()), float(purple.greenF()), float(purple.blueF()), 1};
    }
    const bool selected = spaced ? spacedSelected : regularSelected;
    const float selectedValue = spaced ? selectedSpaced : selectedRegular;
    Colour colour{0, 0, 0, 0};
    if (selected && differs(value, selectedValue)) {
        const QColor grey(QStringLiteral("darkgrey"));
        colour = {float(grey.red()), float(grey.green()), float(grey.blue()), 0};
    } else {
        colour = (spaced ? spacedColors : regularColors).value(value, Colour{0, 0, 0, 0});
    }
    const float toUnit = 0.003921569f;
    return {colour[0] * toUnit, colour[1] * toUnit, colour[2] * toUnit, 1};
}

bool CollisionArmor::toggleRegularSelection(float value)
{
    regularSelected = differs(value, selectedRegular);
    selectedRegular = regularSelected ? value : -1.0f;
    return regularSelected;
}

bool CollisionArmor::toggleSpacedSelection(float value)
{
    spacedSelected = differs(value, selectedSpaced);
    selectedSpaced = spacedSelected ? value : -1.0f;
    return spacedSelected;
}
