#pragma once

#include <QString>

class TankLoader;
struct ToolArguments;

// The state, turret, gun and angles a command shows the vehicle in:
// --state intact|destroyed|collision, --turret NAME, --gun NAME (display
// name or tag), --yaw DEG, --turret-yaw DEG, --gun-pitch DEG.
struct VehiclePose
{
    int state = 0; // TankModel
    QString turret;
    QString gun;
    float yaw = 0;
    float turretYaw = 0;
    float gunPitch = 0;
};

// False, with the reason on standard error, for a value that is not one.
bool readVehiclePose(const ToolArguments& arguments, VehiclePose* pose);
bool readState(const QString& text, int* state);
// Fits the turret and gun asked for (a gun alone may bring its turret);
// false, with the choices on standard error, for names the vehicle lacks.
bool fitTurretAndGun(TankLoader& loader, const VehiclePose& pose);
// The state and the three rotations onto the loader.
void placeVehicle(TankLoader& loader, const VehiclePose& pose);

// The path as the file system resolves it, for a file that may not exist
// yet; empty when its folder does not exist.
QString resolvedPath(const QString& path);
bool insideFolder(const QString& path, const QString& folder);
