// CPU decode speed of the two block formats the game's textures use, on a
// 1024 x 1024 chain with every mip level.

#include "DdsImage.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {
constexpr int size = 1024;

// Any eight bytes are a valid colour or alpha block, so random data covers
// both DXT1 modes and both alpha modes.
DdsImage randomImage(DdsFormat format)
{
    DdsImage image;
    image.format = format;
    image.width = size;
    image.height = size;
    image.mipCount = 11;
    image.pixels.resize(image.dataSize(0, image.mipCount));
    std::mt19937 random(1234);
    for (char& byte : image.pixels)
        byte = char(random());
    return image;
}

double chainPixels(const DdsImage& image)
{
    double pixels = 0;
    for (int level = 0; level < image.mipCount; ++level)
        pixels += double(image.levelWidth(level)) * image.levelHeight(level);
    return pixels;
}

void decode(benchmark::State& state, DdsFormat format)
{
    const DdsImage source = randomImage(format);
    for (auto _ : state) {
        DdsImage image = source;
        if (!image.decompress()) {
            state.SkipWithError("decompress failed");
            break;
        }
        benchmark::DoNotOptimize(image.pixels.constData());
    }
    state.counters["MPixels"] = benchmark::Counter(chainPixels(source) / 1e6,
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

void BM_DecodeDxt1(benchmark::State& state)
{
    decode(state, DdsFormat::DXT1);
}
void BM_DecodeDxt5(benchmark::State& state)
{
    decode(state, DdsFormat::DXT5);
}
} // namespace

BENCHMARK(BM_DecodeDxt1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeDxt5)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
