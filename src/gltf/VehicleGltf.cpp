#include "VehicleGltf.h"

#include "CollisionArmor.h"
#include "CollisionMesh.h"
#include "GltfDocument.h"
#include "GltfMaterials.h"
#include "IndexBuffer.h"
#include "Material.h"
#include "MaterialLoader.h"
#include "MeshGeometry.h"
#include "TankLoader.h"
#include "TankMesh.h"

#include <cmath>

namespace {

const char* const PartNames[TankLoader::PartCount] = {"Chassis", "Hull", "Turret", "Gun"};

// The inverse of an affine matrix (last row 0 0 0 1).
Matrix affineInverse(const Matrix& m)
{
    const float a = m[0], b = m[4], c = m[8], d = m[1], e = m[5], f = m[9], g = m[2], h = m[6],
                i = m[10];
    const float A = e * i - f * h, B = f * g - d * i, C = d * h - e * g;
    const float det = a * A + b * B + c * C;
    const float s = det != 0 ? 1.0f / det : 0.0f;
    Matrix out = identityMatrix();
    out[0] = A * s;
    out[1] = B * s;
    out[2] = C * s;
    out[4] = (c * h - b * i) * s;
    out[5] = (a * i - c * g) * s;
    out[6] = (b * g - a * h) * s;
    out[8] = (b * f - c * e) * s;
    out[9] = (c * d - a * f) * s;
    out[10] = (a * e - b * d) * s;
    for (int row = 0; row < 3; ++row)
        out[12 + row] = -(out[row] * m[12] + out[4 + row] * m[13] + out[8 + row] * m[14]);
    return out;
}

Vector3 point(const Matrix& m, const Vector3& p)
{
    return {m[0] * p[0] + m[4] * p[1] + m[8] * p[2] + m[12],
            m[1] * p[0] + m[5] * p[1] + m[9] * p[2] + m[13],
            m[2] * p[0] + m[6] * p[1] + m[10] * p[2] + m[14]};
}

// The 3 x 3 part of m applied to v.
Vector3 direction(const Matrix& m, const Vector3& v)
{
    return {m[0] * v[0] + m[4] * v[1] + m[8] * v[2], m[1] * v[0] + m[5] * v[1] + m[9] * v[2],
            m[2] * v[0] + m[6] * v[1] + m[10] * v[2]};
}

// The transpose of m's 3 x 3 part applied to v: with m an inverse, how a
// normal goes.
Vector3 transposedProduct(const Matrix& m, const Vector3& v)
{
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[4] * v[0] + m[5] * v[1] + m[6] * v[2],
            m[8] * v[0] + m[9] * v[1] + m[10] * v[2]};
}

// glTF wants unit normals and tangents; a zero one in the file becomes the
// fallback.
Vector3 unitOr(const Vector3& v, const Vector3& fallback)
{
    return dot(v, v) > 1e-12f ? normalised(v) : fallback;
}

// Some unit vector at right angles to the unit vector n.
Vector3 perpendicular(const Vector3& n)
{
    const Vector3 axis = std::abs(n[0]) < 0.9f ? Vector3{1, 0, 0} : Vector3{0, 1, 0};
    return normalised(cross(n, axis));
}

