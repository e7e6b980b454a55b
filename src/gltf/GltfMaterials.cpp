#include "GltfMaterials.h"

#include "AppliedCamouflage.h"
#include "CamoBakeJob.h"
#include "CollisionArmor.h"
#include "GlFunctions.h"
#include "GltfDocument.h"
#include "Log.h"
#include "Material.h"
#include "PbrMapping.h"
#include "TankMesh.h"
#include "TextureLoader.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QOpenGLFunctions_3_2_Core>

namespace {

QByteArray pngBytes(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    writer.write(image);
    return bytes;
}

QString textureTitle(unsigned int id)
{
    const TextureLoader* loader = TextureLoader::instance();
    const QString name = loader ? loader->textureName(id) : QString();
    return name.isEmpty() ? QStringLiteral("texture") : QFileInfo(name).completeBaseName();
}

bool missing(unsigned int id)
{
    const TextureLoader* loader = TextureLoader::instance();
    return id == 0 || (loader && id == loader->noTexture);
}

tinygltf::Value::Object armorExtras(const QString& name, const ArmorValue& armor)
{
    return {{"armor", tinygltf::Value(name.toStdString())},
            {"thickness_mm", tinygltf::Value(double(armor.value))},
            {"spaced", tinygltf::Value(armor.spaced)}};
}

} // namespace

GltfMaterials::GltfMaterials(GltfDocument& target) : document(target) {}

QImage GltfMaterials::readTexture(unsigned int id)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl || missing(id))
        return QImage();
    gl->glBindTexture(GL_TEXTURE_2D, id);
    GLint width = 0, height = 0;
    gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    QImage image;
    if (width > 0 && height > 0) {
        image = QImage(width, height, QImage::Format_RGBA8888);
        gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
        gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    }
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    return image;
}

int GltfMaterials::addImage(const QString& key, const QImage& image, const QString& name)
{
    const int index = document.addPngTexture(pngBytes(image), name);
    textures.insert(key, index);
    return index;
}

int GltfMaterials::slotTexture(const Material& material, int slot, const QString& role,
                               QImage (*convert)(const QImage&, const Material&))
{
    if (!material.textures.contains(slot))
        return -1;
    const unsigned int id = material.textures.value(slot);
    const QString key = QStringLiteral("%1/%2").arg(id).arg(role);
    if (textures.contains(key))
        return textures.value(key);
    const QImage image = readTexture(id);
    if (image.isNull()) {
        Log::log(QStringLiteral("glTF export: the %1 map of material %2 could not be loaded "
                                "and is left out")
                     .arg(role, material.name),
                 Log::Warning);
        textures.insert(key, -1);
        return -1;
    }
    return addImage(key, convert(image, material), textureTitle(id) + QLatin1Char('_') + role);
}

