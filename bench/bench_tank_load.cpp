// Load time of the heavy vehicle of the large installation ("Talon 0000":
// chassis, hull, turret and gun, intact and burnt out, about 665,000
// triangles and 72 MB of geometry and textures) through TankLoader, with the
// per-vehicle texture cache emptied before every load, against a floor
// measured in the same run: inflating the same files through FileManager and
// uploading their bytes with one GL call per file.
//
// Run bench/run.sh, which generates the installation before running this.

#include "BenchGame.h"

#include "BufferManager.h"
#include "Database.h"
#include "DeviceBytes.h"
#include "FileManager.h"
#include "GlFunctions.h"
#include "Log.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "MessageBoxes.h"
#include "MoReaderCached.h"
#include "SceneLight.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TankMesh.h"
#include "TextureLoader.h"
#include "VehicleFile.h"

#include <QApplication>
#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>
#include <QtEndian>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>

#ifndef GL_COMPRESSED_RGB_S3TC_DXT1_EXT
#define GL_COMPRESSED_RGB_S3TC_DXT1_EXT 0x83F0
#endif
#ifndef GL_COMPRESSED_RGBA_S3TC_DXT3_EXT
#define GL_COMPRESSED_RGBA_S3TC_DXT3_EXT 0x83F2
#endif
#ifndef GL_COMPRESSED_RGBA_S3TC_DXT5_EXT
#define GL_COMPRESSED_RGBA_S3TC_DXT5_EXT 0x83F3
#endif

namespace {

const QString HeavyVehicle = QStringLiteral("Talon 0000");

// Wall time and the CPU time of all the process's threads (the GL driver's
// included) since construction, in milliseconds. On a machine shared with
// other work the CPU time shows the cost without the waiting.
struct Span
{
    double wall = 0;
    double cpu = 0;
};

class Stopwatch
{
public:
    Stopwatch() : wallStart(std::chrono::steady_clock::now()), cpuStart(processCpu()) {}
    Span elapsed() const
    {
        const auto wall = std::chrono::steady_clock::now() - wallStart;
        return {std::chrono::duration<double, std::milli>(wall).count(), processCpu() - cpuStart};
    }

private:
    static double processCpu()
    {
        timespec now{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
    }
    std::chrono::steady_clock::time_point wallStart;
    double cpuStart;
};

// The files one load of the vehicle reads, by how the floor uploads them.
struct LoadFiles
{
    QStringList documents;  // vehicle file, gun file, visuals: read only
    QStringList primitives; // read, then one buffer upload each
    QStringList textures;   // read, then one texture upload each
    qint64 geometryBytes = 0;
    qint64 textureBytes = 0;
    int triangles = 0;
};

// The managers of the program after start-up, over the large installation,
// in the viewport's order, with a context current and the vehicle table
// built.
struct Installation
{
    Installation()
    {
        QSurfaceFormat format;
        format.setVersion(3, 2);
        format.setProfile(QSurfaceFormat::CoreProfile);
        surface.setFormat(format);
        surface.create();
        context.setFormat(format);
        ready = context.create() && context.makeCurrent(&surface);
        if (!ready)
            return;
        // The program's data folder is "../data/" from its working directory.
        QDir::setCurrent(QStringLiteral(FERROX_SOURCE_DIR "/bench"));
        const QString game = benchGameDirectory();
        settings = std::make_unique<Settings>(QString());
        settings->gavrelPath = game;
        settings->validateGavrelPath(game);
        settings->shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150/");
        settings->textureFilter = QStringLiteral("Trilinear");
        files = std::make_unique<FileManager>();
        files->resourcesConfigPath = game + QStringLiteral("/ferrox-resources.cfg");
        files->loadZipFiles();
        reader = std::make_unique<MoReaderCached>();
        database = std::make_unique<Database>();
        database->tankListPath = game + QStringLiteral("/ferrox-tank_list.cfg");
        database->rebuildDatabase();
        buffers = std::make_unique<BufferManager>();
        shaders = std::make_unique<ShaderLoader>();
        ready = shaders->loadShaders();
        matrices = std::make_unique<MatrixStack>();
        materials = std::make_unique<MaterialLoader>();
        materials->light = &light;
        textures = std::make_unique<TextureLoader>();
        materials->createDefaultMaterials();
        loader = std::make_unique<TankLoader>();
    }

    ~Installation()
    {
        if (!context.makeCurrent(&surface))
            return;
        loader.reset();
        materials.reset();
        textures.reset();
        matrices.reset();
        shaders.reset();
        buffers.reset();
        database.reset();
        reader.reset();
        files.reset();
        settings.reset();
    }

    bool hasHeavyVehicle() const { return !database->tankDirectory(HeavyVehicle).isEmpty(); }

    // Unloads the vehicle and empties its texture cache, so that the next
    // load reads and uploads everything again.
    void unloadVehicle()
    {
        if (loader->loaded) {
            loader->unload();
            loader->info->clear();
            loader->loaded = false;
        }
        glFunctions()->glFinish();
    }

