#include "RenderCommand.h"

#include "CamoCommands.h"
#include "CamoLoader.h"
#include "FrameRenderer.h"
#include "OffscreenVehicle.h"
#include "Physics.h"
#include "Settings.h"
#include "SurfaceFormat.h"
#include "TankLoader.h"
#include "ToolContext.h"
#include "VehiclePose.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QRegularExpression>
#include <QSaveFile>

#include <cmath>

namespace {

const QSize DefaultSize(1024, 768);

struct RenderRequest
{
    QString out; // absolute
    QByteArray format;
    QSize size = DefaultSize;
    VehiclePose pose;
    QString camera; // absolute, empty for the viewport's start camera
    bool garage = true;
    bool transparent = false;
    // A group's camouflage flag reaches its shader from the frame after it
    // is set: one frame more is drawn first.
    bool camouflage = false;
    // The window's "Hide" boxes, draw style and grid texture.
    bool hidden[4] = {};
    bool wireframe = false;
    bool solidWire = false;
    bool gridTexture = false;
    // An armour shot from the eye toward the far point, as a Ctrl + click
    // in armour mode fires it: the ray and the hit marker are drawn.
    bool ray = false;
    Vector3 rayFrom{};
    Vector3 rayTo{};
};

bool fail(const QString& message)
{
    printError(message);
    return false;
}

bool readSize(const QString& text, QSize* size)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,6})x(\\d{1,6})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch() || match.captured(1).toInt() < 1 || match.captured(2).toInt() < 1)
        return fail(QStringLiteral("--size wants WIDTHxHEIGHT in pixels, such as 1024x768: ") +
                    text);
    *size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    return true;
}

// Says why FILE cannot be written before anything is rendered. The game
// folder is never written to, whatever the user asks.
bool readOutFile(const QString& text, const QString& gameDirectory, RenderRequest* request)
{
    if (text.isEmpty())
        return fail(QStringLiteral("render needs --out FILE"));
    request->out = QFileInfo(text).absoluteFilePath();
    const QString resolved = resolvedPath(request->out);
    if (resolved.isEmpty())
        return fail(QStringLiteral("No folder to write into: ") + QFileInfo(text).absolutePath());
    if (insideFolder(resolved, gameDirectory))
        return fail(QStringLiteral("Ferrox never writes into the game folder: ") + text);
    if (QFileInfo(resolved).isDir())
        return fail(QStringLiteral("--out is a folder: ") + text);
    request->format = QFileInfo(text).suffix().toLower().toLatin1();
    if (!QImageWriter::supportedImageFormats().contains(request->format))
        return fail(QStringLiteral("No image format for the suffix of: ") + text +
                    QStringLiteral(" (use .png, .jpg, .bmp, ...)"));
    return true;
}

bool readHidden(const QString& text, bool hidden[4])
{
    static const QStringList parts{QStringLiteral("chassis"), QStringLiteral("hull"),
                                   QStringLiteral("turret"), QStringLiteral("gun")};
    for (const QString& part : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const int index = int(parts.indexOf(part.trimmed()));
        if (index < 0)
            return fail(QStringLiteral("--hide takes chassis, hull, turret and gun: ") + text);
        hidden[index] = true;
    }
    return true;
}

bool readStyle(const QString& text, RenderRequest* request)
{
    request->wireframe = text == QLatin1String("wire");
    request->solidWire = text == QLatin1String("solid-wire");
    if (text.isEmpty() || text == QLatin1String("solid") || request->wireframe ||
        request->solidWire)
        return true;
    return fail(QStringLiteral("--draw is solid, wire or solid-wire, not: ") + text);
}

bool readRay(const QString& text, RenderRequest* request)
{
    if (text.isEmpty())
        return true;
    const QStringList ends = text.split(QLatin1Char(':'));
    bool ok = ends.size() == 2;
    for (int end = 0; ok && end < 2; ++end) {
        const QStringList numbers = ends[end].split(QLatin1Char(','));
        ok = numbers.size() == 3;
        Vector3& point = end == 0 ? request->rayFrom : request->rayTo;
        for (int i = 0; ok && i < 3; ++i) {
            point[size_t(i)] = numbers[i].toFloat(&ok);
            ok = ok && std::isfinite(point[size_t(i)]);
        }
    }
    if (!ok)
        return fail(QStringLiteral("--ray wants X,Y,Z:X,Y,Z (from the eye to the far point): ") +
                    text);
    request->ray = true;
    return true;
}

