#include "Physics.h"

#include "CollisionMesh.h"
#include "Log.h"
#include "Penetration.h"

#include <btBulletCollisionCommon.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr float radToDeg = 57.29578f;

// Bullet's all-hits callback that also keeps, for each hit, the triangle
// it struck and the ray's direction, in step with its own arrays.
struct AllResultsRayResultCallback : btCollisionWorld::AllHitsRayResultCallback
{
    using AllHitsRayResultCallback::AllHitsRayResultCallback;

    btScalar addSingleResult(btCollisionWorld::LocalRayResult& rayResult,
                             bool normalInWorldSpace) override
    {
        triangleIndex =
            rayResult.m_localShapeInfo ? rayResult.m_localShapeInfo->m_triangleIndex : 0;
        shapePart = rayResult.m_localShapeInfo ? rayResult.m_localShapeInfo->m_shapePart : 0;
        triangleIndices.push_back(triangleIndex);
        directions.push_back(rayDirection);
        return AllHitsRayResultCallback::addSingleResult(rayResult, normalInWorldSpace);
    }

    btAlignedObjectArray<int> triangleIndices;
    btAlignedObjectArray<btVector3> directions;
    btVector3 rayDirection{0, 0, 0};
    int triangleIndex = 0;
    int shapePart = 0;
};

struct HitSample
{
    btVector3 direction;
    btVector3 point;
    float distance = 0;
    const btCollisionObject* object = nullptr;
    int triangle = 0;
};

int categoryOf(const ArmorPart& part)
{
    if (part.spaced)
        return SpacedArmor;
    if (part.name.contains(QLatin1String("track"), Qt::CaseInsensitive))
        return TrackArmor;
    if (part.name.contains(QLatin1String("survey"), Qt::CaseInsensitive))
        return SurveyArmor;
    if (part.name.contains(QLatin1String("gun"), Qt::CaseInsensitive))
        return GunArmor;
    return RegularArmor;
}

float ricochetLimitOf(int type)
{
    switch (type) {
    case 0:
    case 1:
        return 70;
    case 3:
        return 80;
    default:
        return 0;
    }
}

Vector3 fromBullet(const btVector3& v)
{
    return {float(v.x()), float(v.y()), float(v.z())};
}

btVector3 toBullet(const Vector3& v)
{
    return {v[0], v[1], v[2]};
}

// The state one shell carries through the plates it meets.
struct ShellWalk
{
    ShellParamaters shell;
    float ricochetLimit = 0;
    int surveyHits = 0;
    int gunHits = 0;

    // The impact and its normalisation at one hit. previous: the hit before
    // (null for the first).
    RayResult hit(const HitSample& sample, const HitSample* previous)
    {
        const auto* part = static_cast<const ArmorPart*>(sample.object->getUserPointer());
        RayResult result;
        result.category = categoryOf(*part);
        if (result.category == SurveyArmor)
            ++surveyHits;
        if (result.category == GunArmor)
            ++gunHits;
        if (previous) {
            const bool sameObject = sample.object == previous->object;
            if ((result.category == TrackArmor || result.category == GunArmor) && sameObject)
                result.exitHit = true;
            if (result.category == GunArmor && gunHits > 1)
                result.exitHit = true;
            if (result.category == SurveyArmor && surveyHits > 1) {
                result.exitHit = true;
                surveyHits = 0;
            }
        }
        float theta = impactAngle(sample, *part);
        // Tracks and surveying devices are always met head-on.
        if (result.category == TrackArmor || result.category == SurveyArmor)
            theta = 0;
        float angle = theta * radToDeg;
        // A hit from behind the face counts like one from its front.
        if (angle > 90) {
            angle = 180 - angle;
            theta = angle * degToRad;
        }
        const float normalized = normalisedAngle(theta, angle, part->thickness);
        result.angle = angle;
        result.effective = float(part->thickness) / std::cos(normalized);
        result.normalizedAngle = normalized * radToDeg;
        result.ricochet = ricochetLimit > 0 && result.normalizedAngle > ricochetLimit;
        result.armor = float(part->thickness);
        result.spaced = part->spaced;
        result.name = part->name;
        result.hitPoint = fromBullet(sample.point);
        return result;
    }