    // What the loaded vehicle read: its files and what they hold.
    LoadFiles loadedFiles() const
    {
        LoadFiles result;
        result.documents << loader->vehicleFilePath << gunFilePath(loader->vehicleFilePath);
        for (int state = 0; state < TankLoader::MeshStates; ++state) {
            for (int part = 0; part < TankLoader::PartCount; ++part) {
                const TankMesh* mesh = loader->mesh(part, state);
                QString visual = mesh->path;
                QString primitives = mesh->path;
                result.documents << visual.replace(QLatin1String(".model"),
                                                   QLatin1String(".visual"));
                result.primitives << primitives.replace(QLatin1String(".model"),
                                                        QLatin1String(".primitives"));
                result.triangles += mesh->visual->triangleCount();
            }
        }
        result.textures = textures->tankTextures.keys();
        return result;
    }

    QOffscreenSurface surface;
    QOpenGLContext context;
    bool ready = false;
    SceneLight light;
    std::unique_ptr<Settings> settings;
    std::unique_ptr<FileManager> files;
    std::unique_ptr<MoReaderCached> reader;
    std::unique_ptr<Database> database;
    std::unique_ptr<BufferManager> buffers;
    std::unique_ptr<ShaderLoader> shaders;
    std::unique_ptr<MatrixStack> matrices;
    std::unique_ptr<MaterialLoader> materials;
    std::unique_ptr<TextureLoader> textures;
    std::unique_ptr<TankLoader> loader;
};

Installation* installation = nullptr;

// The inflated bytes of a resource, as FileManager hands them out (shared,
// not copied).
QByteArray inflate(FileManager& files, const QString& name)
{
    const std::unique_ptr<QIODevice> device(files.getFile(name));
    return device ? wholeDevice(device.get()) : QByteArray();
}

// One texture upload of a DDS file's pixels as the file stores them; a
// format this does not know goes up as a buffer of the same size.
void uploadTextureBytes(QOpenGLFunctions_3_2_Core* gl, const QByteArray& dds,
                        QVector<GLuint>& textureNames, QVector<GLuint>& bufferNames)
{
    constexpr int HeaderSize = 128;
    constexpr quint32 FourCcFlag = 0x4;
    const char* header = dds.constData();
    const bool hasHeader = dds.size() > HeaderSize;
    const int height = hasHeader ? int(qFromLittleEndian<quint32>(header + 12)) : 0;
    const int width = hasHeader ? int(qFromLittleEndian<quint32>(header + 16)) : 0;
    const quint32 flags = hasHeader ? qFromLittleEndian<quint32>(header + 80) : 0;
    const QByteArray fourCc = hasHeader ? dds.mid(84, 4) : QByteArray();
    const quint32 bitCount = hasHeader ? qFromLittleEndian<quint32>(header + 88) : 0;
    const char* pixels = header + HeaderSize;
    const qint64 pixelBytes = dds.size() - HeaderSize;
    const qint64 blocks = qint64((width + 3) / 4) * ((height + 3) / 4);

    GLenum compressed = 0;
    qint64 levelBytes = 0;
    if ((flags & FourCcFlag) && fourCc == "DXT1")
        compressed = GL_COMPRESSED_RGB_S3TC_DXT1_EXT, levelBytes = blocks * 8;
    else if ((flags & FourCcFlag) && fourCc == "DXT3")
        compressed = GL_COMPRESSED_RGBA_S3TC_DXT3_EXT, levelBytes = blocks * 16;
    else if ((flags & FourCcFlag) && fourCc == "DXT5")
        compressed = GL_COMPRESSED_RGBA_S3TC_DXT5_EXT, levelBytes = blocks * 16;
    else if (!(flags & FourCcFlag) && bitCount == 32)
        levelBytes = qint64(width) * height * 4;

    if (levelBytes <= 0 || levelBytes > pixelBytes) {
        GLuint buffer = 0;
        gl->glGenBuffers(1, &buffer);
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glBufferData(GL_ARRAY_BUFFER, dds.size(), dds.constData(), GL_STATIC_DRAW);
        gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
        bufferNames.append(buffer);
        return;
    }
    GLuint texture = 0;
    gl->glGenTextures(1, &texture);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    if (compressed)
        gl->glCompressedTexImage2D(GL_TEXTURE_2D, 0, compressed, width, height, 0,
                                   GLsizei(levelBytes), pixels);
    else
        // Taken as RGBA whatever the file's order: the driver then copies
        // without converting, which is the least an upload costs.
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         pixels);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    textureNames.append(texture);
}

// The least a load of these files can cost: inflate each once, upload each
// geometry file with one buffer upload and each texture with one texture
// upload, and wait for GL. Returns the time taken; the GL objects are freed
// afterwards, untimed.
Span floorPass(const LoadFiles& list)
{
    FileManager& files = *installation->files;
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    QVector<GLuint> bufferNames;
    QVector<GLuint> textureNames;
    const Stopwatch stopwatch;
    for (const QString& name : list.documents)
        benchmark::DoNotOptimize(inflate(files, name).size());
    for (const QString& name : list.primitives) {
        const QByteArray bytes = inflate(files, name);
        GLuint buffer = 0;
        gl->glGenBuffers(1, &buffer);
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glBufferData(GL_ARRAY_BUFFER, bytes.size(), bytes.constData(), GL_STATIC_DRAW);
        gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
        bufferNames.append(buffer);
    }
    for (const QString& name : list.textures)
        uploadTextureBytes(gl, inflate(files, name), textureNames, bufferNames);
    gl->glFinish();
    const Span elapsed = stopwatch.elapsed();
    gl->glDeleteBuffers(GLsizei(bufferNames.size()), bufferNames.constData());
    gl->glDeleteTextures(GLsizei(textureNames.size()), textureNames.constData());
    gl->glFinish();
    return elapsed;
}

// The time of one load; a negative wall time when it failed.
Span timedLoad()
{
    const Stopwatch stopwatch;
    const bool loaded = installation->loader->load(HeavyVehicle);
    glFunctions()->glFinish();
    const Span elapsed = stopwatch.elapsed();
    return loaded ? elapsed : Span{-1, -1};
}

// Null when the benchmark can run; else why not.
const char* cannotRun()
{
    if (!installation->ready)
        return "no OpenGL 3.2 core context or shaders";
    if (!installation->hasHeavyVehicle())
        return "the installation has no Talon 0000: generate it with "
               "tools/make_sample_game.py --scale 2 or more (bench/run.sh does)";
    return nullptr;
}

qint64 totalSize(FileManager& files, const QStringList& names)
{
    qint64 bytes = 0;
    for (const QString& name : names)
        bytes += inflate(files, name).size();
    return bytes;
}

// Loads once to learn the files; empty when the vehicle does not load.
LoadFiles discoverFiles()
{
    installation->unloadVehicle();
    if (timedLoad().wall < 0)
        return {};
    LoadFiles list = installation->loadedFiles();
    list.geometryBytes = totalSize(*installation->files, list.primitives);
    list.textureBytes = totalSize(*installation->files, list.textures);
    installation->unloadVehicle();
    return list;
}

void reportSizes(benchmark::State& state, const LoadFiles& list)
{
    state.counters["triangles"] = list.triangles;
    state.counters["geometry_MB"] = double(list.geometryBytes) / 1e6;
    state.counters["texture_MB"] = double(list.textureBytes) / 1e6;
    state.counters["files"] =
        double(list.documents.size() + list.primitives.size() + list.textures.size());
}

void BM_TalonFloor(benchmark::State& state)
{
    if (const char* reason = cannotRun()) {
        state.SkipWithError(reason);
        return;
    }
    const LoadFiles list = discoverFiles();
    if (list.primitives.isEmpty()) {
        state.SkipWithError("Talon 0000 did not load");
        return;
    }
    for (auto _ : state)
        state.SetIterationTime(floorPass(list).wall / 1000);
    reportSizes(state, list);
}
BENCHMARK(BM_TalonFloor)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

// Each iteration: a cold load of both states, timed; then, untimed, the
// unload and a floor pass over the same files, so that the two are measured
// side by side under the same conditions. The counters take the fastest of
// each: other work on the machine only ever adds time.
void BM_TalonColdLoad(benchmark::State& state)
{
    if (const char* reason = cannotRun()) {
        state.SkipWithError(reason);
        return;
    }
    const LoadFiles list = discoverFiles();
    if (list.primitives.isEmpty()) {
        state.SkipWithError("Talon 0000 did not load");
        return;
    }
    Span fastestLoad{1e300, 1e300};
    Span fastestFloor{1e300, 1e300};
    auto keepFastest = [](Span& fastest, const Span& span) {
        fastest.wall = std::min(fastest.wall, span.wall);
        fastest.cpu = std::min(fastest.cpu, span.cpu);
    };
    for (auto _ : state) {
        const Span load = timedLoad();
        if (load.wall < 0) {
            state.SkipWithError("Talon 0000 did not load");
            return;
        }
        state.SetIterationTime(load.wall / 1000);
        installation->unloadVehicle();
        keepFastest(fastestLoad, load);
        keepFastest(fastestFloor, floorPass(list));
    }
    state.counters["load_ms"] = fastestLoad.wall;
    state.counters["floor_ms"] = fastestFloor.wall;
    state.counters["ratio"] = fastestLoad.wall / fastestFloor.wall;
    state.counters["load_cpu_ms"] = fastestLoad.cpu;
    state.counters["floor_cpu_ms"] = fastestFloor.cpu;
    state.counters["cpu_ratio"] = fastestLoad.cpu / fastestFloor.cpu;
    reportSizes(state, list);
}
BENCHMARK(BM_TalonColdLoad)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(8);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    // A failed load asks through a box; nobody is there to answer it.
    setMessageBoxHandler([](const MessageBoxRequest& request) {
        std::fprintf(stderr, "box: %s\n", qPrintable(request.text));
        return int(QMessageBox::Ok);
    });
    Log::setFallbackSink([](const QString& message, int level) {
        if (level != Log::Info)
            std::fprintf(stderr, "%s\n", qPrintable(message));
    });
    {
        Installation shared;
        installation = &shared;
        benchmark::RunSpecifiedBenchmarks();
        installation = nullptr;
    }
    benchmark::Shutdown();
    return 0;
}
