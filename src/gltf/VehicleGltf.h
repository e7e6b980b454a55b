#pragma once

#include <QString>

class TankLoader;

// The vehicle a loader shows, in the state shown (the armour model in
// armour mode), with its turret and gun as fitted and turned, as a glTF 2.0
// asset: a root node for the vehicle turned by its yaw; chassis and hull
// below it; the turret below the hull, its origin the turret's pivot and
// its rotation the turret's; the gun below the turret, likewise. One mesh
// for each part, one primitive for each primitive group; in the collision
// state a node and mesh for each armour plate, whose material carries the
// armour in its extras. Coordinates are the viewport's (the game's with x
// negated), in metres, +Y up. Hidden parts and plates stay out.
//
// Writes .glb or .gltf by the suffix of path, whole or not at all. Needs
// the context of the loader's meshes and textures current. False with the
// reason in error.
bool exportVehicleGltf(TankLoader& loader, const QString& path, QString* error);
