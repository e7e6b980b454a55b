#include "TankMesh.h"

#include "GlFunctions.h"
#include "Log.h"
#include "Material.h"
#include "ObjExporter.h"
#include "PrimitiveParser.h"
#include "Settings.h"
#include "TransformChain.h"

#include <QOpenGLFunctions_3_2_Core>

namespace {

Matrix diagonal(const Vector3& v)
{
    return scalingMatrix(v);
}

// The steps a vehicle part adds around each group of the shared draw loop.
class PartDrawSteps : public GroupDrawSteps
{
public:
    PartDrawSteps(bool chassis, bool depth) : isChassis(chassis) { depthPass = depth; }

    void beforeApply(Material& material) override
    {
        // The chassis is seen from below through its tracks.
        if (isChassis)
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
    // No pattern catalogue is loaded for the vehicle yet, so no group shows
    // a camouflage: the flag is cleared as for a vehicle without one.
    static void updateCamouflage(Material& material) { material.camoEnabled = false; }

    bool isChassis;
};

} // namespace

TankMesh::TankMesh(Mesh* parentMesh, TransformChain* transformChain)
    : Mesh(parentMesh), placement(identityMatrix()), chain(transformChain)
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
    PartDrawSteps steps(partType == Chassis, pass == 0);
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