int GltfMaterials::baseColourTexture(const Material& material, int partType, bool withAlpha)
{
    QString mask;
    Vector4 tiling{1, 1, 1, 1};
    const AppliedCamouflage* applied = AppliedCamouflage::active();
    const unsigned int diffuse = material.textures.value(Material::DiffuseSlot);
    const bool camouflaged = material.textures.contains(Material::DiffuseSlot) &&
                             !missing(diffuse) && applied && applied->textureId &&
                             TankMesh::camouflageFor(partType, material.name, &mask, &tiling);
    // Opaque surfaces leave their alpha behind: glTF ignores it there.
    QImage (*plain)(const QImage&, const Material&) =
        withAlpha ? +[](const QImage& image, const Material&) { return image; }
                  : +[](const QImage& image, const Material&) {
                        return image.convertToFormat(QImage::Format_RGB888);
                    };
    const QString role = withAlpha ? QStringLiteral("baseColorAlpha") : QStringLiteral("baseColor");
    if (!camouflaged)
        return slotTexture(material, Material::DiffuseSlot, role, plain);

    // The pattern drawn into the diffuse map as the viewport's shader draws
    // it over the same texels.
    TextureLoader* loader = TextureLoader::instance();
    CamoBakeInputs inputs;
    inputs.diffuse = diffuse;
    inputs.exclusionMask = mask.isEmpty() || !loader ? 0 : loader->textureByName(mask, false);
    inputs.pattern = applied->textureId;
    inputs.tiling = tiling;
    inputs.colors = applied->colors;
    const QString key = QStringLiteral("%1/camo/%2/%3,%4,%5,%6/%7")
                            .arg(diffuse)
                            .arg(inputs.exclusionMask)
                            .arg(tiling[0])
                            .arg(tiling[1])
                            .arg(tiling[2])
                            .arg(tiling[3])
                            .arg(withAlpha);
    if (textures.contains(key))
        return textures.value(key);
    const QImage source = readTexture(diffuse);
    const QByteArray bgra = renderCamoBake(inputs, source.size());
    if (bgra.size() < qsizetype(source.width()) * source.height() * 4)
        return slotTexture(material, Material::DiffuseSlot, role, plain);
    QImage painted(reinterpret_cast<const uchar*>(bgra.constData()), source.width(),
                   source.height(), QImage::Format_ARGB32);
    painted = painted.convertToFormat(withAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    return addImage(key, painted, textureTitle(diffuse) + QStringLiteral("_camo"));
}

int GltfMaterials::normalTexture(const Material& material)
{
    if (material.kind != Material::Lit || !material.textures.contains(Material::NormalSlot))
        return -1;
    const QString role =
        material.dxt1NormalMap ? QStringLiteral("normal") : QStringLiteral("normalAG");
    return slotTexture(material, Material::NormalSlot, role,
                       [](const QImage& image, const Material& owner) {
                           return PbrMapping::normalMap(image, owner.dxt1NormalMap);
                       });
}

int GltfMaterials::metallicRoughnessTexture(const Material& material)
{
    if (!PbrMapping::readsMetallicGloss(material))
        return -1;
    return slotTexture(
        material, Material::GlossSlot, QStringLiteral("metallicRoughness"),
        [](const QImage& image, const Material&) { return PbrMapping::metallicRoughness(image); });
}

int GltfMaterials::forGroup(const Material& material, int partType, bool doubleSided,
                            bool withTangents)
{
    const QPair<const Material*, int> key(&material, partType * 2 + int(withTangents));
    if (materials.contains(key))
        return materials.value(key);
    tinygltf::Material out;
    out.name = material.name.toStdString();
    out.doubleSided = doubleSided;
    const PbrMapping::AlphaMode mode = PbrMapping::alphaMode(material);
    if (mode == PbrMapping::AlphaMode::Blend) {
        out.alphaMode = "BLEND";
    } else if (mode == PbrMapping::AlphaMode::Mask) {
        out.alphaMode = "MASK";
        out.alphaCutoff = PbrMapping::alphaCutoff(material);
    }
    tinygltf::PbrMetallicRoughness& pbr = out.pbrMetallicRoughness;
    pbr.baseColorTexture.index =
        baseColourTexture(material, partType, mode != PbrMapping::AlphaMode::Opaque);
    out.normalTexture.index = withTangents ? normalTexture(material) : -1;
    pbr.metallicRoughnessTexture.index = metallicRoughnessTexture(material);
    if (pbr.metallicRoughnessTexture.index < 0) {
        pbr.metallicFactor = 0;
        pbr.roughnessFactor = PbrMapping::NonMetalRoughness;
    }
    document.model.materials.push_back(out);
    const int index = int(document.model.materials.size()) - 1;
    materials.insert(key, index);
    return index;
}

int GltfMaterials::forArmor(const QString& name, const ArmorValue& armor, bool surveying,
                            bool doubleSided)
{
    const CollisionArmor* tables = CollisionArmor::instance();
    const Colour colour =
        tables ? tables->colourFor(armor.value, armor.spaced, surveying) : Colour{1, 1, 1, 1};
    tinygltf::Material out;
    out.name = name.toStdString();
    out.doubleSided = doubleSided;
    // The thickness colours are the display's sRGB values, as glTF's base
    // colour factor is linear.
    out.pbrMetallicRoughness.baseColorFactor = {PbrMapping::linearFromSrgb(colour[0]),
                                                PbrMapping::linearFromSrgb(colour[1]),
                                                PbrMapping::linearFromSrgb(colour[2]), 1.0};
    out.pbrMetallicRoughness.metallicFactor = 0;
    out.pbrMetallicRoughness.roughnessFactor = PbrMapping::NonMetalRoughness;
    out.extras = tinygltf::Value(armorExtras(name, armor));
    document.model.materials.push_back(out);
    return int(document.model.materials.size()) - 1;
}
