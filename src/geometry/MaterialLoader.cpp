#include "MaterialLoader.h"

#include "Log.h"
#include "Material.h"
#include "ShaderLoader.h"
#include "TextureLoader.h"
#include "XmlHelpers.h"

#include <QDomElement>
#include <QOpenGLFunctions_3_2_Core>

namespace {
const char SiteAddress[] = "https://ferrox.example.org";
// The game's code for inverse source alpha as a destination factor.
constexpr int BlendInverseSourceAlpha = 13;
// Other codes come with no factor we could honour; the usual alpha blend
// keeps such a material see-through where its alpha says so, rather than
// leaving the factor to whatever an unset value means to GL.
constexpr GLenum UnknownDestFactor = GL_ONE_MINUS_SRC_ALPHA;

struct TextureProperty
{
    const char* name;
    int slot;
};

const TextureProperty textureProperties[] = {
    {"diffuseMap", Material::DiffuseSlot},     {"diffuseMap2", Material::Diffuse2Slot},
    {"normalMap", Material::NormalSlot},       {"specularMap", Material::SpecularSlot},
    {"metallicGlossMap", Material::GlossSlot}, {"metallicDetailMap", Material::DetailSlot}};

struct EffectShaders
{
    const char* effect;
    int lit;
    int unlit;
};

const EffectShaders effectTable[] = {
    {"shaders/std_effects/normalmap_specmap_dual.fx", BumpedDual, NoLightingDual},
    {"shaders/std_effects/lightonly_alpha.fx", LightingOnlyAlpha, NoLighting},
    {"shaders/std_effects/lightonly_uvtransform_alpha.fx", LightingOnlyAlpha, NoLighting},
    {"shaders/std_effects/lightonly.fx", LightingOnly, NoLighting},
    {"shaders/std_effects/lightonly_skinned.fx", LightingOnly, NoLighting},
    {"shaders/std_effects/normalmap_specmap.fx", Bumped, NoLighting},
    {"shaders/std_effects/normalmap_specmap_skinned.fx", Bumped, NoLighting},
    {"shaders/std_effects/normalmap_specmap_uvtransform_skinned.fx", Bumped, NoLighting},
    {"shaders/std_effects/PBS_ext_dual.fx", BumpedPbsDual, NoLightingDual},
    {"shaders/std_effects/PBS_ext.fx", BumpedPbs, NoLighting},
    {"shaders/std_effects/PBS_tank.fx", BumpedPbs, NoLighting},
    {"shaders/std_effects/PBS_tank_skinned.fx", BumpedPbs, NoLighting},
    {"shaders/std_effects/PBS_tank_uvtransform_skinned.fx", BumpedPbs, NoLighting},
    {"shaders/std_effects/PBS_tank_old.fx", Bumped, NoLighting},
    {"shaders/std_effects/PBS_tank_old_skinned.fx", Bumped, NoLighting},
    {"shaders/std_effects/PBS_tank_old_uvtransform_skinned.fx", Bumped, NoLighting},
    {"", LightingOnly, NoLighting}};

ShaderProgram* programFor(int id)
{
    const ShaderLoader* shaders = ShaderLoader::instance();
    return shaders ? shaders->program(id) : nullptr;
}

// The text of the first element of this type anywhere in the property; empty
// when there is none, which reads as false, 0 or a name nobody has.
QString typedValue(const QDomElement& property, const char* type)
{
    return property.elementsByTagName(QLatin1String(type)).at(0).toElement().text();
}

bool boolValue(const QDomElement& property)
{
    return typedValue(property, "Bool").contains(QLatin1String("true"), Qt::CaseInsensitive);
}

// What one material element asks for, gathered before it goes into the pair.
struct MaterialReading
{
    explicit MaterialReading(bool loadPerTank)
        : lit(new Material(Material::Lit)), unlit(new Material(Material::Unlit)),
          perTankTextures(loadPerTank)
    {
    }

    Material* lit;
    Material* unlit;
    bool perTankTextures;
    QString effect;
    bool blendRequested = false;
    int destBlend = 0;

    void setBoth(bool Material::*flag, bool value) const
    {
        lit->*flag = value;
        unlit->*flag = value;
    }

