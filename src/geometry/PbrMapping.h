#pragma once

#include <QImage>

class Material;

// How the program's materials read as glTF's metallic-roughness materials:
// the one place that knows what the program's shaders (pbs.frag,
// lighting.frag) make of a material's maps, so that another renderer
// given the result draws the surface as the viewport does.
namespace PbrMapping {

enum class AlphaMode
{
    Opaque,
    Mask,
    Blend
};

// Alpha blending wins over the alpha test, as in Material::apply.
AlphaMode alphaMode(const Material& material);
// The cut-off of the alpha test, 0 to 1.
float alphaCutoff(const Material& material);
// Only the metallic/gloss programs read a metallicGlossMap.
bool readsMetallicGloss(const Material& material);

// The game's normal map (x and y in red and green, or x in alpha and y in
// green; z rebuilt) as a tangent-space RGB normal map. Its y runs along
// the binormal of the model, which the export's tangents carry in their
// sign, so y keeps its sign.
QImage normalMap(const QImage& game, bool redGreenPacking);
// The metallicGlossMap (red metallic, green gloss) as glTF's
// metallic-roughness texture: green roughness = 1 - gloss, blue metallic.
// The shaders square 1 - gloss into the distribution's alpha, as glTF does
// with its roughness.
QImage metallicRoughness(const QImage& metallicGloss);
// Surfaces of the older programs: no metal, and the roughness whose
// distribution is as broad as their Blinn-Phong highlight of power 32
// (alpha squared = 2 / (32 + 2), roughness its fourth root).
constexpr float NonMetalRoughness = 0.49f;

// A display colour channel (sRGB, 0 to 1) as glTF's linear colour factors
// take it; textures stay sRGB, as glTF reads base colour textures.
double linearFromSrgb(float channel);

} // namespace PbrMapping
