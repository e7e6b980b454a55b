#pragma once

// Process-wide names and relative paths. Relative paths hang on the working
// directory, which start-up sets to the executable's folder.
namespace Ferrox {
inline constexpr char ApplicationName[] = "Ferrox";
inline constexpr char ApplicationVersion[] = "1.0.17";
inline constexpr char DataDirectory[] = "../data/";
// The user guide as HTML with its pictures, beside data/.
inline constexpr char UserGuideFile[] = "../docs/user-guide.html";
inline constexpr char ShaderDirectory[] = "../data/shaders/";
inline constexpr char TranslationDirectory[] = "../languages/";
inline constexpr char GarageListName[] = "garages.cfg";
inline constexpr char ResourceFolder[] = "/res/";
inline constexpr char PackageFolder[] = "/res/packages/";
inline constexpr char ArchiveTag[] = "Zip";
inline constexpr char CollisionFolder[] = "collision";
inline constexpr char VisibilityProperty[] = "Visibility";
inline constexpr char DestroyedFolder[] = "crash/lod0";
inline constexpr char IntactFolder[] = "normal/lod0";
} // namespace Ferrox
