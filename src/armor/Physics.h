#pragma once

#include "GLDebugDrawer.h"
#include "RayResult.h"
#include "ShellParamaters.h"
#include "Singleton.h"

#include <LinearMath/btAlignedObjectArray.h>

#include <QObject>

#include <functional>
#include <memory>

class btBroadphaseInterface;
class btCollisionConfiguration;
class btCollisionDispatcher;
class btCollisionObject;
class btCollisionShape;
class btCollisionWorld;
class btStridingMeshInterface;

// Where the shot shows in the viewport, reached without depending on it:
// the window fills these in; an empty one goes nowhere.
struct ShotMarks
{
    // The hit marker's new place; (999, 999, 999) hides it.
    std::function<void(const Vector3& position)> moveHitMarker;
    // The line of the shell's path, drawn in armour mode.
    std::function<void(const Vector3& start, const Vector3& end)> rayLine;
};

// One ray's walk through the plates, before anything is published.
struct RayWalk
{
    // Every plate met, exit hits included, nearest first; empty on a miss.
    RayResultsList walked;
    // Where the drawn line ends: the last plate walked, the travel limit,
    // or the ray's end on a miss.
    Vector3 rayEnd{0, 0, 0};
    // Just in front of the first hit, toward the eye.
    Vector3 firstHit{999, 999, 999};

    // The plates a report lists: the walk without its exit hits.
    RayResultsList published() const;
};

// The ray world of the armour inspection: one triangle mesh object per
// armour plate of the vehicle, used for ray tests alone. fireRay sends a
// shell along a ray, walks the plates it meets through the penetration
// rules and publishes them, nearest first, with rayHit.
class Physics : public QObject, public Singleton<Physics>
{
    Q_OBJECT
public:
    explicit Physics(QObject* parent = nullptr);
    ~Physics() override;

    // from: the camera's eye; to: the ray's end point, used as it is.
    void fireRay(const Vector3& from, const Vector3& to);
    // The walk of fireRay alone: no marker, no line, no signal. Only reads
    // the world, so several threads may walk one world that nobody changes.
    static RayWalk walkRay(const btCollisionWorld& world, const Vector3& from, const Vector3& to,
                           ShellParamaters shell);
    // Empties the world: every plate object and shape is deleted.
    void clear();
    // Physics owns the shape from here (and deletes it with clear()).
    void addShape(btCollisionShape* shape);
    // A plate's object with its shape and triangles, owned from here; it
    // enters the world through world().
    void adopt(btCollisionObject* object, btCollisionShape* shape, btStridingMeshInterface* mesh);
    btCollisionWorld* world() const { return collisionWorld.get(); }

    GLDebugDrawer debugDrawer;
    Vector3 rayEnd{0, 0, 0};
    Vector3 rayStart{0, 0, 0};
    Vector3 hitMarker{999, 999, 999};
    RayResultsList results;
    ShellParamaters shell;
    ShotMarks marks;

signals:
    void rayHit(RayResultsList results);

public slots:
    void setShellParamaters(ShellParamaters params);

private:
    void moveHitMarker(const Vector3& position);

    std::unique_ptr<btCollisionConfiguration> configuration;
    std::unique_ptr<btCollisionDispatcher> dispatcher;
    std::unique_ptr<btBroadphaseInterface> broadphase;
    std::unique_ptr<btCollisionWorld> collisionWorld;
    btAlignedObjectArray<btCollisionShape*> shapes;
    btAlignedObjectArray<btCollisionObject*> objects;
    btAlignedObjectArray<btStridingMeshInterface*> meshes;
};
