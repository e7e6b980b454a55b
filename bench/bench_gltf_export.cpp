// glTF export of the heavy vehicle of the large installation ("Talon 0000",
// intact: four parts with their diffuse, normal and metallic-gloss maps) as
// a .glb, against a floor measured in the same run: encoding the very images
// the .glb holds as PNG with Qt and writing as many bytes as the .glb has.
// The vehicle is loaded once; only the export is timed.
//
// Run bench/run.sh, which generates the installation before running this.

#include "BenchGame.h"

#include "BufferManager.h"
#include "Database.h"
#include "FileManager.h"
#include "Log.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "MessageBoxes.h"
#include "MoReaderCached.h"
#include "SceneLight.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TankLoader.h"
#include "TextureLoader.h"
#include "VehicleGltf.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QSaveFile>
#include <QTemporaryDir>

#include <tiny_gltf.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

namespace {

const QString HeavyVehicle = QStringLiteral("Talon 0000");

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

// The program's managers after start-up over the large installation, in the
// viewport's order, with the heavy vehicle loaded.
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
        if (!context.create() || !context.makeCurrent(&surface))
            return;
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
        if (!shaders->loadShaders())
            return;
        matrices = std::make_unique<MatrixStack>();
        materials = std::make_unique<MaterialLoader>();
        materials->light = &light;
        textures = std::make_unique<TextureLoader>();
        materials->createDefaultMaterials();
        loader = std::make_unique<TankLoader>();
        loaded = loader->load(HeavyVehicle);
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

    QOffscreenSurface surface;
    QOpenGLContext context;
    bool loaded = false;
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

// The images a .glb holds, decoded, and its size.
struct Floor
{
    QList<QImage> images;
    qint64 bytes = 0;
};

Floor floorOf(const QString& glb)
{
    Floor floor;
    tinygltf::TinyGLTF reader;
    tinygltf::Model model;
    std::string error, warning;
    if (!reader.LoadBinaryFromFile(&model, &error, &warning, glb.toStdString()))
        return floor;
    for (const tinygltf::Image& image : model.images) {
        const int components = image.component;
        const QImage::Format format =
            components == 4 ? QImage::Format_RGBA8888 : QImage::Format_RGB888;
        QImage decoded(image.image.data(), image.width, image.height, image.width * components,
                       format);
        floor.images.append(decoded.copy());
    }
    floor.bytes = QFileInfo(glb).size();
    return floor;
}

// PNG encoding of every image with Qt, and one write of as many bytes as the
// .glb has, whole or not at all as the export writes.
double floorPass(const Floor& floor, const QString& path)
{
    const auto start = std::chrono::steady_clock::now();
    qint64 encoded = 0;
    for (const QImage& image : floor.images) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter(&buffer, "png").write(image);
        encoded += bytes.size();
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QByteArray(floor.bytes, char(encoded & 0x7f)));
        file.commit();
    }
    return millisecondsSince(start);
}

double exportPass(const QString& path)
{
    const auto start = std::chrono::steady_clock::now();
    QString error;
    if (!exportVehicleGltf(*installation->loader, path, &error))
        return -1;
    return millisecondsSince(start);
}

// Each iteration: the export, timed; then, untimed, the floor over the same
// images and bytes. The counters take the fastest of each: other work on
// the machine only ever adds time.
void BM_TalonGltfExport(benchmark::State& state)
{
    if (!installation || !installation->loaded) {
        state.SkipWithError("Talon 0000 did not load (bench/run.sh generates the installation)");
        return;
    }
    QTemporaryDir folder;
    const QString glb = folder.filePath(QStringLiteral("talon.glb"));
    if (exportPass(glb) < 0) {
        state.SkipWithError("the export failed");
        return;
    }
    const Floor floor = floorOf(glb);
    double fastestExport = 1e300, fastestFloor = 1e300;
    for (auto _ : state) {
        const double exported = exportPass(glb);
        state.SetIterationTime(exported / 1000);
        fastestExport = std::min(fastestExport, exported);
        fastestFloor = std::min(fastestFloor, floorPass(floor, folder.filePath("floor.bin")));
    }
    state.counters["export_ms"] = fastestExport;
    state.counters["floor_ms"] = fastestFloor;
    state.counters["ratio"] = fastestExport / fastestFloor;
    state.counters["images"] = floor.images.size();
    state.counters["glb_MB"] = double(floor.bytes) / 1e6;
}
BENCHMARK(BM_TalonGltfExport)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
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