float determinant(const Matrix& m)
{
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

// The rotation part of a rotation matrix as x, y, z, w.
std::vector<double> quaternion(const Matrix& m)
{
    const double r00 = m[0], r11 = m[5], r22 = m[10];
    const double r01 = m[4], r10 = m[1], r02 = m[8], r20 = m[2], r12 = m[9], r21 = m[6];
    const double trace = r00 + r11 + r22;
    double x, y, z, w;
    if (trace > 0) {
        const double s = std::sqrt(trace + 1.0) * 2;
        w = 0.25 * s;
        x = (r21 - r12) / s;
        y = (r02 - r20) / s;
        z = (r10 - r01) / s;
    } else if (r00 > r11 && r00 > r22) {
        const double s = std::sqrt(1.0 + r00 - r11 - r22) * 2;
        w = (r21 - r12) / s;
        x = 0.25 * s;
        y = (r01 + r10) / s;
        z = (r02 + r20) / s;
    } else if (r11 > r22) {
        const double s = std::sqrt(1.0 + r11 - r00 - r22) * 2;
        w = (r02 - r20) / s;
        x = (r01 + r10) / s;
        y = 0.25 * s;
        z = (r12 + r21) / s;
    } else {
        const double s = std::sqrt(1.0 + r22 - r00 - r11) * 2;
        w = (r10 - r01) / s;
        x = (r02 + r20) / s;
        y = (r12 + r21) / s;
        z = 0.25 * s;
    }
    const double length = std::sqrt(x * x + y * y + z * z + w * w);
    return {x / length, y / length, z / length, w / length};
}

// A placement of translation and scale as TRS; any other as a matrix.
void setPlacement(tinygltf::Node& node, const Matrix& m)
{
    const bool diagonal = m[1] == 0 && m[2] == 0 && m[4] == 0 && m[6] == 0 && m[8] == 0 &&
                          m[9] == 0 && m[3] == 0 && m[7] == 0 && m[11] == 0 && m[15] == 1;
    if (!diagonal) {
        node.matrix.assign(m.begin(), m.end());
        return;
    }
    if (m[12] != 0 || m[13] != 0 || m[14] != 0)
        node.translation = {m[12], m[13], m[14]};
    if (m[0] != 1 || m[5] != 1 || m[10] != 1)
        node.scale = {m[0], m[5], m[10]};
}

quint32 indexAt(const MeshGeometry& geometry, qint64 position)
{
    return geometry.indices32.isEmpty() ? geometry.indices16.value(position)
                                        : geometry.indices32.value(position);
}

// One part's frame: the node it hangs on and the matrix that takes its
// model's vertices into that node's space.
struct PartFrame
{
    int node = -1;
    Matrix toNode = identityMatrix();
};

class SceneBuilder
{
public:
    SceneBuilder(TankLoader& vehicle, int shownState, GltfDocument& target)
        : loader(vehicle), state(shownState), document(target), materials(target)
    {
    }

    void build();

private:
    int addNode(const QString& name, int parent);
    void placeNodes(PartFrame frames[TankLoader::PartCount]);
    void addPart(int part, const PartFrame& frame);
    void addArmorPlates(const CollisionMesh& mesh, const PartFrame& frame);
    // The triangles of one group with the vertices they use, carried into
    // the node's space; false for a group that cannot be drawn.
    // Plates have no textures, and so no texture coordinates or tangents.
    bool addPrimitive(const RenderGeometry& geometry, int groupIndex, const Matrix& toNode,
                      bool textured, tinygltf::Primitive* primitive);

    TankLoader& loader;
    int state;
    GltfDocument& document;
    GltfMaterials materials;
};

int SceneBuilder::addNode(const QString& name, int parent)
{
    tinygltf::Node node;
    node.name = name.toStdString();
    document.model.nodes.push_back(node);
    const int index = int(document.model.nodes.size()) - 1;
    if (parent >= 0)
        document.model.nodes[size_t(parent)].children.push_back(index);
    return index;
}

// The nodes follow the chain a frame draws with: the hull's node carries the
// hull's placement (scale included, so that the turns below it shear as
// the frame's do), the turret's node sits at the turret's pivot in the
// hull's frame, the gun's at the gun's pivot in the turret's. The
// placements at rest give what lies between a node and its part's model;
// the angles shown become the nodes' rotations.
void SceneBuilder::placeNodes(PartFrame frames[TankLoader::PartCount])
{
    const Matrix shownVehicle = loader.tankRotation;
    const Matrix shownTurret = loader.turretRotation;
    const Matrix shownGun = loader.gunRotation;
    loader.tankRotation = loader.turretRotation = loader.gunRotation = identityMatrix();
    loader.placeParts(state);
    Matrix rest[TankLoader::PartCount];
    for (int part = 0; part < TankLoader::PartCount; ++part)
        rest[part] = loader.partMesh(part, state)->placement;
    loader.tankRotation = shownVehicle;
    loader.turretRotation = shownTurret;
    loader.gunRotation = shownGun;
    loader.placeParts(state);

    const Vector3 turretPivot = loader.turretPivot(state);
    const Vector3 gunPivot = loader.gunPivot(state);
    const Matrix hullWorld = rest[TankLoader::HullPart];
    const Matrix turretWorld = matrixProduct(hullWorld, translationMatrix(turretPivot));
    const Matrix gunWorld =
        matrixProduct(rest[TankLoader::TurretPart], translationMatrix(gunPivot));
    const Vector3 gunOffset = point(matrixProduct(affineInverse(turretWorld), gunWorld), {0, 0, 0});

    tinygltf::Model& model = document.model;
    const int root = addNode(loader.name, -1);
    model.nodes[size_t(root)].rotation = quaternion(shownVehicle);
    model.scenes.push_back(tinygltf::Scene());
    model.scenes[0].nodes.push_back(root);
    model.defaultScene = 0;

    const int chassis = addNode(PartNames[TankLoader::ChassisPart], root);
    const int hull = addNode(PartNames[TankLoader::HullPart], root);
    setPlacement(model.nodes[size_t(hull)], hullWorld);
    const int turret = addNode(PartNames[TankLoader::TurretPart], hull);
    model.nodes[size_t(turret)].translation = {turretPivot[0], turretPivot[1], turretPivot[2]};
    model.nodes[size_t(turret)].rotation = quaternion(shownTurret);
    const int gun = addNode(PartNames[TankLoader::GunPart], turret);
    model.nodes[size_t(gun)].translation = {gunOffset[0], gunOffset[1], gunOffset[2]};
    model.nodes[size_t(gun)].rotation = quaternion(shownGun);

    const int nodes[] = {chassis, hull, turret, gun};
    const Matrix nodeWorld[] = {identityMatrix(), hullWorld, turretWorld, gunWorld};
    for (int part = 0; part < TankLoader::PartCount; ++part)
        frames[part] = {nodes[part], matrixProduct(affineInverse(nodeWorld[part]), rest[part])};
    // A rotation of nothing is left out rather than written as identity.
    for (tinygltf::Node& node : model.nodes)
        if (node.rotation == std::vector<double>{0, 0, 0, 1})
            node.rotation.clear();
}

bool SceneBuilder::addPrimitive(const RenderGeometry& geometry, int groupIndex,
                                const Matrix& toNode, bool textured, tinygltf::Primitive* primitive)
{
    const MeshGeometry* data = geometry.data;
    const PrimitiveGroup* group = geometry.indexBuffer->groups.value(groupIndex, nullptr);
    if (!data || !group || !geometry.drawable(groupIndex))
        return false;
    const qint64 first = group->startIndex;
    const qint64 end = first + qint64(group->primitiveCount) * 3;
    if (end <= first)
        return false;
    quint32 low = UINT32_MAX, high = 0;
    for (qint64 i = first; i < end; ++i) {
        low = std::min(low, indexAt(*data, i));
        high = std::max(high, indexAt(*data, i));
    }
    // A chunk cut short leaves GL zeros where the copy has no vertices.
    if (high >= quint32(data->positions.size()))
        return false;
    // The group's own vertex range, where it holds its triangles, keeps the
    // vertices no triangle names, as the model has them.
    const qint64 rangeEnd = qint64(group->startVertex) + group->vertexCount;
    if (group->startVertex >= 0 && group->vertexCount > 0 && low >= quint32(group->startVertex) &&
        qint64(high) < rangeEnd && rangeEnd <= data->positions.size()) {
        low = quint32(group->startVertex);
        high = quint32(rangeEnd - 1);
    }
    // The mirror of the node's matrix, if it has one, turns the winding.
    const bool flip = determinant(toNode) < 0;
    QVector<quint32> indices;
    indices.reserve(int(end - first));
    for (qint64 i = first; i < end; i += 3) {
        const quint32 a = indexAt(*data, i) - low, b = indexAt(*data, i + 1) - low,
                      c = indexAt(*data, i + 2) - low;
        indices << a << (flip ? c : b) << (flip ? b : c);
    }
    const Matrix normalMatrix = affineInverse(toNode);
    const bool hasNormals = data->normals.size() == data->positions.size();
    const bool hasUvs = textured && data->uvs.size() == data->positions.size();
    const bool hasTangents = hasUvs && hasNormals &&
                             data->tangents.size() == data->positions.size() &&
                             data->binormals.size() == data->positions.size();
    QVector<float> positions, normals, uvs, tangents;
    for (quint32 v = low; v <= high; ++v) {
        const Vector3 p = point(toNode, data->positions[int(v)]);
        positions << p[0] << p[1] << p[2];
        if (hasNormals) {
            // The inverse transpose keeps normals upright under scaling.
            const Vector3 m =
                unitOr(transposedProduct(normalMatrix, data->normals[int(v)]), {0, 1, 0});
            normals << m[0] << m[1] << m[2];
            if (hasTangents) {
                // glTF rebuilds the binormal as cross(normal, tangent) x w;
                // w says which way the model's own binormal points.
                const Vector3 t =
                    unitOr(direction(toNode, data->tangents[int(v)]), perpendicular(m));
                const Vector3 b = direction(toNode, data->binormals[int(v)]);
                tangents << t[0] << t[1] << t[2] << (dot(cross(m, t), b) < 0 ? -1.0f : 1.0f);
            }
        }
        if (hasUvs)
            uvs << data->uvs[int(v)][0] << data->uvs[int(v)][1];
    }
    primitive->mode = TINYGLTF_MODE_TRIANGLES;
    primitive->attributes["POSITION"] = document.addFloats(positions, 3, true);
    if (hasNormals)
        primitive->attributes["NORMAL"] = document.addFloats(normals, 3, false);
    if (hasTangents)
        primitive->attributes["TANGENT"] = document.addFloats(tangents, 4, false);
    if (hasUvs)
        primitive->attributes["TEXCOORD_0"] = document.addFloats(uvs, 2, false);
    primitive->indices = document.addIndices(indices);
    return true;
}

void SceneBuilder::addPart(int part, const PartFrame& frame)
{
    const Mesh* mesh = loader.partMesh(part, state);
    const bool hidden[] = {loader.hideChassis, loader.hideHull, loader.hideTurret, loader.hideGun};
    if (!mesh || !mesh->visual || hidden[part])
        return;
    tinygltf::Value::Object extras{{"model", tinygltf::Value(mesh->path.toStdString())}};
    document.model.nodes[size_t(frame.node)].extras = tinygltf::Value(extras);
    if (const auto* collision = dynamic_cast<const CollisionMesh*>(mesh)) {
        addArmorPlates(*collision, frame);
        return;
    }
    tinygltf::Mesh out;
    out.name = PartNames[part];
    for (const RenderSet* set : mesh->visual->renderSets)
        for (const RenderGeometry* geometry : set->geometries)
            for (const GroupMaterials* group : geometry->groups) {
                tinygltf::Primitive primitive;
                const Material* material = group->materials.value(Material::Lit, nullptr);
                if (!addPrimitive(*geometry, group->groupIndex, frame.toNode, true, &primitive))
                    continue;
                // The chassis is seen from below through its tracks, as
                // the viewport draws it.
                if (material)
                    primitive.material = materials.forGroup(
                        *material, part, material->doubleSided || part == TankLoader::ChassisPart,
                        primitive.attributes.count("TANGENT") > 0);
                out.primitives.push_back(primitive);
            }
    if (out.primitives.empty())
        return;
    document.model.meshes.push_back(out);
    document.model.nodes[size_t(frame.node)].mesh = int(document.model.meshes.size()) - 1;
}

// Plates are numbered as CollisionMesh::buildParts numbers them: every
// group of every geometry, in order.
void SceneBuilder::addArmorPlates(const CollisionMesh& mesh, const PartFrame& frame)
{
    const CollisionArmor* tables = CollisionArmor::instance();
    const bool hideSpaced = tables && tables->hideSpacedArmor;
    int plate = 0;
    for (const RenderSet* set : mesh.visual->renderSets)
        for (const RenderGeometry* geometry : set->geometries)
            for (const GroupMaterials* group : geometry->groups) {
                const ArmorPart* armor = mesh.parts.value(plate++, nullptr);
                const Material* material = group->materials.value(0, nullptr);
                const QString name = armor ? armor->name : material ? material->name : QString();
                const ArmorValue record = mesh.armorFor(name);
                tinygltf::Primitive primitive;
                if ((record.spaced && hideSpaced) ||
                    !addPrimitive(*geometry, group->groupIndex, frame.toNode, false, &primitive))
                    continue;
                primitive.material = materials.forArmor(
                    name, record, name.contains(QLatin1String("surveyingDevice")),
                    material && material->doubleSided);
                tinygltf::Mesh out;
                out.name = name.toStdString();
                out.primitives.push_back(primitive);
                document.model.meshes.push_back(out);
                const int node = addNode(name, frame.node);
                document.model.nodes[size_t(node)].mesh = int(document.model.meshes.size()) - 1;
            }
}

void SceneBuilder::build()
{
    PartFrame frames[TankLoader::PartCount];
    placeNodes(frames);
    for (int part = 0; part < TankLoader::PartCount; ++part)
        addPart(part, frames[part]);
}

} // namespace

bool exportVehicleGltf(TankLoader& loader, const QString& path, QString* error)
{
    const int state = loader.armourMode ? loader.armourModel : loader.damageMode;
    if (!loader.loaded) {
        *error = QStringLiteral("No vehicle is loaded.");
        return false;
    }
    for (int part = 0; part < TankLoader::PartCount; ++part) {
        if (!loader.partMesh(part, state)) {
            *error = QStringLiteral("The vehicle has no model in this state.");
            return false;
        }
    }
    GltfDocument document;
    SceneBuilder(loader, state, document).build();
    return document.write(path, error);
}
