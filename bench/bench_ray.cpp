// One shell through the collision models of the heavy vehicle of the large
// installation ("Talon 0000", over 20,000 triangles): Physics::fireRay with
// its ray test, the walk through the plates and the report, against a floor
// measured in the same run: Bullet's bare all-hits ray test on the same
// world.
//
// Run bench/run.sh, which generates the installation before running this.

#include "BenchCollisionWorld.h"

#include <QCoreApplication>

#include <btBulletCollisionCommon.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

// Level through the hull and the chassis from the front, off every face's
// diagonal.
const Vector3 From{0.23f, 0.57f, 20};
const Vector3 To{0.23f, 0.57f, -20};

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