bool readCamera(const QString& text, QString* camera)
{
    if (text.isEmpty())
        return true;
    *camera = QFileInfo(text).absoluteFilePath();
    if (!QFileInfo(*camera).isFile())
        return fail(QStringLiteral("No camera file: ") + text);
    return true;
}

// Every relative path is made whole here: loading the game moves the
// working directory to the program's folder.
bool readRequest(const ToolArguments& arguments, RenderRequest* request)
{
    request->garage = !arguments.hasOption(QStringLiteral("no-garage"));
    request->transparent = arguments.hasOption(QStringLiteral("transparent"));
    request->gridTexture = arguments.hasOption(QStringLiteral("grid-texture"));
    return readHidden(arguments.option(QStringLiteral("hide")), request->hidden) &&
           readStyle(arguments.option(QStringLiteral("draw")), request) &&
           readRay(arguments.option(QStringLiteral("ray")), request) &&
           readOutFile(arguments.option(QStringLiteral("out")), arguments.positional[0], request) &&
           (!arguments.hasOption(QStringLiteral("size")) ||
            readSize(arguments.option(QStringLiteral("size")), &request->size)) &&
           readVehiclePose(arguments, &request->pose) &&
           readCamera(arguments.option(QStringLiteral("camera")), &request->camera);
}

// The window's "Hide" boxes, draw style and grid texture onto the loader.
void placeView(TankLoader& loader, const RenderRequest& request)
{
    loader.hideChassis = request.hidden[0];
    loader.hideHull = request.hidden[1];
    loader.hideTurret = request.hidden[2];
    loader.hideGun = request.hidden[3];
    loader.wireframe = request.wireframe;
    loader.solidWire = request.solidWire;
    loader.gridTexture = request.gridTexture;
}

// The four swatch colours of the camouflage panel, as #aarrggbb or any name
// QColor knows, in place of the pattern's own.
bool applyCamoColours(CamoLoader& camo, const ToolArguments& arguments)
{
    if (!arguments.hasOption(QStringLiteral("camo-colours")))
        return true;
    const QStringList names =
        arguments.option(QStringLiteral("camo-colours")).split(QLatin1Char(','));
    if (names.size() != int(camo.colors.size()))
        return fail(QStringLiteral("--camo-colours wants four colours, such as "
                                   "#ffff0000,#ff00ff00,#ff0000ff,#ffffffff"));
    for (int channel = 0; channel < names.size(); ++channel) {
        const QColor colour(names[channel]);
        if (!colour.isValid())
            return fail(QStringLiteral("Not a colour: ") + names[channel]);
        camo.colors[size_t(channel)] = {float(colour.red()), float(colour.green()),
                                        float(colour.blue()), float(colour.alpha())};
    }
    return true;
}

// The window's armour mode, its view textured or, with --state collision,
// the collision models: the shell is fired once the collision objects stand
// where the frame draws the vehicle.
void fireArmorRay(TankLoader& loader, const RenderRequest& request, FrameRenderer& frame)
{
    Physics& physics = *Physics::instance();
    physics.marks.moveHitMarker = [&frame](const Vector3& position) {
        frame.scene.hitMarker.setPosition(position);
    };
    physics.marks.rayLine = [&frame](const Vector3& start, const Vector3& end) {
        frame.scene.rayStart = start;
        frame.scene.rayEnd = end;
    };
    frame.armorMode = true;
    loader.armorToggle(true);
    loader.armourModel = request.pose.state == Collision ? Collision : Intact;
    // One frame places the collision objects of turret and gun.
    frame.renderToImage(16, 16, false);
    physics.fireRay(request.rayFrom, request.rayTo);
}