    void readProperty(const QDomElement& property, const QString& name);
    void readTexture(const QDomElement& property, const QString& name);
};

void MaterialReading::readTexture(const QDomElement& property, const QString& name)
{
    for (const TextureProperty& texture : textureProperties) {
        if (name != QLatin1String(texture.name))
            continue;
        const QString file = typedValue(property, "Texture");
        if (texture.slot == Material::DetailSlot && file.isEmpty())
            return;
        TextureLoader* loader = TextureLoader::instance();
        const unsigned int id = !loader           ? 0
                                : perTankTextures ? loader->loadTexture(file)
                                                  : loader->loadPermanentTexture(file);
        lit->textures.insert(texture.slot, id);
        if (unlit->samplerName(texture.slot))
            unlit->textures.insert(texture.slot, id);
        return;
    }
}

void MaterialReading::readProperty(const QDomElement& property, const QString& name)
{
    if (name == QLatin1String("g_useDetailMetallic")) {
        lit->detailMetallic = boolValue(property);
    } else if (name == QLatin1String("g_useNormalPackDXT1")) {
        setBoth(&Material::dxt1NormalMap, boolValue(property));
    } else if (name == QLatin1String("alphaTestEnable")) {
        setBoth(&Material::alphaTest, boolValue(property));
    } else if (name == QLatin1String("alphaReference")) {
        const float reference = typedValue(property, "Int").trimmed().toInt() * (1.0f / 255.0f);
        lit->alphaRef = reference;
        unlit->alphaRef = reference;
    } else if (name == QLatin1String("g_detailPower")) {
        lit->detailPower = typedValue(property, "Float").trimmed().toFloat() * 0.01f;
    } else if (name == QLatin1String("g_metallicDetailUVTiling")) {
        lit->detailTile = parseVector4(typedValue(property, "Vector4"));
    } else if (name == QLatin1String("srcBlend")) {
        blendRequested = true;
    } else if (name == QLatin1String("destBlend")) {
        blendRequested = true;
        destBlend = typedValue(property, "Int").trimmed().toInt();
    } else if (name == QLatin1String("doubleSided")) {
        setBoth(&Material::doubleSided, boolValue(property));
    } else {
        readTexture(property, name);
    }
}

// A property names itself in a text node beside its typed value; element
// children have no node value and so match no name.
template <typename Handler> void forEachPropertyName(const QDomNode& property, Handler handle)
{
    const QDomNodeList children = property.childNodes();
    for (int i = 0; i < children.size(); ++i) {
        const QString name = children.at(i).nodeValue().trimmed();
        if (!name.isEmpty())
            handle(property.toElement(), name);
    }
}
} // namespace

MaterialLoader::MaterialLoader(QObject* parent) : QObject(parent) {}

MaterialLoader::~MaterialLoader()
{
    qDeleteAll(defaultMaterials);
    defaultMaterials.clear();
    delete wireframeMaterial;
    delete depthMaterial;
}

void MaterialLoader::createDefaultMaterials()
{
    Log::log(QStringLiteral("Creating default materials."), Log::Info);
    const TextureLoader* textures = TextureLoader::instance();
    const unsigned int grid = textures ? textures->gridTexture : 0;
    for (int kind : {int(Material::Lit), int(Material::Unlit)}) {
        auto* material = new Material(kind);
        material->textures.insert(Material::DiffuseSlot, grid);
        defaultMaterials.append(material);
    }

    wireframeMaterial = new Material(Material::Unlit);
    wireframeMaterial->shader = programFor(Wireframe);
    depthMaterial = new Material(Material::Unlit);
    depthMaterial->shader = programFor(Depth);
}

QPair<int, int> MaterialLoader::shadersForEffect(const QString& effect)
{
    for (const EffectShaders& row : effectTable) {
        if (effect == QLatin1String(row.effect))
            return {row.lit, row.unlit};
    }
    Log::log(QStringLiteral("Could not find shader conversion for: ") + effect +
                 QStringLiteral("\nPlease report to ") + QLatin1String(SiteAddress),
             Log::Warning);
    return {LightingOnly, NoLighting};
}

QList<Material*> MaterialLoader::parseMaterial(const QDomNodeList& nodes, bool perTankTextures)
{
    MaterialReading reading(perTankTextures);

    for (int i = 0; i < nodes.size(); ++i) {
        const QDomNode node = nodes.at(i);
        const QString tag = node.nodeName();
        if (tag == QLatin1String("identifier")) {
            reading.lit->name = node.toElement().text();
            reading.unlit->name = reading.lit->name;
        } else if (tag == QLatin1String("fx")) {
            reading.effect = node.toElement().text().simplified();
        } else if (tag == QLatin1String("property")) {
            forEachPropertyName(node, [&reading](const QDomElement& property, const QString& name) {
                reading.readProperty(property, name);
            });
        }
    }

    if (!nodes.isEmpty() && reading.blendRequested) {
        const GLenum factor = reading.destBlend == BlendInverseSourceAlpha
                                  ? GLenum(GL_ONE_MINUS_SRC_ALPHA)
                                  : UnknownDestFactor;
        for (Material* material : {reading.lit, reading.unlit}) {
            material->blend = true;
            material->destFactor = factor;
        }
    }

    // Last, so that the fx element may stand anywhere among the properties.
    const QPair<int, int> programs = shadersForEffect(reading.effect);
    reading.lit->shader = programFor(programs.first);
    reading.unlit->shader = programFor(programs.second);
    return {reading.lit, reading.unlit};
}

QList<Material*> MaterialLoader::parseCollisionMaterial(const QDomNodeList& nodes)
{
    auto* lit = new Material(Material::Lit);
    auto* unlit = new Material(Material::Unlit);

    for (int i = 0; i < nodes.size(); ++i) {
        const QDomNode node = nodes.at(i);
        const QString tag = node.nodeName();
        if (tag == QLatin1String("identifier")) {
            lit->name = node.toElement().text().simplified();
            unlit->name = lit->name;
        } else if (tag == QLatin1String("property")) {
            forEachPropertyName(
                node, [lit, unlit](const QDomElement& property, const QString& name) {
                    if (name != QLatin1String("doubleSided"))
                        return;
                    const bool value = typedValue(property, "Bool")
                                           .trimmed()
                                           .contains(QLatin1String("true"), Qt::CaseInsensitive);
                    lit->doubleSided = value;
                    unlit->doubleSided = value;
                });
        }
    }

    lit->shader = programFor(CollisionLighting);
    unlit->shader = programFor(CollisionNoLighting);
    return {lit, unlit};
}
