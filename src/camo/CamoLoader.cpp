#include "CamoLoader.h"

#include "BinaryReader.h"
#include "CamoCatalogue.h"
#include "CamoPreview.h"
#include "Database.h"
#include "FileManager.h"
#include "GlContext.h"
#include "GlFunctions.h"
#include "Log.h"
#include "PackedXmlReader.h"
#include "Settings.h"
#include "TankLoader.h"
#include "TextureLoader.h"

#include <QDir>
#include <QOpenGLFunctions_3_2_Core>

#include <memory>

namespace {

QString resourceFolder()
{
    const Settings* settings = Settings::instance();
    const QString game = settings ? settings->gavrelPath : QString();
    return QDir::toNativeSeparators(game + QStringLiteral("/res/"));
}

QImage previewOf(const CamoOption& option)
{
    FileManager* files = FileManager::instance();
    const std::unique_ptr<QIODevice> device(files ? files->getFile(option.texture) : nullptr);
    QByteArray pixels;
    int width = 0;
    int height = 0;
    if (!decodeDdsPixels(device.get(), pixels, width, height))
        return QImage();
    return camoPreview(pixels, width, height, option.armorColor, option.colors);
}

} // namespace

CamoLoader::CamoLoader(QObject* parent) : QObject(parent)
{
    Log::log(QStringLiteral("Creating camo loader."), Log::Info);
    // The table is rebuilt from a slot when the game path changes; the
    // patterns' textures belong to the program's context.
    if (Database* database = Database::instance()) {
        database->camouflageHooks.cleared = [this] {
            const GlContextScope viewport;
            clear();
        };
        database->camouflageHooks.nationRead = [this](const QString& path, const QString& name) {
            const GlContextScope viewport;
            loadNation(path, name);
        };
    }
    if (TankLoader* loader = TankLoader::instance())
        connect(loader, &TankLoader::tankLoaded, this, &CamoLoader::tankLoaded);
}

CamoLoader::~CamoLoader()
{
    if (Database* database = Database::instance())
        database->camouflageHooks = {};
    clear();
}

void CamoLoader::tankLoaded()
{
    const TankLoader* loader = TankLoader::instance();
    if (!loader || !loader->loaded)
        return;
    const VehicleFile& vehicle = loader->vehicle;
    loadForTank(loader->name, vehicle.vehicleMask, vehicle.chassisMask, vehicle.hullMask);
}

bool CamoLoader::loadNation(const QString& relativePath, const QString& nationName)
{
    Log::log(QStringLiteral("Loading camo xml file: ") + relativePath, Log::Info);
    const std::unique_ptr<QIODevice> device(
        FileManager::openPlainFile(resourceFolder() + relativePath));
    if (!device) {
        Log::log(QStringLiteral("Could not load camo xml file: ") + nationName, Log::Warning);
        return false;
    }
    BinaryReader binary(device.get());
    PackedXmlReader reader(&binary);
    const QDomDocument document = reader.read(QStringLiteral("customization.xml"));
    // The first child, whatever comes in front of the root in a plain file.
    CamoNation catalogue = readCamoCatalogue(document.firstChildElement(), nationName);
    TextureLoader* textures = TextureLoader::instance();
    for (CamoOption& option : catalogue.options) {
        Log::log(QStringLiteral("Loading non cached texture: ") + option.texture, Log::Info);
        option.textureId = textures ? textures->loadUncached(option.texture) : 0;
        option.preview = previewOf(option);
    }
    nations.append(catalogue);
    return true;
}

void CamoLoader::clear()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const TextureLoader* textures = TextureLoader::instance();
    const unsigned int fallback = textures ? textures->noTexture : 0;
    for (const CamoNation& catalogue : std::as_const(nations))
        for (const CamoOption& option : catalogue.options)
            // A pattern that failed to load holds the shared fallback.
            if (gl && option.textureId != 0 && option.textureId != fallback)
                gl->glDeleteTextures(1, &option.textureId);
    nations.clear();
    current = CamoNation();
    tankName.clear();
    chassisExclusionMask.clear();
    hullExclusionMask.clear();
    texture.clear();
    textureId = 0;
}

void CamoLoader::loadForTank(const QString& name, const QString&, const QString& chassisMask,
                             const QString& hullMask)
{
    Log::log(QStringLiteral("Loading camouflage options for tank: ") + name, Log::Info);
    tankName = name;
    chassisExclusionMask = QDir::toNativeSeparators(chassisMask);
    hullExclusionMask = QDir::toNativeSeparators(hullMask);

    const Database* database = Database::instance();
    const QString tankNation = database ? database->translatedNation(name) : QString();
    const bool nationChanged = tankNation != nation;
    if (nationChanged)
        emit summerChosen();
    nation = tankNation;
    tilingKey = database ? database->modelName(name) : QString();

    current = CamoNation();
    for (const CamoNation& catalogue : std::as_const(nations))
        if (catalogue.nation == nation)
            current = catalogue;
    applyOption(current.options.isEmpty() ? nullptr : &current.options.first());

    if (nationChanged)
        select(0, QStringLiteral("summer"));
    else
        select(selectedIndex, selectedSeason);
    // After the choice, so that the swatches show the applied colours.
    emit optionsChanged(nationChanged);
}

void CamoLoader::select(int index, const QString& season)
{
    selectedIndex = index;
    selectedSeason = season;
    applyOption(current.season(season).value(index, nullptr));
}

// No option (a nation without a catalogue, a season without patterns):
// nothing is applied and nothing drawn.
void CamoLoader::applyOption(const CamoOption* option)
{
    colors = option ? option->colors : std::array<Vector4, 4>{};
    texture = option ? option->texture : QString();
    textureId = option ? option->textureId : 0;
    tiling = option ? option->tilingFor(tilingKey) : Vector4{0, 0, 0, 0};
}

QStringList CamoLoader::descriptions(const QString& season) const
{
    QStringList texts;
    for (const CamoOption* option : current.season(season))
        texts.append(option->description);
    return texts;
}

QList<QImage> CamoLoader::previews(const QString& season) const
{
    QList<QImage> images;
    for (const CamoOption* option : current.season(season))
        images.append(option->preview);
    return images;
}
