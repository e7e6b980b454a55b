// The camouflage bake of one 2048 x 2048 diffuse texture, in its two
// halves: the GPU pass with the read-back, and the DXT1 compression with
// mipmaps and the file write. Floors measured in the same run: a read-back
// alone of a target of the same size, and a plain write of the
// uncompressed pixels.

#include "CamoBakeJob.h"
#include "GlFunctions.h"
#include "Settings.h"
#include "ShaderLoader.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_3_2_Core>
#include <QSaveFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

namespace {
constexpr int Side = 2048;
const QSize Size(Side, Side);

// The GL objects the pass reads: a noisy diffuse texture, a blocky mask and
// a small four-channel pattern, all mipmapped.
struct BakeScene
{
    BakeScene()
    {
        QSurfaceFormat format;
        format.setVersion(3, 2);
        format.setProfile(QSurfaceFormat::CoreProfile);
        surface.setFormat(format);
        surface.create();
        context.setFormat(format);
        if (!context.create() || !context.makeCurrent(&surface))
            return;
        settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150/");
        shaders = std::make_unique<ShaderLoader>();
        ready = shaders->loadShaders();
        std::mt19937 random(7);
        inputs.diffuse = texture(Side, [&](int, int) { return quint32(random()) | 0xff000000u; });
        inputs.exclusionMask = texture(
            512, [](int x, int y) { return (x / 64 + y / 64) % 3 ? 0xffffffffu : 0xff000000u; });
        inputs.pattern = texture(64, [](int x, int y) {
            return quint32(((x / 8) % 2) * 255 | ((y / 8) % 2) * 255 << 8 |
                           ((x + y) / 16 % 2) * 255 << 16 | 0x40000000u);
        });
        inputs.tiling = {1.5f, 1.5f, 0, 0};
        inputs.colors = {Vector4{90, 100, 60, 255}, Vector4{60, 50, 40, 255},
                         Vector4{150, 140, 100, 200}, Vector4{20, 20, 20, 128}};
    }
    ~BakeScene()
    {
        if (!context.makeCurrent(&surface))
            return;
        for (unsigned int id : {inputs.diffuse, inputs.exclusionMask, inputs.pattern})
            glFunctions()->glDeleteTextures(1, &id);
        shaders.reset();
    }
    template <typename Texel> unsigned int texture(int side, Texel texel)
    {
        std::vector<quint32> pixels(size_t(side) * side);
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                pixels[size_t(y) * side + x] = texel(x, y);
        QOpenGLFunctions_3_2_Core* gl = glFunctions();
        unsigned int id = 0;
        gl->glGenTextures(1, &id);
        gl->glBindTexture(GL_TEXTURE_2D, id);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, side, side, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         pixels.data());
        gl->glGenerateMipmap(GL_TEXTURE_2D);
        return id;
    }

    QOffscreenSurface surface;
    QOpenGLContext context;
    Settings settings{QString()};
    std::unique_ptr<ShaderLoader> shaders;
    CamoBakeInputs inputs;
    bool ready = false;
};

BakeScene* scene = nullptr;

void BM_BakeGpuPassWithReadBack(benchmark::State& state)
{
    for (auto _ : state) {
        const QByteArray pixels = renderCamoBake(scene->inputs, Size);
        if (pixels.isEmpty()) {
            state.SkipWithError("the pass drew nothing");
            break;
        }
        benchmark::DoNotOptimize(pixels.constData());
    }
}

// Floor: a target of the same size cleared and read back.
void BM_ReadBackFloor(benchmark::State& state)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    QOpenGLFramebufferObject target(Size, QOpenGLFramebufferObject::Depth);
    QByteArray pixels(qsizetype(Side) * Side * 4, Qt::Uninitialized);
    for (auto _ : state) {
        target.bind();
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gl->glReadPixels(0, 0, Side, Side, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        target.release();
        benchmark::DoNotOptimize(pixels.constData());
    }
}

void BM_BakeCompressionAndWrite(benchmark::State& state)
{
    const QByteArray pixels = renderCamoBake(scene->inputs, Size);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Hull_AM.dds"));
    for (auto _ : state) {
        if (!saveCamoBake(path, pixels, Size)) {
            state.SkipWithError("the compressor failed");
            break;
        }
    }
}

// Floor: the uncompressed pixels written the same way.
void BM_PlainWriteFloor(benchmark::State& state)
{
    const QByteArray pixels(qsizetype(Side) * Side * 4, '\x40');
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("plain.raw"));
    for (auto _ : state) {
        QSaveFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(pixels);
        file.commit();
    }
}

BENCHMARK(BM_BakeGpuPassWithReadBack)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadBackFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BakeCompressionAndWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainWriteFloor)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    BakeScene bakeScene;
    if (!bakeScene.ready) {
        std::fprintf(stderr, "no OpenGL 3.2 core context with the camoSaver program\n");
        return 1;
    }
    scene = &bakeScene;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
