#include "Material.h"
#include "MaterialLoader.h"

#include "GlFunctions.h"
#include "GlTestContext.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "ShaderLoader.h"

#include <QDomDocument>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <tuple>

namespace {
class MaterialTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(context.valid);
        settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");
        ASSERT_TRUE(shaders.loadShaders()) << logs.lines.join('\n').toStdString();
    }

    // The material's nodes from an XML text, as the visual hands them over.
    QList<Material*> parse(const QString& body, bool collision = false)
    {
        document.setContent(QStringLiteral("<material>") + body + QStringLiteral("</material>"));
        const QDomNodeList nodes = document.documentElement().childNodes();
        const QList<Material*> pair = collision ? materials.parseCollisionMaterial(nodes)
                                                : materials.parseMaterial(nodes, true);
        owned.emplace_back(pair.at(0));
        owned.emplace_back(pair.at(1));
        return pair;
    }

    ShaderProgram* program(int id) { return shaders.program(id); }
    static QOpenGLFunctions_3_2_Core& gl() { return *glFunctions(); }

    static GLuint makeTexture()
    {
        GLuint id = 0;
        gl().glGenTextures(1, &id);
        return id;
    }

    static GLint uniformValue(const Material& material, const char* uniform)
    {
        GLint value = -1;
        gl().glGetUniformiv(material.shader->program->programId(),
                            material.shader->uniformLocation(uniform), &value);
        return value;
    }

    static GLuint textureOnUnit(int unit)
    {
        GLint id = 0;
        gl().glActiveTexture(GL_TEXTURE0 + GLenum(unit));
        gl().glGetIntegerv(GL_TEXTURE_BINDING_2D, &id);
        return GLuint(id);
    }

    GlTestContext context;
    LogCapture logs;
    Settings settings{QString()};
    ShaderLoader shaders;
    MaterialLoader materials;
    QDomDocument document;
    std::vector<std::unique_ptr<Material>> owned;
};
} // namespace

TEST_F(MaterialTest, PropertiesBlendRequestsAndCollisionMaterialsFillThePair)
{
    const QList<Material*> pair = parse(R"(
<fx> shaders/std_effects/PBS_tank.fx </fx> <identifier>hull_01</identifier>
<property>alphaReference<Int>128</Int></property><property>doubleSided<Bool>true</Bool></property>
<property> alphaTestEnable <Bool>True</Bool></property><property>unknownThing<Int>1</Int></property>
<property>g_detailPower<Float>50</Float></property>
<property>g_useDetailMetallic<Bool>true</Bool></property>
<property>g_metallicDetailUVTiling<Vector4>1 2 3 4</Vector4></property>
<property>g_useNormalPackDXT1<Bool>false</Bool></property>
<property>diffuseMap<Texture>maps/a.dds</Texture></property>
<property>specularMap<Texture>maps/s.dds</Texture></property>
<property>metallicDetailMap<Texture></Texture></property>
<property>excludeMaskAndAOMap<Texture>maps/ao.dds</Texture></property>)");
    Material* lit = pair.at(0);
    Material* unlit = pair.at(1);
    for (const Material* material : pair) {
        EXPECT_EQ(material->name, "hull_01");
        EXPECT_NEAR(material->alphaRef, 0.5019608f, 1e-6f);
        EXPECT_TRUE(material->alphaTest);
        EXPECT_TRUE(material->doubleSided);
        EXPECT_FALSE(material->dxt1NormalMap);
    }
    EXPECT_FLOAT_EQ(lit->detailPower, 0.5f);
    EXPECT_TRUE(lit->detailMetallic);
    EXPECT_FALSE(unlit->detailMetallic);
    EXPECT_EQ(lit->detailTile, (Vector4{1, 2, 3, 4}));
    QList<int> litSlots = lit->textures.keys();
    std::sort(litSlots.begin(), litSlots.end());
    // The current clients' mask and AO map has no slot and loads nothing.
    EXPECT_EQ(litSlots, (QList<int>{0, 3}));
    EXPECT_EQ(unlit->textures.keys(), QList<int>{0});
    EXPECT_EQ(lit->shader, program(BumpedPbs));
    EXPECT_EQ(unlit->shader, program(NoLighting));

    // Either blend property asks for blending.
    const Material* sourceOnly = parse("<property>srcBlend<Int>5</Int></property>").at(1);
    EXPECT_TRUE(sourceOnly->blend);
    // The effect counts wherever its element stands.
    const Material* inverseAlpha = parse("<property>destBlend<Int>13</Int></property>"
                                         "<fx>shaders/std_effects/PBS_tank.fx</fx>")
                                       .at(0);
    EXPECT_TRUE(inverseAlpha->blend);
    EXPECT_EQ(inverseAlpha->destFactor, GLenum(GL_ONE_MINUS_SRC_ALPHA));
    EXPECT_EQ(inverseAlpha->shader, program(BumpedPbs));

    // Collision materials read only their name and sides.
    const QList<Material*> collision = parse("<identifier>  armor   7 </identifier>"
                                             "<property>doubleSided<Bool> TRUE </Bool></property>",
                                             true);
    EXPECT_EQ(collision.at(0)->shader, program(CollisionLighting));
    EXPECT_EQ(collision.at(1)->shader, program(CollisionNoLighting));
    for (const Material* material : collision) {
        EXPECT_EQ(material->name, "armor 7");
        EXPECT_TRUE(material->doubleSided);
    }
}

