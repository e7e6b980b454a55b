#pragma once

#include "Maths.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <array>

// What one GPU pass of the bake draws with: GL names of the diffuse
// texture, the exclusion mask and the pattern, the tiling, and the colours
// on the file's scale, 0 to 255.
struct CamoBakeInputs
{
    unsigned int diffuse = 0;
    unsigned int exclusionMask = 0;
    unsigned int pattern = 0;
    Vector4 tiling{0, 0, 0, 0};
    std::array<Vector4, 4> colors{};
};

// The pattern drawn into a size-sized copy of the diffuse texture by the
// camoSaver program, read back as BGRA rows in the diffuse texture's own
// order. Empty without a context, the program or a complete target.
QByteArray renderCamoBake(const CamoBakeInputs& inputs, QSize size);

// BGRA pixels compressed to DXT1 with mipmaps and written to path whole or
// not at all.
bool saveCamoBake(const QString& path, const QByteArray& bgra, QSize size);

// One texture of the bake: the diffuse texture at its resource path, the
// exclusion mask that goes with it and the tiling to use. The result goes to
// the same relative path under the mod folder.
class CamoBakeJob
{
public:
    enum Result
    {
        Written,
        Refused, // the user kept an existing file
        Failed
    };

    CamoBakeJob(const QString& diffusePath, const QString& maskPath, const Vector4& jobTiling);

    Result run();
    // Where the result goes: the mod folder and the diffuse path (a ".tga"
    // name standing for its ".dds" file, as the game reads it).
    QString outputPath() const;

    QString diffuse;
    QString exclusionMask;
    Vector4 tiling;

private:
    bool confirmOverwrite(const QString& path) const;
    Result bake(const QString& path);
};

// Whether path lies in folder or below it (both made absolute and clean).
bool isInsideFolder(const QString& path, const QString& folder);
