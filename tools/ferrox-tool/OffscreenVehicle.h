#pragma once

#include "SceneLight.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QString>

#include <memory>

class BufferManager;
class CamoLoader;
class Database;
class MaterialLoader;
class MatrixStack;
class MoReaderCached;
class ShaderLoader;
class TankLoader;
class TextureLoader;
class ToolContext;
struct ToolArguments;

// A vehicle of a game folder assembled as the program assembles it, without
// a window: the game's files, the catalogues and the vehicle table, an
// off-screen OpenGL 3.2 core context (current while this lives) and the
// managers the viewport makes when its GL starts, in the viewport's order:
// ShaderLoader, MaterialLoader, TankLoader, TextureLoader, then MatrixStack
// and the default materials. Log warnings and message boxes go to standard
// error.
class OffscreenVehicle
{
public:
    OffscreenVehicle();
    ~OffscreenVehicle();
    OffscreenVehicle(const OffscreenVehicle&) = delete;
    OffscreenVehicle& operator=(const OffscreenVehicle&) = delete;

    // GAME_DIR and NAME are the command's two positional arguments; --mod,
    // --resources and --tank-list are honoured. False, with the reason on
    // standard error, for a folder that is no game, a name that is not in
    // the table, no usable GL, or a vehicle the program cannot assemble.
    bool load(const ToolArguments& arguments);

    TankLoader& loader() { return *tankLoader; }
    // Set before load(): the camouflage catalogues are read too (once GL
    // exists, as the viewport does) and follow the loaded vehicle.
    bool withCamouflage = false;
    CamoLoader* camouflage() { return camo.get(); }
    // Gives the loader its collision state and armour tables (the armour
    // inspection's), before load; the ray world is the Physics singleton.
    bool installArmor = false;
    QString gameDirectory() const;

private:
    bool createContext();
    bool createManagers();

    std::unique_ptr<ToolContext> tool;
    std::unique_ptr<MoReaderCached> catalogues;
    std::unique_ptr<Database> database;
    QOffscreenSurface surface;
    QOpenGLContext context;
    bool contextMade = false;
    SceneLight light;
    std::unique_ptr<BufferManager> buffers;
    std::unique_ptr<ShaderLoader> shaders;
    std::unique_ptr<MaterialLoader> materials;
    std::unique_ptr<TankLoader> tankLoader;
    std::unique_ptr<CamoLoader> camo;
    std::unique_ptr<TextureLoader> textures;
    std::unique_ptr<MatrixStack> matrices;
};
