#include "PbrMapping.h"

#include "Material.h"
#include "ShaderLoader.h"

#include <cmath>

namespace PbrMapping {

namespace {

bool usesProgram(const Material& material, std::initializer_list<int> ids)
{
    if (!material.shader)
        return false;
    for (int id : ids)
        if (material.shader->name == shaderName(id))
            return true;
    return false;
}

float unit(int channel)
{
    return float(channel) * (2.0f / 255.0f) - 1.0f;
}

int channel(float unitValue)
{
    return qBound(0, int(std::lround((unitValue * 0.5f + 0.5f) * 255.0f)), 255);
}

} // namespace

AlphaMode alphaMode(const Material& material)
{
    if (material.blend)
        return AlphaMode::Blend;
    if (material.alphaTest || usesProgram(material, {LightingOnlyAlpha, NoLightingAlpha}))
        return AlphaMode::Mask;
    return AlphaMode::Opaque;
}

float alphaCutoff(const Material& material)
{
    // The programs that always test take half when the material names no
    // reference.
    if (material.alphaTest && material.alphaRef > 0)
        return material.alphaRef;
    return usesProgram(material, {LightingOnlyAlpha, NoLightingAlpha}) ? 0.5f : material.alphaRef;
}

bool readsMetallicGloss(const Material& material)
{
    return usesProgram(material, {BumpedPbs, BumpedPbsDual});
}

QImage normalMap(const QImage& game, bool redGreenPacking)
{
    const QImage source = game.convertToFormat(QImage::Format_RGBA8888);
    QImage out(source.size(), QImage::Format_RGB888);
    for (int y = 0; y < source.height(); ++y) {
        const uchar* in = source.constScanLine(y);
        uchar* row = out.scanLine(y);
        for (int x = 0; x < source.width(); ++x, in += 4, row += 3) {
            const float nx = unit(redGreenPacking ? in[0] : in[3]);
            const float ny = unit(in[1]);
            const float nz = std::sqrt(std::max(1.0f - nx * nx - ny * ny, 0.0f));
            row[0] = uchar(channel(nx));
            row[1] = uchar(channel(ny));
            row[2] = uchar(channel(nz));
        }
    }
    return out;
}

QImage metallicRoughness(const QImage& metallicGloss)
{
    const QImage source = metallicGloss.convertToFormat(QImage::Format_RGBA8888);
    QImage out(source.size(), QImage::Format_RGB888);
    for (int y = 0; y < source.height(); ++y) {
        const uchar* in = source.constScanLine(y);
        uchar* row = out.scanLine(y);
        for (int x = 0; x < source.width(); ++x, in += 4, row += 3) {
            row[0] = 0;
            row[1] = uchar(255 - in[1]);
            row[2] = in[0];
        }
    }
    return out;
}

double linearFromSrgb(float channel)
{
    const double c = qBound(0.0, double(channel), 1.0);
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

} // namespace PbrMapping
