// Load time of one model of the sample installation: the .primitives split,
// the .visual read, vertex and index decoding into GL buffers, materials, and
// (in the cold case) the DDS uploads of its textures. Run under Xvfb after
// the sample installation has been built (target sample_game):
//   xvfb-run -a -s "-screen 0 1920x1080x24" bench/bench_model_load

#include "BufferManager.h"
#include "Camera.h"
#include "FileManager.h"
#include "GlFunctions.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "SceneLight.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "StaticMesh.h"
#include "TextureLoader.h"

#include <QDir>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

// The managers a model load needs, over the sample installation, with the
// program's data folder of the source tree as "../data/".
struct Scene
{
    Scene()
    {
        QSurfaceFormat format;
        format.setVersion(3, 2);
        format.setProfile(QSurfaceFormat::CoreProfile);
        surface.setFormat(format);
        surface.create();
        context.setFormat(format);
        ready = context.create() && context.makeCurrent(&surface);
        QDir::setCurrent(QStringLiteral(FERROX_SOURCE_DIR "/bench"));
        settings = std::make_unique<Settings>(QString());
        settings->gavrelPath = sampleGame;
        settings->validateGavrelPath(sampleGame);
        settings->shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150/");
        settings->textureFilter = QStringLiteral("Trilinear");
        files = std::make_unique<FileManager>();
        files->resourcesConfigPath = sampleGame + QStringLiteral("/ferrox-resources.cfg");
        files->loadZipFiles();
        buffers = std::make_unique<BufferManager>();
        shaders = std::make_unique<ShaderLoader>();
        ready = ready && shaders->loadShaders();
        matrices = std::make_unique<MatrixStack>();
        materials = std::make_unique<MaterialLoader>();
        materials->light = &light;
        textures = std::make_unique<TextureLoader>();
    }

    // Empties the permanent cache but for the two program textures, so the
    // next load uploads its textures again.
    void forgetTextures()
    {
        auto* gl = glFunctions();
        for (auto it = textures->permanentTextures.begin();
             it != textures->permanentTextures.end();) {
            if (*it == textures->noTexture || *it == textures->gridTexture) {
                ++it;
                continue;
            }
            gl->glDeleteTextures(1, &*it);
            it = textures->permanentTextures.erase(it);
        }
    }

    QOffscreenSurface surface;
    QOpenGLContext context;
    bool ready = false;
    SceneLight light;
    std::unique_ptr<Settings> settings;
    std::unique_ptr<FileManager> files;
    std::unique_ptr<BufferManager> buffers;
    std::unique_ptr<ShaderLoader> shaders;
    std::unique_ptr<MatrixStack> matrices;
    std::unique_ptr<MaterialLoader> materials;
    std::unique_ptr<TextureLoader> textures;
};

Scene* scene = nullptr;

void loadModel(benchmark::State& state, const QString& path, bool coldTextures)
{
    if (!scene->ready) {
        state.SkipWithError("no OpenGL 3.2 core context or shaders");
        return;
    }
    int triangles = 0;
    for (auto _ : state) {
        if (coldTextures) {
            state.PauseTiming();
            scene->forgetTextures();
            state.ResumeTiming();
        }
        StaticMesh mesh;
        if (!mesh.load(path, identityMatrix())) {
            state.SkipWithError("model did not load");
            return;
        }
        triangles = mesh.visual->triangleCount();
        glFunctions()->glFinish();
    }
    state.counters["triangles"] = triangles;
}

void BM_TalonHullCachedTextures(benchmark::State& state)
{
    loadModel(state, QStringLiteral("vehicles/Ardenia/A01_Talon/normal/lod0/Hull.model"), false);
}
BENCHMARK(BM_TalonHullCachedTextures)->Unit(benchmark::kMillisecond);

void BM_TalonHullWithTextureUploads(benchmark::State& state)
{
    loadModel(state, QStringLiteral("vehicles/Ardenia/A01_Talon/normal/lod0/Hull.model"), true);
}
BENCHMARK(BM_TalonHullWithTextureUploads)->Unit(benchmark::kMillisecond);

void BM_TalonChassisCachedTextures(benchmark::State& state)
{
    loadModel(state, QStringLiteral("vehicles/Ardenia/A01_Talon/normal/lod0/Chassis.model"), false);
}
BENCHMARK(BM_TalonChassisCachedTextures)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    Scene shared;
    scene = &shared;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    scene = nullptr;
    return 0;
}
