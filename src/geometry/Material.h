#pragma once

#include "Maths.h"

#include <QMultiHash>
#include <QString>

#include <array>

class QOpenGLFunctions_3_2_Core;
class ShaderProgram;

// The GL state of one primitive group in one lighting mode: program, flags,
// textures by slot and the values the shaders read.
class Material
{
public:
    enum Kind
    {
        Lit = 0,
        Unlit = 1
    };
    // Texture slots, in the order of their properties.
    enum Slot
    {
        DiffuseSlot = 0,
        Diffuse2Slot = 1,
        NormalSlot = 2,
        SpecularSlot = 3,
        GlossSlot = 4,
        DetailSlot = 5
    };

    // kind 0 takes the program Bumped, 1 NoLighting (if ShaderLoader exists).
    explicit Material(int kind);

    // Puts the material on the GL state: blending, culling, program, samplers
    // and textures, lighting and shadow uniforms.
    void apply();
    void applyCamouflage();
    // The camoEnabled uniform from camoEnabled (equipment is never painted),
    // for a caller that changes the flag after apply().
    void applyCamouflageFlag();
    void bindExclusionMap(unsigned int id);
    unsigned int diffuseTexture() const;

    // The sampler name of a slot for this material's kind; null if the slot
    // has none (slots 3 to 5 of an unlit material).
    const char* samplerName(int slot) const;

    bool blend = false;
    bool alphaTest = false;
    float alphaRef = 0;
    float shadowDivide = 90.0f;
    bool dxt1NormalMap = true;
    bool detailMetallic = false;
    unsigned int destFactor = 0;
    // Slot to texture; a slot given twice keeps both entries.
    QMultiHash<int, unsigned int> textures;
    QString name;
    ShaderProgram* shader = nullptr;
    int kind = Lit;
    bool doubleSided = false;
    Vector4 diffuseColor{0, 0, 0, 0};
    std::array<Vector4, 4> camoColors{};
    Vector4 camoTiling{0, 0, 0, 0};
    bool camoEnabled = false;
    bool skipDraw = false;
    Vector4 detailTile{0, 0, 0, 0};
    float detailPower = 0;

private:
    // The shadow, light and detail uniforms only lit programs read.
    void applyLighting(QOpenGLFunctions_3_2_Core* gl);
};
