#include "RayWorldSnapshot.h"

#include <btBulletCollisionCommon.h>

RayWorldSnapshot::RayWorldSnapshot() = default;

RayWorldSnapshot::~RayWorldSnapshot()
{
    if (collisionWorld)
        for (const auto& object : objects)
            collisionWorld->removeCollisionObject(object.get());
}

std::shared_ptr<RayWorldSnapshot> RayWorldSnapshot::capture(const btCollisionWorld& world)
{
    std::shared_ptr<RayWorldSnapshot> snapshot(new RayWorldSnapshot);
    const btCollisionObjectArray& objects = world.getCollisionObjectArray();
    for (int i = 0; i < objects.size(); ++i) {
        const auto* part = static_cast<const ArmorPart*>(objects[i]->getUserPointer());
        if (!part || part->triangles.isEmpty())
            continue;
        auto plate = std::make_unique<Plate>();
        plate->part.name = part->name;
        plate->part.thickness = part->thickness;
        plate->part.spaced = part->spaced;
        plate->part.triangles = part->triangles;
        plate->transform = objects[i]->getWorldTransform();
        snapshot->plates.push_back(std::move(plate));
    }
    return snapshot;
}

void RayWorldSnapshot::build()
{
    configuration = std::make_unique<btDefaultCollisionConfiguration>();
    dispatcher = std::make_unique<btCollisionDispatcher>(configuration.get());
    broadphase = std::make_unique<btSimpleBroadphase>(int(plates.size()) + 1);
    collisionWorld =
        std::make_unique<btCollisionWorld>(dispatcher.get(), broadphase.get(), configuration.get());
    for (const auto& plate : plates) {
        auto mesh = std::make_unique<btTriangleMesh>(true, false);
        for (const ArmorTriangle& triangle : plate->part.triangles) {
            const auto& [a, b, c] = triangle.corners;
            mesh->addTriangle({a[0], a[1], a[2]}, {b[0], b[1], b[2]}, {c[0], c[1], c[2]}, false);
        }
        auto shape = std::make_unique<btBvhTriangleMeshShape>(mesh.get(), true, true);
        auto object = std::make_unique<btCollisionObject>();
        object->setCollisionShape(shape.get());
        object->setWorldTransform(plate->transform);
        object->setUserPointer(&plate->part);
        plate->part.object = object.get();
        plate->part.shape = shape.get();
        collisionWorld->addCollisionObject(object.get(), 1, -1);
        meshes.push_back(std::move(mesh));
        shapes.push_back(std::move(shape));
        objects.push_back(std::move(object));
    }
}
