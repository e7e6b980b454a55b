#pragma once

#include "CollisionState.h"

class CollisionArmor;
class CollisionMesh;
class TankLoader;

// The armour view's side of the vehicle assembly: the four collision
// meshes of state 2, the ray world's part in a load and the armour read.
// Install it on a TankLoader with installArmorCollisionState; it makes the
// loader's CollisionArmor.
class ArmorCollisionState : public CollisionState
{
public:
    explicit ArmorCollisionState(TankLoader& loader);

    Mesh* createMesh(int part) override;
    void clearWorld() override;
    bool load(int part, const QString& path, const Vector3& offset) override;
    void removeFromWorld() override;
    void readArmor() override;

    CollisionMesh* mesh(int part) const;

    CollisionArmor* armor;

private:
    TankLoader& loader;
    CollisionMesh* meshes[4] = {};
};

// Gives loader its collision state and armour table; the ray world is the
// Physics singleton, which must exist for rays to meet anything.
ArmorCollisionState* installArmorCollisionState(TankLoader& loader);

class Physics;
class RenderWidget;

// Ties the ray world to the viewport: its Ctrl + left click fires
// physics.fireRay, and the shot's marker and line show in it; the debug
// drawer draws into its ray lines. Call once the viewport's GL has started.
void connectArmorViewport(RenderWidget& widget, Physics& physics);
