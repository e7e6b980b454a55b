#include "TankMesh.h"

#include "AppliedCamouflage.h"
#include "GlFunctions.h"
#include "Log.h"
#include "Material.h"
#include "ObjExporter.h"
#include "PrimitiveParser.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TankLoader.h"
#include "TextureLoader.h"
#include "TransformChain.h"
#include "TurretGunChooser.h"

#include <QOpenGLFunctions_3_2_Core>

namespace {

Matrix diagonal(const Vector3& v)
{
    return scalingMatrix(v);
}

constexpr int CamoMapUnit = 9;

// Material names that never carry paint, as the game has it (case counts).
bool unpaintedMaterial(const QString& name)
{
    return name.contains(QLatin1String("equipment")) || name.contains(QLatin1String("bottom")) ||
           name.contains(QLatin1String("track"));
}

Vector4 componentProduct(const Vector4& a, const Vector4& b)
{
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2], a[3] * b[3]};
}

// The exclusion mask and tiling a part of the given type takes; false when
// the part shows no camouflage at all.
bool partCamouflage(int partType, const AppliedCamouflage& applied, QString& mask, Vector4& tiling)
{
    tiling = {1, 1, 1, 1};
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    switch (partType) {
    case TankMesh::Chassis:
        mask = applied.chassisExclusionMask;
        if (mask.isEmpty())
            return false;
        break;
    case TankMesh::Hull:
        mask = applied.hullExclusionMask;
        break;
    case TankMesh::Turret:
        if (const Turret* turret = chooser ? chooser->currentTurret() : nullptr) {
            mask = turret->exclusionMask;
            tiling = turret->tiling;
        }
        return true;
    case TankMesh::Gun:
        if (const Gun* gun = chooser ? chooser->currentGun() : nullptr) {
            mask = gun->exclusionMask;
            tiling = gun->tiling;
        }
        return true;
    default:
        return false;
    }
    mask.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return true;
}

// The steps a vehicle part adds around each group of the shared draw loop.
class PartDrawSteps : public GroupDrawSteps
{
public:
    PartDrawSteps(int type, bool depth) : partType(type) { depthPass = depth; }

    void beforeApply(Material& material) override
    {
        // The chassis is seen from below through its tracks.
        if (partType == TankMesh::Chassis)
            material.doubleSided = true;
    }
    void afterApply(Material& material) override
    {
        if (depthPass)
            glFunctions()->glEnable(GL_CULL_FACE);
        updateCamouflage(material);
    }
    void afterDraw(Material&) override
    {
        if (depthPass)
            glFunctions()->glDisable(GL_CULL_FACE);
    }

private:
    // Material::apply has already run, so the shader sees this flag from the
    // next draw of the group on.
    void updateCamouflage(Material& material) const
    {
        material.camoEnabled = false;
        QString mask;
        Vector4 tiling;
        if (!TankMesh::camouflageFor(partType, material.name, &mask, &tiling))
            return;
        const AppliedCamouflage* applied = AppliedCamouflage::active();
        material.camoEnabled = true;
        for (size_t channel = 0; channel < applied->colors.size(); ++channel)
            for (size_t i = 0; i < 4; ++i)
                material.camoColors[channel][i] = applied->colors[channel][i] * ColourScale;
        TextureLoader* textures = TextureLoader::instance();
        if (textures)
            material.bindExclusionMap(mask.isEmpty() ? 0 : textures->textureByName(mask, false));
        material.camoTiling = tiling;
        if (material.shader && textures) {
            glFunctions()->glUniform1i(material.shader->uniformLocation(QStringLiteral("camoMap")),
                                       CamoMapUnit);
            textures->bindTexture(CamoMapUnit, applied->textureId);
        }
        material.applyCamouflage();
    }

    static constexpr float ColourScale = 0.003921569f;
    int partType;
};

} // namespace

bool TankMesh::camouflageFor(int partType, const QString& materialName, QString* mask,
                             Vector4* tiling)
{
    const AppliedCamouflage* applied = AppliedCamouflage::active();
    const TankLoader* loader = TankLoader::instance();
    if (!applied || !applied->enabled || (loader && loader->damageMode != Intact) ||
        unpaintedMaterial(materialName))
        return false;
    Vector4 partTiling;
    if (!partCamouflage(partType, *applied, *mask, partTiling))
        return false;
    *tiling = componentProduct(partTiling, applied->tiling);
    return true;
}

