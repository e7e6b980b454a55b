#include "WeakSpotsCommand.h"

#include "ArmorCommand.h"
#include "Camera.h"
#include "CameraControls.h"
#include "OffscreenVehicle.h"
#include "Physics.h"
#include "RayWorldSnapshot.h"
#include "RenderCommand.h"
#include "TankLoader.h"
#include "ToolContext.h"
#include "WeakSpotMap.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <thread>

namespace {

const char* usage =
    "usage: ferrox-tool weakspots GAME_DIR NAME (--shell NAME | --pen MM [--calibre MM] "
    "[--type T]) [--distance M] --out FILE [--size WxH] [--camera FILE] [--yaw DEG] "
    "[--turret-yaw DEG] [--gun-pitch DEG] [--json]";

struct Request
{
    QString out;
    QByteArray format;
    QSize size{1024, 768};
    QString camera;
    float yaw = 0;
    float turretYaw = 0;
    float gunPitch = 0;
    ShellParamaters shell;
};

bool readRequest(const ToolArguments& arguments, Request* request)
{
    if (!arguments.hasOption(QStringLiteral("shell")) &&
        !arguments.hasOption(QStringLiteral("pen"))) {
        printError(QStringLiteral("weakspots needs --shell NAME or --pen MM"));
        return false;
    }
    const QString camera = arguments.option(QStringLiteral("camera"));
    if (!camera.isEmpty()) {
        request->camera = QFileInfo(camera).absoluteFilePath();
        if (!QFileInfo(request->camera).isFile()) {
            printError(QStringLiteral("No camera file: ") + camera);
            return false;
        }
    }
    return readImageOut(arguments.option(QStringLiteral("out")), arguments.positional[0],
                        &request->out, &request->format) &&
           (!arguments.hasOption(QStringLiteral("size")) ||
            readImageSize(arguments.option(QStringLiteral("size")), &request->size)) &&
           readNumberOption(arguments, "yaw", "degrees", &request->yaw) &&
           readNumberOption(arguments, "turret-yaw", "degrees", &request->turretYaw) &&
           readNumberOption(arguments, "gun-pitch", "degrees", &request->gunPitch) &&
           readShellOptions(arguments, &request->shell);
}

// The viewport's start camera, or the camera file's, at the picture's size.
bool viewOf(const Request& request, WeakSpotView* view)
{
    Camera camera;
    CameraControls controls(camera);
    controls.resetCamera();
    if (!request.camera.isEmpty() && !controls.loadView(request.camera)) {
        printError(QStringLiteral("Not a camera file: ") + request.camera);
        return false;
    }
    controls.resize(request.size.width(), request.size.height());
    view->view = camera.view;
    view->projection = camera.projection;
    view->size = request.size;
    return true;
}

QJsonObject sharesJson(const WeakSpotShares& shares)
{
    const double whole = shares.silhouette > 0 ? shares.silhouette : 1;
    return QJsonObject{{"silhouettePixels", shares.silhouette},
                       {"penetrated", shares.penetrated / whole},
                       {"notPenetrated", shares.notPenetrated / whole},
                       {"ricochet", shares.ricochet / whole},
                       {"noRegularPlate", shares.noRegularPlate / whole}};
}

} // namespace

int weakSpotsCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2) {
        printError(QLatin1String(usage));
        return 2;
    }
    Request request;
    if (!readRequest(arguments, &request))
        return 1;
    Physics physics;
    OffscreenVehicle vehicle;
    vehicle.installArmor = true;
    if (!vehicle.load(arguments))
        return 1;
    TankLoader& loader = vehicle.loader();
    if (!chooseGunShell(arguments, *loader.chooser, &request.shell))
        return 1;
    WeakSpotView view;
    if (!viewOf(request, &view))
        return 1;
    loader.setTankRotation(request.yaw);
    loader.setTurretRotation(request.turretYaw);
    loader.setGunRotation(request.gunPitch);
    loader.placeCollisionModels();

    const int threads = int(std::max(1u, std::thread::hardware_concurrency()));
    // The same copy of the ray world the window's map is made from.
    const std::shared_ptr<RayWorldSnapshot> snapshot = RayWorldSnapshot::capture(*physics.world());
    snapshot->build();
    const QVector<WeakSpotPixel> pixels =
        WeakSpotMap::compute(snapshot->world(), request.shell, view, threads);
    if (!writeImageOut(WeakSpotMap::image(pixels, request.size), request.out, request.format))
        return 1;
    if (arguments.hasOption(QStringLiteral("json"))) {
        const QByteArray json =
            QJsonDocument(sharesJson(WeakSpotMap::shares(pixels))).toJson(QJsonDocument::Indented);
        std::fwrite(json.constData(), 1, size_t(json.size()), stdout);
    }
    return 0;
}
