#include "Material.h"

#include "GlFunctions.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "SceneLight.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TextureLoader.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

#include <algorithm>
#include <utility>
#include <vector>

namespace {
constexpr GLenum TextureMaxAnisotropy = 0x84FE;
constexpr int ShadowMapUnit = 7;
constexpr int ExclusionMapUnit = 8;
// Never given a texture: samplers without one of their material read black.
constexpr int EmptyUnit = 10;

// Slot and texture pairs in rising slot order; a slot given twice appears twice.
std::vector<std::pair<int, unsigned int>>
texturesBySlot(const QMultiHash<int, unsigned int>& textures)
{
    std::vector<std::pair<int, unsigned int>> entries;
    entries.reserve(size_t(textures.size()));
    for (auto entry = textures.constBegin(); entry != textures.constEnd(); ++entry)
        entries.emplace_back(entry.key(), entry.value());
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    return entries;
}

void bindWithoutLoader(QOpenGLFunctions_3_2_Core* gl, int unit, unsigned int id)
{
    gl->glActiveTexture(GL_TEXTURE0 + GLenum(unit));
    gl->glBindTexture(GL_TEXTURE_2D, id);
}

void bindTextureUnit(QOpenGLFunctions_3_2_Core* gl, int unit, unsigned int id)
{
    if (TextureLoader* loader = TextureLoader::instance())
        loader->bindTexture(unit, id);
    else
        bindWithoutLoader(gl, unit, id);
}
} // namespace

Material::Material(int materialKind) : kind(materialKind)
{
    if (const ShaderLoader* shaders = ShaderLoader::instance())
        shader = shaders->program(materialKind == Lit ? Bumped : NoLighting);
}

const char* Material::samplerName(int slot) const
{
    switch (slot) {
    case DiffuseSlot:
        return "diffuseMap0";
    case Diffuse2Slot:
        return "diffuseMap1";
    case NormalSlot:
        return "normalMap";
    case SpecularSlot:
        return kind == Lit ? "specularMap" : nullptr;
    case GlossSlot:
        return kind == Lit ? "glossMap" : nullptr;
    case DetailSlot:
        return kind == Lit ? "detailMap" : nullptr;
    default:
        return nullptr;
    }
}

void Material::apply()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;

    if (blend) {
        gl->glEnable(GL_BLEND);
        gl->glBlendFunc(GL_SRC_ALPHA, destFactor);
    } else {
        gl->glDisable(GL_BLEND);
    }

    if (doubleSided) {
        gl->glDisable(GL_CULL_FACE);
    } else {
        gl->glEnable(GL_CULL_FACE);
        gl->glCullFace(GL_BACK);
    }

    if (!shader || !shader->program)
        return;
    shader->program->bind();
    const auto location = [this](const char* uniform) {
        return shader->uniformLocation(QLatin1String(uniform));
    };

    gl->glUniform1f(location("alphaRef"), alphaTest ? alphaRef : 0.0f);

    // A sampler keeps the unit the last material gave it: one this material
    // has no texture for would read another material's texture (the first
    // frame, the diffuse map of unit 0) or nothing (later frames). It reads
    // the empty unit instead, as black.
    bindTextureUnit(gl, EmptyUnit, 0);
    for (int slot = DiffuseSlot; slot <= DetailSlot; ++slot)
        if (const char* sampler = samplerName(slot))
            gl->glUniform1i(location(sampler), EmptyUnit);

    // The unit counts entries, not slots: slots 0 and 2 land on units 0 and 1.
    int unit = 0;
    for (const auto& [slot, id] : texturesBySlot(textures)) {
        if (const char* sampler = samplerName(slot)) {
            gl->glUniform1i(location(sampler), unit);
            bindTextureUnit(gl, unit, id);
        }
        ++unit;
    }

    if (const MatrixStack* matrices = MatrixStack::instance())
        gl->glUniformMatrix4fv(location("View"), 1, GL_FALSE, matrices->view.data());
    gl->glUniform1i(location("dxt1NormalMap"), dxt1NormalMap ? 1 : 0);

    if (kind == Lit)
        applyLighting(gl);

    const bool camouflage = !name.contains(QLatin1String("equipment")) && camoEnabled;
    gl->glUniform1i(location("camoEnabled"), camouflage ? 1 : 0);
    gl->glUniform4f(location("diffuseColor"), diffuseColor[0], diffuseColor[1], diffuseColor[2],
                    diffuseColor[3]);
}

void Material::applyLighting(QOpenGLFunctions_3_2_Core* gl)
{
    const auto location = [this](const char* uniform) {
        return shader->uniformLocation(QLatin1String(uniform));
    };
    const Settings* settings = Settings::instance();
    const bool shadows = settings && settings->showShadows;

    if (shadows) {
        const TextureLoader* loader = TextureLoader::instance();
        bindWithoutLoader(gl, ShadowMapUnit, loader ? loader->shadowTexture : 0);
        // The shadow map keeps the filters its owner gave it; only the
        // anisotropy follows the user's choice.
        if (loader && loader->anisotropy != 0)
            gl->glTexParameteri(GL_TEXTURE_2D, TextureMaxAnisotropy, GLint(loader->anisotropy));
        gl->glUniform1i(location("shadowMap"), ShadowMapUnit);
        gl->glUniform1f(location("shadowDivide"), shadowDivide);
        gl->glUniform1f(location("shadowSamples"), settings->shadowMapSamples);
    }

    const MaterialLoader* materials = MaterialLoader::instance();
    if (const SceneLight* light = materials ? materials->light : nullptr) {
        gl->glUniform3f(location("lightPos"), light->position[0], light->position[1],
                        light->position[2]);
        gl->glUniform3f(location("lightAmbient"), light->ambient[0], light->ambient[1],
                        light->ambient[2]);
        gl->glUniform3f(location("lightDiffuse"), light->diffuse[0], light->diffuse[1],
                        light->diffuse[2]);
    }

    gl->glUniform1i(location("shadowEnabled"), shadows ? 1 : 0);
    gl->glUniform1i(location("detailMetallic"), detailMetallic ? 1 : 0);
    if (detailMetallic) {
        gl->glUniform4f(location("detailTile"), detailTile[0], detailTile[1], detailTile[2],
                        detailTile[3]);
        gl->glUniform1f(location("detailPower"), detailPower);
    }
}

void Material::applyCamouflage()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl || !shader)
        return;
    const auto setVector = [this, gl](const QString& uniform, const Vector4& value) {
        gl->glUniform4f(shader->uniformLocation(uniform), value[0], value[1], value[2], value[3]);
    };
    setVector(QStringLiteral("camoTiling"), camoTiling);
    for (int i = 0; i < int(camoColors.size()); ++i)
        setVector(QStringLiteral("camoColor") + QString::number(i), camoColors[size_t(i)]);
}

void Material::bindExclusionMap(unsigned int id)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl || !shader)
        return;
    gl->glUniform1i(shader->uniformLocation(QStringLiteral("exclusionMap")), ExclusionMapUnit);
    bindTextureUnit(gl, ExclusionMapUnit, id);
}

unsigned int Material::diffuseTexture() const
{
    unsigned int id = 0;
    for (auto entry = textures.constBegin(); entry != textures.constEnd(); ++entry) {
        if (entry.key() == DiffuseSlot)
            id = entry.value();
    }
    return id;
}