TankMesh::TankMesh(Mesh* parentMesh, TransformChain* transformChain)
    : Mesh(parentMesh), chain(transformChain)
{
    parser = new PrimitiveParser;
    visual = new Visual;
}

TankMesh::~TankMesh()
{
    delete visual;
    delete parser;
}

Node* TankMesh::findNode(const Mesh* mesh, const QString& name)
{
    if (!mesh || !mesh->visual || !mesh->visual->rootNode)
        return nullptr;
    Node* root = mesh->visual->rootNode;
    if (root->identifier.compare(name, Qt::CaseInsensitive) == 0)
        return root;
    return root->find(name);
}

const Mesh* TankMesh::chassisMesh() const
{
    const Mesh* mesh = this;
    while (mesh->parent)
        mesh = mesh->parent;
    return mesh;
}

bool TankMesh::load(const QString& modelPath, const Vector3& givenOffset, int type,
                    bool perTankTextures)
{
    partType = type;
    path = modelPath;
    offset = givenOffset;
    if (!parser->load(path))
        return false;
    if (!visual->load(parser, path, geometries, uvGroups, true, perTankTextures))
        return false;
    if (partType != UvOnly)
        place();
    return true;
}

void TankMesh::place()
{
    model = identityMatrix();
    const Node* tank = findNode(chassisMesh(), QStringLiteral("tank"));
    const Matrix S = tank ? diagonal(tank->scale) : identityMatrix();
    const RenderSet* firstSet = visual->renderSets.value(0);
    const Node* F = firstSet ? firstSet->nodes.value(0) : nullptr;
    const Matrix FScale = F ? diagonal(F->scale) : identityMatrix();
    const Matrix FTransform = F ? F->transform : identityMatrix();

    // A missing joint leaves the part at its parent's origin; the model is
    // still shown, only out of place.
    auto joint = [this](const Mesh* on, const char* name) {
        const Node* node = findNode(on, QLatin1String(name));
        if (!node) {
            Log::log(QStringLiteral("No ") + QLatin1String(name) + QStringLiteral(" node for: ") +
                         path,
                     Log::Warning);
            return Vector3{0, 0, 0};
        }
        return node->translation;
    };

    switch (partType) {
    case Chassis:
        model = matrixProduct(matrixProduct(translationMatrix(offset), FScale), S);
        break;
    case Hull:
        model = matrixProduct(matrixProduct(translationMatrix(offset), FTransform), S);
        break;
    case Turret:
        offset = joint(parent, "HP_turretJoint");
        model = translationMatrix(offset);
        break;
    case Gun: {
        offset = joint(parent, "HP_gunJoint");
        const bool worldSpace = firstSet && firstSet->treatAsWorldSpaceObject;
        model = matrixProduct(translationMatrix(offset), worldSpace ? FScale : FTransform);
        if (const Node* gun = findNode(this, QStringLiteral("gun")))
            model = matrixProduct(model, gun->transform);
        break;
    }
    default:
        break;
    }
}

void TankMesh::release()
{
    deleteGeometries();
    uvGroups.clear();
    parser->clear();
    visual->unload();
}

void TankMesh::unload()
{
    release();
    offset = {0, 0, 0};
}

bool TankMesh::reload()
{
    const Vector3 kept = offset;
    release();
    return load(path, kept, partType, false);
}

void TankMesh::draw(bool hidden, int pass, Material* material, ShaderProgram* shader)
{
    if (partType == UvOnly || !chain)
        return;
    PartDrawSteps steps(partType, pass == 0);
    bool first = true;
    for (const RenderSet* set : visual->renderSets) {
        if (partType == Chassis)
            chain->push();
        chain->multiply(model);
        if (first)
            placement = chain->current;
        first = false;
        // A hidden part still moves the chain, so the parts after it keep
        // their place.
        if (!hidden)
            drawRenderSet(*set, chain->current, material, shader, &steps);
        if (partType == Chassis)
            chain->pop();
    }
}

bool TankMesh::exportObj()
{
    // Without a mod folder the files would land beside the program.
    const Settings* settings = Settings::instance();
    if (!chain || !settings || settings->modPath.isEmpty())
        return false;
    if (partType == Chassis)
        chain->push();
    chain->multiply(model);
    const bool written = ObjExporter(settings->modPath).exportMesh(*this, chain->current);
    if (partType == Chassis)
        chain->pop();
    return written;
}