// The viewport's frame with the program's first-run scene settings: the
// premium garage, full materials with shadows, no grid and no text.
bool renderVehicle(TankLoader& loader, const RenderRequest& request, QImage* image)
{
    Settings& settings = *Settings::instance();
    settings.showShadows = true;
    FrameRenderer::setInitialGlState();
    FrameRenderer frame;
    frame.viewportColor = settings.viewportColor;
    frame.garageShown = request.garage;
    frame.gridShown = false;
    frame.tankInfoShown = false;
    frame.premiumScene = settings.sceneSet != QLatin1String("basic");
    // The samples a window with these settings draws with.
    frame.imageSamples = msaaSampleCount(settings.msaa);
    frame.create(settings.shadowMap);
    frame.scene.add([&loader](ScenePass pass) { loader.render(pass); });
    if (request.ray)
        fireArmorRay(loader, request, frame);
    bool ok = true;
    if (!request.camera.isEmpty() && !frame.controls.loadView(request.camera))
        ok = fail(QStringLiteral("Not a camera file: ") + request.camera);
    const int largest = FrameRenderer::maxImageSize();
    if (ok && (request.size.width() > largest || request.size.height() > largest))
        ok = fail(QStringLiteral("This OpenGL renders at most %1 pixels a side").arg(largest));
    if (ok && request.camouflage)
        frame.renderToImage(request.size.width(), request.size.height(), request.transparent);
    if (ok) {
        *image =
            frame.renderToImage(request.size.width(), request.size.height(), request.transparent);
        // The viewport shows an opaque picture; only a transparent one keeps
        // the alpha the materials wrote.
        if (!request.transparent)
            *image = image->convertToFormat(QImage::Format_RGB32);
    }
    frame.release();
    return ok;
}

// Whole or not at all: a failed write leaves no file behind.
bool writeImage(const QImage& image, const RenderRequest& request)
{
    QSaveFile file(request.out);
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("Cannot write ") + request.out + QStringLiteral(": ") +
                    file.errorString());
    QImageWriter writer(&file, request.format);
    if (!writer.write(image)) {
        file.cancelWriting();
        return fail(QStringLiteral("Cannot write ") + request.out + QStringLiteral(": ") +
                    writer.errorString());
    }
    if (!file.commit())
        return fail(QStringLiteral("Cannot write ") + request.out + QStringLiteral(": ") +
                    file.errorString());
    return true;
}

} // namespace

int renderCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2) {
        printError(QStringLiteral(
            "usage: ferrox-tool render GAME_DIR NAME --out FILE [--size WxH] "
            "[--state intact|destroyed|collision] [--turret NAME] [--gun NAME] [--yaw DEG] "
            "[--turret-yaw DEG] [--gun-pitch DEG] [--camera FILE.Camera] [--no-garage] "
            "[--transparent] [--mod DIR] [--camo SEASON:ROW] [--hide PART,...] "
            "[--draw solid|wire|solid-wire] [--grid-texture] [--ray X,Y,Z:X,Y,Z] "
            "[--camo-colours C0,C1,C2,C3]"));
        return 2;
    }
    RenderRequest request;
    if (!readRequest(arguments, &request))
        return 1;
    // The collision state needs the armour inspection and its ray world.
    Physics physics;
    OffscreenVehicle vehicle;
    const QString camoChoice = arguments.option(QStringLiteral("camo"));
    vehicle.withCamouflage = arguments.hasOption(QStringLiteral("camo"));
    request.camouflage = vehicle.withCamouflage;
    vehicle.installArmor = request.pose.state == Collision || request.ray;
    if (!vehicle.load(arguments))
        return 1;
    TankLoader& loader = vehicle.loader();
    if (!fitTurretAndGun(loader, request.pose))
        return 1;
    if (vehicle.withCamouflage && (!applyCamoChoice(*vehicle.camouflage(), camoChoice) ||
                                   !applyCamoColours(*vehicle.camouflage(), arguments)))
        return 1;
    placeVehicle(loader, request.pose);
    placeView(loader, request);
    QImage image;
    if (!renderVehicle(loader, request, &image) || !writeImage(image, request))
        return 1;
    return 0;
}

bool readImageOut(const QString& text, const QString& gameDirectory, QString* path,
                  QByteArray* format)
{
    RenderRequest request;
    if (!readOutFile(text, gameDirectory, &request))
        return false;
    *path = request.out;
    *format = request.format;
    return true;
}

bool readImageSize(const QString& text, QSize* size)
{
    return readSize(text, size);
}

bool writeImageOut(const QImage& image, const QString& path, const QByteArray& format)
{
    RenderRequest request;
    request.out = path;
    request.format = format;
    return writeImage(image, request);
}
