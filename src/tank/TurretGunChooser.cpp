#include "TurretGunChooser.h"

const Gun* Turret::gun(const QString& gunName) const
{
    for (const Gun& candidate : guns)
        if (candidate.name == gunName)
            return &candidate;
    return nullptr;
}

TurretGunChooser::TurretGunChooser(QObject* parent) : QObject(parent) {}

void TurretGunChooser::setTurrets(const QVector<Turret>& list)
{
    turrets = list;
    valid = true;
}

void TurretGunChooser::clear()
{
    turrets.clear();
    valid = false;
    currentGunName.clear();
    currentTurretName.clear();
}

const Turret* TurretGunChooser::turret(const QString& turretName) const
{
    for (const Turret& candidate : turrets)
        if (candidate.name == turretName)
            return &candidate;
    return nullptr;
}

const Turret* TurretGunChooser::currentTurret() const
{
    return turret(currentTurretName);
}

const Gun* TurretGunChooser::currentGun() const
{
    for (const Turret& candidate : turrets)
        if (const Gun* found = candidate.gun(currentGunName))
            return found;
    return nullptr;
}

bool TurretGunChooser::turretHasGun(const QString& gunName) const
{
    const Turret* fitted = currentTurret();
    return fitted && fitted->gun(gunName);
}
