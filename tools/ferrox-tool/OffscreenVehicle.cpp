#include "OffscreenVehicle.h"

#include "ArmorCollisionState.h"
#include "BufferManager.h"
#include "CamoLoader.h"
#include "Database.h"
#include "GlContext.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "MoReaderCached.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "StartupError.h"
#include "SurfaceFormat.h"
#include "TankLoader.h"
#include "TextureLoader.h"
#include "ToolContext.h"

#include <QCoreApplication>
#include <QFileInfo>

OffscreenVehicle::OffscreenVehicle() = default;

OffscreenVehicle::~OffscreenVehicle()
{
    // GL objects go with the context current; the vehicle before the
    // texture caches its materials point into.
    if (contextMade)
        context.makeCurrent(&surface);
    camo.reset();
    tankLoader.reset();
    textures.reset();
    materials.reset();
    matrices.reset();
    shaders.reset();
    buffers.reset();
    if (contextMade) {
        context.doneCurrent();
        GlContext::clearOwner(&context);
    }
}

QString OffscreenVehicle::gameDirectory() const
{
    return tool ? tool->gameDirectory() : QString();
}

bool OffscreenVehicle::load(const ToolArguments& arguments)
{
    // The tool context moves to the program's folder; a relative table
    // path must be made whole before.
    const QString tankList =
        arguments.hasOption(QStringLiteral("tank-list"))
            ? QFileInfo(arguments.option(QStringLiteral("tank-list"))).absoluteFilePath()
            : QString();
    tool = std::make_unique<ToolContext>(arguments.positional[0], arguments);
    if (!tool->requireGameDirectory())
        return false;
    reportToStandardError();
    resetStartupState();

    catalogues = std::make_unique<MoReaderCached>();
    database = std::make_unique<Database>();
    if (!tankList.isEmpty())
        database->tankListPath = tankList;
    database->rebuildDatabase();
    if (startupErrorPending())
        printError(takeStartupError());
    const QString name = arguments.positional[1];
    if (database->xmlFile(name).isEmpty()) {
        printError(QStringLiteral("Not in the vehicle table: ") + name);
        return false;
    }

    if (!createContext() || !createManagers()) {
        printError(QStringLiteral("No OpenGL 3.2 core context with the program's shaders"));
        return false;
    }
    if (withCamouflage) {
        // The catalogues' textures need GL: the table is read once more.
        camo = std::make_unique<CamoLoader>();
        database->rebuildDatabase();
    }
    if (!tankLoader->load(name)) {
        printError(QStringLiteral("Ferrox cannot assemble: ") + name);
        return false;
    }
    return true;
}

bool OffscreenVehicle::createContext()
{
    const QSurfaceFormat format = ferroxSurfaceFormat(*Settings::instance());
    surface.setFormat(format);
    surface.create();
    context.setFormat(format);
    contextMade = context.create();
    if (contextMade)
        GlContext::setOwner(&context, [this] { context.makeCurrent(&surface); });
    return contextMade && context.makeCurrent(&surface) &&
           context.format().version() >= qMakePair(3, 2);
}

bool OffscreenVehicle::createManagers()
{
    Settings::instance()->shaderDir =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../data/shaders/glsl150/");
    buffers = std::make_unique<BufferManager>();
    shaders = std::make_unique<ShaderLoader>();
    if (!shaders->loadShaders())
        return false;
    materials = std::make_unique<MaterialLoader>();
    materials->light = &light;
    tankLoader = std::make_unique<TankLoader>();
    if (installArmor)
        installArmorCollisionState(*tankLoader);
    textures = std::make_unique<TextureLoader>();
    matrices = std::make_unique<MatrixStack>();
    materials->createDefaultMaterials();
    return true;
}
