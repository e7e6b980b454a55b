#include "CollisionMesh.h"
#include "Physics.h"

#include <btBulletCollisionCommon.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Twelve triangles of the box x, y in -1..1, z in -depth/2..depth/2, each
// face's normal outward.
QVector<ArmorTriangle> box(float depth)
{
    const float h = depth / 2;
    const Vector3 c[8] = {{-1, -1, -h}, {1, -1, -h}, {1, 1, -h}, {-1, 1, -h},
                          {-1, -1, h},  {1, -1, h},  {1, 1, h},  {-1, 1, h}};
    const int faces[6][4] = {{4, 5, 6, 7}, {1, 0, 3, 2}, {0, 4, 7, 3},
                             {5, 1, 2, 6}, {7, 6, 2, 3}, {0, 1, 5, 4}};
    QVector<ArmorTriangle> triangles;
    for (const auto& f : faces) {
        for (const auto& [i, j, k] : {std::array{f[0], f[1], f[2]}, std::array{f[0], f[2], f[3]}}) {
            ArmorTriangle t{{c[i], c[j], c[k]}, {}};
            t.normal = cross({c[j][0] - c[i][0], c[j][1] - c[i][1], c[j][2] - c[i][2]},
                             {c[k][0] - c[i][0], c[k][1] - c[i][1], c[k][2] - c[i][2]});
            triangles.append(t);
        }
    }
    return triangles;
}

struct Plate
{
    const char* name;
    int thickness;
    float z;     // centre
    float depth; // along the ray
    float tilt;  // degrees about x: the angle a ray along -z meets the front face at
    bool spaced = false;
};

// Plates in the ray world, shot at along -z near the origin.
class PhysicsTest : public testing::Test
{
protected:
    void place(std::initializer_list<Plate> plates)
    {
        for (const Plate& plate : plates) {
            const Matrix M = rotate(translationMatrix({0, 0, plate.z}), plate.tilt, {1, 0, 0});
            ArmorPart* part = CollisionMesh::createPart(box(plate.depth), M);
            part->name = plate.name;
            part->thickness = plate.thickness;
            part->spaced = plate.spaced;
            physics.world()->addCollisionObject(part->object, 1, -1);
            parts.emplace_back(part);
        }
    }
    // Off the boxes' face diagonals, where a ray would meet both triangles.
    RayResultsList fire(float calibre = 88, int type = 0, float x = 0.3f)
    {
        physics.setShellParamaters({calibre, 2, type});
        physics.fireRay({x, 0, 10}, {x, 0, -10});
        return physics.results;
    }

    Physics physics;
    std::vector<std::unique_ptr<ArmorPart>> parts;
};