    // Radians; the calibre rules of AP and APCR shells: twice the plate
    // turns the shell further, three times also ends every ricochet of this
    // ray.
    float normalisedAngle(float theta, float angle, int thickness)
    {
        const float n = shell.normalization;
        float result = 0;
        if (angle > n) {
            result = theta - n * degToRad;
            const float calibre = shell.calibre;
            if ((shell.type == 0 || shell.type == 1) && calibre >= 2.0f * float(thickness)) {
                if (calibre >= 3.0f * float(thickness))
                    ricochetLimit = 0;
                const float turn = float(double(n) * 1.4 * double(calibre) / double(thickness));
                result = (angle - turn) * degToRad;
            }
        }
        return result < 0 ? 0 : result;
    }

    static float impactAngle(const HitSample& sample, const ArmorPart& part)
    {
        if (sample.triangle < 0 || sample.triangle >= part.triangles.size())
            return 0;
        const Vector3& stored = part.triangles[sample.triangle].normal;
        const btVector3 N = sample.object->getWorldTransform().getBasis() * toBullet(stored);
        const btVector3& d = sample.direction;
        const btScalar length = std::sqrt(d.dot(d) * N.dot(N));
        if (length <= 0)
            return 0;
        const float c = std::clamp(float((-d).dot(N) / length), -1.0f, 1.0f);
        return std::acos(c);
    }
};

QVector<HitSample> sortedSamples(const AllResultsRayResultCallback& callback, const btVector3& eye)
{
    QVector<HitSample> samples;
    for (int i = 0; i < callback.m_collisionObjects.size(); ++i) {
        HitSample sample;
        sample.direction = callback.directions[i];
        sample.point = callback.m_hitPointWorld[i];
        sample.distance = float((eye - sample.point).length());
        sample.object = callback.m_collisionObjects[i];
        sample.triangle = callback.triangleIndices[i];
        samples.append(sample);
    }
    std::sort(samples.begin(), samples.end(),
              [](const HitSample& a, const HitSample& b) { return a.distance < b.distance; });
    return samples;
}

} // namespace

Physics::Physics(QObject* parent) : QObject(parent)
{
    Log::log(QStringLiteral("Initialising Bullet collsion detection."), Log::Info);
    btDefaultCollisionConstructionInfo info;
    info.m_defaultMaxPersistentManifoldPoolSize = 4096;
    info.m_defaultMaxCollisionAlgorithmPoolSize = 4096;
    configuration = std::make_unique<btDefaultCollisionConfiguration>(info);
    dispatcher = std::make_unique<btCollisionDispatcher>(configuration.get());
    broadphase = std::make_unique<btSimpleBroadphase>(16384);
    collisionWorld =
        std::make_unique<btCollisionWorld>(dispatcher.get(), broadphase.get(), configuration.get());
    Log::log(QStringLiteral("Bullet Physics Library version: ") + QString::number(btGetVersion()),
             Log::Info);
    qRegisterMetaType<RayResultsList>("RayResultsList");
    qRegisterMetaType<ShellParamaters>("ShellParamaters");
}

Physics::~Physics()
{
    clear();
    collisionWorld.reset();
}

void Physics::setShellParamaters(ShellParamaters params)
{
    shell = params;
}

void Physics::addShape(btCollisionShape* shape)
{
    shapes.push_back(shape);
}

void Physics::adopt(btCollisionObject* object, btCollisionShape* shape,
                    btStridingMeshInterface* mesh)
{
    objects.push_back(object);
    addShape(shape);
    meshes.push_back(mesh);
}

