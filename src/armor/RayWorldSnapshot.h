#pragma once

#include "CollisionMesh.h"

#include <LinearMath/btTransform.h>

#include <QVector>

#include <memory>
#include <vector>

class btCollisionWorld;

// A copy of the ray world as it stands, for work off the GUI thread, which
// keeps moving and replacing the plates of the live one: each plate's name,
// thickness, triangles and place. capture() copies on the GUI thread and
// builds nothing; build() makes the copy's own Bullet world, on any thread.
class RayWorldSnapshot
{
public:
    struct Plate
    {
        ArmorPart part; // object and shape are the snapshot's own
        btTransform transform;
    };

    static std::shared_ptr<RayWorldSnapshot> capture(const btCollisionWorld& world);
    ~RayWorldSnapshot();

    void build();
    // The world of build().
    const btCollisionWorld& world() const { return *collisionWorld; }
    int plateCount() const { return int(plates.size()); }

private:
    RayWorldSnapshot();

    std::vector<std::unique_ptr<Plate>> plates;
    std::vector<std::unique_ptr<class btTriangleMesh>> meshes;
    std::vector<std::unique_ptr<class btCollisionShape>> shapes;
    std::vector<std::unique_ptr<class btCollisionObject>> objects;
    std::unique_ptr<class btDefaultCollisionConfiguration> configuration;
    std::unique_ptr<class btCollisionDispatcher> dispatcher;
    std::unique_ptr<class btBroadphaseInterface> broadphase;
    std::unique_ptr<btCollisionWorld> collisionWorld;
};