TEST_F(PhysicsTest, EachCategoryWalksByItsOwnRule)
{
    struct Case
    {
        const char* what;
        std::initializer_list<Plate> plates;
        QStringList listed;
    };
    const Case cases[] = {
        {"a track's far face is walked, not listed",
         {{"leftTrack", 20, 0, 0.5f, 60}},
         {"leftTrack"}},
        {"only the first gun hit of a ray",
         {{"gun", 30, 0, 0.5f, 0}, {"gun", 30, -3, 0.5f, 0}},
         {"gun"}},
        {"every second survey hit is dropped",
         {{"surveyingDevice", 5, 0, 0.5f, 0}, {"surveyingDevice", 5, -3, 0.5f, 0}},
         {"surveyingDevice", "surveyingDevice"}},
        {"regular plates list both faces", {{"armor_1", 40, 0, 0.5f, 30}}, {"armor_1", "armor_1"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        physics.clear();
        parts.clear();
        place(c.plates);
        const RayResultsList results = fire();
        QStringList names;
        for (const RayResult& r : results)
            names.append(r.name);
        EXPECT_EQ(names, c.listed);
    }
    // The track was met head-on whatever its slope.
    physics.clear();
    parts.clear();
    place({{"rightTrack", 20, 0, 0.5f, 60}});
    const RayResult track = fire().first();
    EXPECT_EQ(std::make_tuple(track.angle, track.effective, track.category, track.ricochet),
              std::make_tuple(0.f, 20.f, int(TrackArmor), false));
}

TEST_F(PhysicsTest, SteepPlatesRicochetUnlessAnOvermatchedPlateCameFirst)
{
    place({{"armor_steep", 100, -2, 0.2f, 80}});
    const RayResultsList alone = fire();
    ASSERT_EQ(alone.size(), 1); // the walk ends at the ricochet
    EXPECT_NEAR(alone[0].normalizedAngle, 78, 1e-3);
    EXPECT_TRUE(alone[0].ricochet);
    EXPECT_FALSE(fire(88, 2).first().ricochet); // HE never ricochets

    // 88 mm is over three times 20; the rule holds for a plate met above
    // the normalisation angle.
    place({{"armor_thin", 20, 2, 0.2f, 30}});
    const RayResultsList behind = fire();
    ASSERT_EQ(behind.size(), 4);
    EXPECT_EQ(behind[2].name, "armor_steep");
    EXPECT_NEAR(behind[2].normalizedAngle, 78, 1e-3);
    EXPECT_FALSE(behind[2].ricochet);
    // The free travel runs from the thin plate's far face to the steep one.
    EXPECT_NEAR(behind[1].freeTravel, behind[1].hitPoint[2] - behind[2].hitPoint[2], 1e-4);
}

TEST_F(PhysicsTest, TheHitPastTheTravelLimitIsNotListed)
{
    Vector3 marker{};
    Vector3 end{};
    physics.marks.moveHitMarker = [&](const Vector3& at) { marker = at; };
    physics.marks.rayLine = [&](const Vector3&, const Vector3& to) { end = to; };
    place({{"armor_a", 10, 0, 0.02f, 0},
           {"armor_b", 10, -0.5f, 0.02f, 0},
           {"armor_c", 10, -2, 0.02f, 0}});
    // A 10 mm shell travels 1 unit after its first hit.
    const RayResultsList results = fire(10);
    ASSERT_EQ(results.size(), 4);
    EXPECT_EQ(results.last().name, "armor_b");
    EXPECT_NEAR(end[2], 0.01f - 1.0f, 1e-4);
    EXPECT_NEAR(marker[2], 0.01f + 0.04f, 1e-4);
}

TEST_F(PhysicsTest, AMissIsOneEntryOutOfSight)
{
    Vector3 marker{};
    physics.marks.moveHitMarker = [&](const Vector3& at) { marker = at; };
    place({{"armor_1", 40, 0, 0.5f, 0}});
    const RayResultsList results = fire(88, 7, 5); // an unknown type is taken as HE
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results[0].name, "Missed");
    EXPECT_EQ(results[0].hitPoint, (Vector3{-999, -999, -999}));
    EXPECT_EQ(marker, (Vector3{999, 999, 999}));
    EXPECT_EQ(physics.shell.type, 2);
    EXPECT_EQ(physics.rayEnd, (Vector3{5, 0, -10}));
}

TEST_F(PhysicsTest, ClearTakesTheShotOutOfTheViewport)
{
    Vector3 marker{}, lineStart{1, 1, 1}, lineEnd{1, 1, 1};
    physics.marks.moveHitMarker = [&](const Vector3& at) { marker = at; };
    physics.marks.rayLine = [&](const Vector3& start, const Vector3& end) {
        lineStart = start;
        lineEnd = end;
    };
    fire();
    EXPECT_EQ(lineEnd, physics.rayEnd);
    EXPECT_NE(lineEnd, (Vector3{0, 0, 0}));
    physics.clear();
    EXPECT_EQ(lineStart, (Vector3{0, 0, 0}));
    EXPECT_EQ(lineEnd, (Vector3{0, 0, 0}));
    EXPECT_EQ(marker, (Vector3{999, 999, 999}));
    // The fixture's Physics clears again when it goes, after these locals.
    physics.marks = {};
}

} // namespace
