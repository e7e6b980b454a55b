#include "RenderCommand.h"

#include "CamoCommands.h"
#include "FrameRenderer.h"
#include "OffscreenVehicle.h"
#include "Physics.h"
#include "Settings.h"
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
    return readOutFile(arguments.option(QStringLiteral("out")), arguments.positional[0], request) &&
           (!arguments.hasOption(QStringLiteral("size")) ||
            readSize(arguments.option(QStringLiteral("size")), &request->size)) &&
           readVehiclePose(arguments, &request->pose) &&
           readCamera(arguments.option(QStringLiteral("camera")), &request->camera);
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
    frame.create(settings.shadowMap);
    frame.scene.add([&loader](ScenePass pass) { loader.render(pass); });
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
            "[--transparent] [--mod DIR] [--camo SEASON:ROW]"));
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
    vehicle.installArmor = request.pose.state == Collision;
    if (!vehicle.load(arguments))
        return 1;
    TankLoader& loader = vehicle.loader();
    if (!fitTurretAndGun(loader, request.pose))
        return 1;
    if (vehicle.withCamouflage && !applyCamoChoice(*vehicle.camouflage(), camoChoice))
        return 1;
    placeVehicle(loader, request.pose);
    QImage image;
    if (!renderVehicle(loader, request, &image) || !writeImage(image, request))
        return 1;
    return 0;
}
