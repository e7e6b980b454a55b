#pragma once

#include "Maths.h"

#include <QString>

class Mesh;

// The collision state of a vehicle (TankModel 2) and its armour read, which
// the armour inspection provides: the assembly knows neither the ray world
// nor the armour tables, and installs this through
// TankLoader::setCollisionState. Parts are TankLoader::Part numbers.
class CollisionState
{
public:
    virtual ~CollisionState() = default;

    // The collision mesh of a part; the loader takes it into its lists and
    // owns it from then on.
    virtual Mesh* createMesh(int part) = 0;
    // Before a vehicle is loaded: the ray world emptied.
    virtual void clearWorld() = 0;
    // Loads the collision model of a part at offset on the loader's chain.
    virtual bool load(int part, const QString& path, const Vector3& offset) = 0;
    // Takes every collision object out of the ray world (a turret or gun
    // change follows).
    virtual void removeFromWorld() = 0;
    // The armour tables of the loaded vehicle and its present turret and
    // gun, put on the collision meshes.
    virtual void readArmor() = 0;
};
