#include "ArmorCollisionState.h"

#include "CollisionArmor.h"
#include "CollisionMesh.h"
#include "Physics.h"
#include "RenderWidget.h"
#include "TankLoader.h"
#include "TurretGunChooser.h"

#include <memory>

ArmorCollisionState::ArmorCollisionState(TankLoader& owner)
    : armor(new CollisionArmor(&owner)), loader(owner)
{
}

Mesh* ArmorCollisionState::createMesh(int part)
{
    if (part < 0 || part >= TankLoader::PartCount)
        return nullptr;
    meshes[part] = new CollisionMesh(&loader.chain);
    meshes[part]->partType = part;
    return meshes[part];
}

CollisionMesh* ArmorCollisionState::mesh(int part) const
{
    return part >= 0 && part < TankLoader::PartCount ? meshes[part] : nullptr;
}

void ArmorCollisionState::clearWorld()
{
    if (Physics* physics = Physics::instance())
        physics->clear();
    armor->clear();
}

bool ArmorCollisionState::load(int part, const QString& path, const Vector3& offset)
{
    CollisionMesh* target = mesh(part);
    if (!target)
        return false;
    // The chassis starts the chain the collision parts are placed on.
    if (part == TankLoader::ChassisPart)
        loader.chain.reset();
    return target->load(path, offset, part);
}

void ArmorCollisionState::removeFromWorld()
{
    for (CollisionMesh* collisionMesh : meshes)
        if (collisionMesh)
            collisionMesh->removeFromWorld();
}

void ArmorCollisionState::readArmor()
{
    ArmorSource source;
    source.vehicle = loader.vehicleDocument;
    source.guns = loader.gunDocument;
    source.startIndex = loader.startIndex;
    source.sharedGun = loader.sharedGun;
    source.turret = loader.chooser->currentTurretName;
    source.gun = loader.chooser->currentGunName;
    armor->read(source);
    for (CollisionMesh* collisionMesh : meshes)
        if (collisionMesh)
            collisionMesh->assignArmor();
    armor->finish();
}

ArmorCollisionState* installArmorCollisionState(TankLoader& loader)
{
    auto inspection = std::make_unique<ArmorCollisionState>(loader);
    ArmorCollisionState* installed = inspection.get();
    loader.setCollisionState(std::move(inspection));
    return installed;
}

void connectArmorViewport(RenderWidget& widget, Physics& physics)
{
    widget.rayFired = [&physics](const Vector3& from, const Vector3& to) {
        physics.fireRay(from, to);
    };
    physics.marks.moveHitMarker = [&widget](const Vector3& position) {
        widget.hitMarker.setPosition(position);
    };
    physics.marks.rayLine = [&widget](const Vector3& start, const Vector3& end) {
        widget.rayStart = start;
        widget.rayEnd = end;
    };
    physics.debugDrawer.lines = &widget.rayLines;
}