void Physics::clear()
{
    btCollisionObjectArray& inWorld = collisionWorld->getCollisionObjectArray();
    for (int i = inWorld.size() - 1; i >= 0; --i)
        collisionWorld->removeCollisionObject(inWorld[i]);
    // Plates taken out of the world by a turret or gun change are ours too.
    for (int i = 0; i < objects.size(); ++i)
        delete objects[i];
    objects.clear();
    for (int i = 0; i < shapes.size(); ++i)
        delete shapes[i];
    shapes.clear();
    for (int i = 0; i < meshes.size(); ++i)
        delete meshes[i];
    meshes.clear();
    rayStart = rayEnd = {0, 0, 0};
    // The viewport draws its own copy of the shot's line: gone with the plates.
    if (marks.rayLine)
        marks.rayLine(rayStart, rayEnd);
    moveHitMarker({999, 999, 999});
}

void Physics::moveHitMarker(const Vector3& position)
{
    hitMarker = position;
    if (marks.moveHitMarker)
        marks.moveHitMarker(position);
}

RayWalk Physics::walkRay(const btCollisionWorld& world, const Vector3& from, const Vector3& to,
                         ShellParamaters shell)
{
    RayWalk outcome;
    outcome.rayEnd = to;
    if (shell.type < 0 || shell.type > 3)
        shell.type = 2;
    const btVector3 start = toBullet(from);
    const btVector3 end = toBullet(to);
    AllResultsRayResultCallback callback(start, end);
    callback.rayDirection = (end - start).normalized();
    world.rayTest(start, end, callback);
    if (callback.m_collisionObjects.size() == 0)
        return outcome;

    const QVector<HitSample> samples = sortedSamples(callback, start);
    outcome.firstHit = fromBullet(samples.first().point - callback.rayDirection * 0.04f);
    ShellWalk walk{shell, ricochetLimitOf(shell.type)};
    const float travelLimit = shell.calibre * 10.0f * 0.01f;
    float travelled = 0;
    bool pastLimit = false;
    RayResultsList& walked = outcome.walked;
    for (int i = 0; i < samples.size(); ++i) {
        RayResult result = walk.hit(samples[i], i > 0 ? &samples[i - 1] : nullptr);
        result.freeTravel = i + 1 < samples.size()
                                ? float((samples[i + 1].point - samples[i].point).length())
                                : 0.0f;
        if (i > 0) {
            travelled += walked.last().freeTravel;
            if (travelled > travelLimit) {
                const btVector3 stop =
                    toBullet(walked.first().hitPoint) + samples.first().direction * travelLimit;
                outcome.rayEnd = fromBullet(stop);
                pastLimit = true;
                break;
            }
        }
        walked.append(result);
        if (result.ricochet && !result.exitHit)
            break;
    }
    if (!pastLimit)
        outcome.rayEnd = walked.last().hitPoint;
    if (shell.penetration > 0)
        applyPenetration(walked, shell.penetration, shell.lossPerDecimetre);
    return outcome;
}

RayResultsList RayWalk::published() const
{
    RayResultsList list;
    for (const RayResult& result : walked)
        if (!result.exitHit)
            list.append(result);
    return list;
}

void Physics::fireRay(const Vector3& from, const Vector3& to)
{
    if (shell.type < 0 || shell.type > 3)
        shell.type = 2;
    rayStart = from;
    const RayWalk outcome = walkRay(*collisionWorld, from, to, shell);
    rayEnd = outcome.rayEnd;
    if (outcome.walked.isEmpty()) {
        RayResult missed;
        missed.name = QStringLiteral("Missed");
        missed.hitPoint = {-999, -999, -999};
        missed.category = SpacedArmor;
        results = {missed};
        moveHitMarker({999, 999, 999});
    } else {
        moveHitMarker(outcome.firstHit);
        results = outcome.published();
    }
    if (marks.rayLine)
        marks.rayLine(rayStart, rayEnd);
    emit rayHit(results);
}