TEST_F(MaterialTest, EffectNamesMapOntoPrograms)
{
    // clang-format off
    const std::tuple<QStringList, int, int> groups[] = {
        {{"normalmap_specmap_dual"}, BumpedDual, NoLightingDual},
        {{"lightonly_alpha", "lightonly_uvtransform_alpha"}, LightingOnlyAlpha, NoLighting},
        {{"lightonly", "lightonly_skinned"}, LightingOnly, NoLighting},
        {{"normalmap_specmap", "normalmap_specmap_skinned", "normalmap_specmap_uvtransform_skinned",
          "PBS_tank_old", "PBS_tank_old_skinned", "PBS_tank_old_uvtransform_skinned"},
         Bumped, NoLighting},
        {{"PBS_ext_dual"}, BumpedPbsDual, NoLightingDual},
        {{"PBS_ext", "PBS_tank", "PBS_tank_skinned", "PBS_tank_uvtransform_skinned"},
         BumpedPbs, NoLighting}};
    // clang-format on
    for (const auto& [effects, lit, unlit] : groups)
        for (const QString& effect : effects)
            EXPECT_EQ(MaterialLoader::shadersForEffect("shaders/std_effects/" + effect + ".fx"),
                      qMakePair(lit, unlit))
                << effect.toStdString();
    const QPair<int, int> fallback(LightingOnly, NoLighting);
    EXPECT_EQ(MaterialLoader::shadersForEffect(""), fallback);
    EXPECT_EQ(MaterialLoader::shadersForEffect("shaders/std_effects/PBS_TANK.fx"), fallback);
    EXPECT_EQ(logs.lines.filter("[Warning]"), QStringList{"[Warning] Could not find shader "
                                                          "conversion for: shaders/std_effects/"
                                                          "PBS_TANK.fx\nPlease report to "
                                                          "https://ferrox.example.org"});
}

TEST_F(MaterialTest, ApplySetsBlendCullProgramAndTextureUnits)
{
    Material lit(Material::Lit);
    lit.blend = true;
    lit.destFactor = GL_ONE_MINUS_SRC_ALPHA;
    const GLuint diffuse = makeTexture();
    const GLuint normal = makeTexture();
    lit.textures.insert(Material::NormalSlot, normal);
    lit.textures.insert(Material::DiffuseSlot, diffuse);
    lit.apply();

    GLint value = 0;
    EXPECT_TRUE(gl().glIsEnabled(GL_BLEND));
    gl().glGetIntegerv(GL_BLEND_DST_RGB, &value);
    EXPECT_EQ(value, GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_TRUE(gl().glIsEnabled(GL_CULL_FACE));
    gl().glGetIntegerv(GL_CURRENT_PROGRAM, &value);
    EXPECT_EQ(GLuint(value), program(Bumped)->program->programId());
    EXPECT_EQ(uniformValue(lit, "diffuseMap0"), 0);
    EXPECT_EQ(uniformValue(lit, "normalMap"), 1);
    EXPECT_EQ(textureOnUnit(0), diffuse);
    EXPECT_EQ(textureOnUnit(1), normal);

    // An unlit material has no samplers for slots 3 to 5: specularMap keeps its unit.
    Material unlit(Material::Unlit);
    unlit.shader = program(BumpedDual);
    unlit.doubleSided = true;
    for (int slot : {3, 2, 1, 0})
        unlit.textures.insert(slot, makeTexture());
    unlit.shader->program->bind();
    gl().glUniform1i(unlit.shader->uniformLocation("specularMap"), 6);
    unlit.apply();
    EXPECT_FALSE(gl().glIsEnabled(GL_BLEND));
    EXPECT_FALSE(gl().glIsEnabled(GL_CULL_FACE));
    for (const auto& [uniform, unit] :
         {std::pair{"diffuseMap0", 0}, {"diffuseMap1", 1}, {"normalMap", 2}, {"specularMap", 6}})
        EXPECT_EQ(uniformValue(unlit, uniform), unit) << uniform;

    unlit.camoEnabled = true;
    unlit.name = "hull_01";
    unlit.apply();
    EXPECT_EQ(uniformValue(unlit, "camoEnabled"), 1);
    unlit.name = "turret_equipment_01";
    unlit.apply();
    EXPECT_EQ(uniformValue(unlit, "camoEnabled"), 0);
}
