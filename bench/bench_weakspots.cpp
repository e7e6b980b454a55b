// A 1024 x 768 weak-spot map of the heavy vehicle of the large installation
// from the viewport's start camera, on every core, against a floor measured
// in the same run: Bullet's bare all-hits ray test for the same rays, split
// over the same number of threads the same way.
//
// Run bench/run.sh, which generates the installation before running this.

#include "BenchCollisionWorld.h"

#include "Camera.h"
#include "CameraControls.h"
#include "WeakSpotMap.h"

#include <QCoreApplication>

#include <btBulletCollisionCommon.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace {

CollisionWorld* world = nullptr;
WeakSpotView view;

int threadCount()
{
    return int(std::max(1u, std::thread::hardware_concurrency()));
}

bool usable(benchmark::State& state)
{
    if (world->ready && world->triangles >= 20000)
        return true;
    state.SkipWithError("no heavy vehicle collision models; run bench/run.sh");
    return false;
}

void BM_WeakSpotMap(benchmark::State& state)
{
    if (!usable(state))
        return;
    ShellParamaters shell;
    shell.penetration = 140;
    int silhouette = 0;
    for (auto _ : state) {
        const QVector<WeakSpotPixel> pixels =
            WeakSpotMap::compute(*world->physics.world(), shell, view, threadCount());
        silhouette = WeakSpotMap::shares(pixels).silhouette;
        benchmark::DoNotOptimize(silhouette);
    }
    state.counters["silhouette"] = silhouette;
    state.counters["threads"] = threadCount();
}
BENCHMARK(BM_WeakSpotMap)->Unit(benchmark::kMillisecond)->UseRealTime();

// The floor: the same rays, every hit collected, nothing walked.
void BM_BareAllHitsRays(benchmark::State& state)
{
    if (!usable(state))
        return;
    const Matrix inverse = WeakSpotMap::inverseViewProjection(view);
    const int width = view.size.width();
    const int height = view.size.height();
    std::atomic<int> hits{0};
    for (auto _ : state) {
        std::atomic<int> nextRow{0};
        hits = 0;
        auto work = [&] {
            int found = 0;
            for (int y = nextRow++; y < height; y = nextRow++)
                for (int x = 0; x < width; ++x) {
                    Vector3 from, to;
                    WeakSpotMap::pixelRay(view, inverse, x, y, &from, &to);
                    const btVector3 start(from[0], from[1], from[2]);
                    const btVector3 end(to[0], to[1], to[2]);
                    btCollisionWorld::AllHitsRayResultCallback callback(start, end);
                    world->physics.world()->rayTest(start, end, callback);
                    found += callback.m_collisionObjects.size();
                }
            hits += found;
        };
        std::vector<std::thread> pool;
        for (int i = 1; i < threadCount(); ++i)
            pool.emplace_back(work);
        work();
        for (std::thread& thread : pool)
            thread.join();
        benchmark::DoNotOptimize(hits.load());
    }
    state.counters["hits"] = hits.load();
    state.counters["threads"] = threadCount();
}
BENCHMARK(BM_BareAllHitsRays)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    CollisionWorld installed;
    world = &installed;
    Camera camera;
    CameraControls controls(camera);
    controls.resetCamera();
    controls.resize(1024, 768);
    view = {camera.view, camera.projection, QSize(1024, 768)};
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    world = nullptr;
    return 0;
}
