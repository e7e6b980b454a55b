// One shell through the collision models of the heavy vehicle of the large
// installation ("Talon 0000", over 20,000 triangles): Physics::fireRay with
// its ray test, the walk through the plates and the report, against a floor
// measured in the same run: Bullet's bare all-hits ray test on the same
// world.
//
// Run bench/run.sh, which generates the installation before running this.

#include "BenchGame.h"

#include "BufferManager.h"
#include "CollisionArmor.h"
#include "CollisionMesh.h"
#include "Database.h"
#include "FileManager.h"
#include "MoReaderCached.h"
#include "Physics.h"
#include "Settings.h"
#include "TransformChain.h"

#include <QCoreApplication>
#include <QDir>

#include <btBulletCollisionCommon.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

const QString HeavyVehicle = QStringLiteral("Talon 0000");
const char* const Parts[] = {"Chassis", "Hull", "Turret_01", "Gun_01"};
// Level through the hull and the chassis from the front, off every face's
// diagonal.
const Vector3 From{0.23f, 0.57f, 20};
const Vector3 To{0.23f, 0.57f, -20};

// The game's files, the vehicle table and the heavy vehicle's four
// collision models in the ray world, with no GL: the plates need only the
// CPU copies of the geometry.
struct CollisionWorld
{
    CollisionWorld()
    {
        QDir::setCurrent(QStringLiteral(FERROX_SOURCE_DIR "/bench"));
        const QString game = benchGameDirectory();
        settings = std::make_unique<Settings>(QString());
        settings->gavrelPath = game;
        settings->validateGavrelPath(game);
        files = std::make_unique<FileManager>();
        files->resourcesConfigPath = game + QStringLiteral("/ferrox-resources.cfg");
        files->loadZipFiles();
        reader = std::make_unique<MoReaderCached>();
        database = std::make_unique<Database>();
        database->tankListPath = game + QStringLiteral("/ferrox-tank_list.cfg");
        database->rebuildDatabase();
        buffers = std::make_unique<BufferManager>();
        const QString folder = database->tankDirectory(HeavyVehicle);
        for (int part = 0; part < 4; ++part) {
            meshes[part] = std::make_unique<CollisionMesh>(&chain);
            const QString path = folder + QStringLiteral("/collision_client/") +
                                 QLatin1String(Parts[part]) + QStringLiteral(".model");
            ready = meshes[part]->load(path, {0, 0, 0}, part) && !folder.isEmpty();
            meshes[part]->assignArmor();
            for (const ArmorPart* plate : meshes[part]->parts)
                triangles += plate->triangles.size();
        }
    }

    std::unique_ptr<Settings> settings;
    std::unique_ptr<FileManager> files;
    std::unique_ptr<MoReaderCached> reader;
    std::unique_ptr<Database> database;
    std::unique_ptr<BufferManager> buffers;
    Physics physics;
    CollisionArmor armor;
    TransformChain chain;
    std::unique_ptr<CollisionMesh> meshes[4];
    bool ready = false;
    int triangles = 0;
};

CollisionWorld* world = nullptr;

bool usable(benchmark::State& state)
{
    if (world->ready && world->triangles >= 20000)
        return true;
    state.SkipWithError("no heavy vehicle collision models; run bench/run.sh");
    return false;
}

void BM_FireRay(benchmark::State& state)
{
    if (!usable(state))
        return;
    int plates = 0;
    for (auto _ : state) {
        world->physics.fireRay(From, To);
        plates = int(world->physics.results.size());
        benchmark::DoNotOptimize(plates);
    }
    state.counters["plates"] = plates;
    state.counters["triangles"] = world->triangles;
}
BENCHMARK(BM_FireRay)->Unit(benchmark::kMicrosecond);

// The floor: the ray test alone, every hit collected.
void BM_BareAllHitsRayTest(benchmark::State& state)
{
    if (!usable(state))
        return;
    const btVector3 from(From[0], From[1], From[2]);
    const btVector3 to(To[0], To[1], To[2]);
    int hits = 0;
    for (auto _ : state) {
        btCollisionWorld::AllHitsRayResultCallback callback(from, to);
        world->physics.world()->rayTest(from, to, callback);
        hits = callback.m_collisionObjects.size();
        benchmark::DoNotOptimize(hits);
    }
    state.counters["hits"] = hits;
}
BENCHMARK(BM_BareAllHitsRayTest)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    CollisionWorld installed;
    world = &installed;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    world = nullptr;
    return 0;
}
