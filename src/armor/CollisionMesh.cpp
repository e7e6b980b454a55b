#include "CollisionMesh.h"

#include "CollsionVisual.h"
#include "GlFunctions.h"
#include "IndexBuffer.h"
#include "Log.h"
#include "Material.h"
#include "MaterialLoader.h"
#include "MeshGeometry.h"
#include "ObjExporter.h"
#include "Physics.h"
#include "PrimitiveParser.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TransformChain.h"
#include "TurretGunChooser.h"
#include "VertexBuffer.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

#include <btBulletCollisionCommon.h>

namespace {

Material* materialInMode(const GroupMaterials& group)
{
    const MaterialLoader* loader = MaterialLoader::instance();
    const int mode = loader ? loader->lightingMode : 0;
    if (mode >= 0 && mode < group.materials.size())
        return group.materials[mode];
    return group.materials.isEmpty() ? nullptr : group.materials.first();
}

btTransform bulletTransform(const Matrix& M)
{
    const btMatrix3x3 rotation(M[0], M[4], M[8], M[1], M[5], M[9], M[2], M[6], M[10]);
    return btTransform(rotation, btVector3(M[12], M[13], M[14]));
}

btVector3 toBullet(const Vector3& v)
{
    return {v[0], v[1], v[2]};
}

quint32 indexAt(const MeshGeometry& geometry, qint64 position)
{
    return geometry.indices32.isEmpty() ? geometry.indices16.value(position)
                                        : geometry.indices32.value(position);
}

qint64 indexCount(const MeshGeometry& geometry)
{
    return geometry.indices32.isEmpty() ? geometry.indices16.size() : geometry.indices32.size();
}

// The group's triangles lie inside the index data and name only vertices
// that exist: a forged file leaves the plate without triangles.
bool groupFits(const PrimitiveGroup& group, const MeshGeometry& geometry)
{
    if (group.startIndex < 0 || group.primitiveCount <= 0)
        return false;
    const qint64 end = qint64(group.startIndex) + qint64(group.primitiveCount) * 3;
    if (end > indexCount(geometry))
        return false;
    for (qint64 i = group.startIndex; i < end; ++i)
        if (indexAt(geometry, i) >= quint32(geometry.positions.size()))
            return false;
    return true;
}

// The CPU copy of each built geometry of the visual, in the order of its
// render sets: a geometry whose chunks were missing was never built and
// has no indices.
QVector<const MeshGeometry*> builtGeometries(const QVector<MeshGeometry*>& all)
{
    QVector<const MeshGeometry*> built;
    for (const MeshGeometry* geometry : all)
        if (indexCount(*geometry) > 0)
            built.append(geometry);
    return built;
}

} // namespace

CollisionMesh::CollisionMesh(TransformChain* transformChain) : chain(transformChain)
{
    parser = new PrimitiveParser;
    visual = new CollsionVisual;
}

CollisionMesh::~CollisionMesh()
{
    // The ray objects belong to Physics, which deletes them with its world.
    qDeleteAll(parts);
    delete visual;
    delete parser;
}

bool CollisionMesh::load(const QString& modelPath, const Vector3& givenOffset, int type)
{
    path = modelPath;
    offset = givenOffset;
    partType = type;
    if (!parser->load(path))
        return false;
    if (!visual->load(parser, path, geometries, uvGroups, false, false))
        return false;
    buildParts();
    return true;
}

void CollisionMesh::buildParts()
{
    Matrix M = translationMatrix(offset);
    if (chain) {
        chain->multiply(M);
        M = chain->current;
    }
    const QVector<const MeshGeometry*> built = builtGeometries(geometries);
    int geometryIndex = 0;
    for (const RenderSet* set : visual->renderSets) {
        for (const RenderGeometry* geometry : set->geometries) {
            const MeshGeometry* data = built.value(geometryIndex++);
            for (const GroupMaterials* group : geometry->groups) {
                const PrimitiveGroup* range =
                    geometry->indexBuffer->groups.value(group->groupIndex, nullptr);
                parts.append(data ? buildPart(*data, range, M) : new ArmorPart);
            }
        }
    }
}

ArmorPart* CollisionMesh::buildPart(const MeshGeometry& geometry, const PrimitiveGroup* group,
                                    const Matrix& M)
{
    if (!group || !groupFits(*group, geometry)) {
        Log::log(QStringLiteral("Collision model ") + path +
                     QStringLiteral(" has a plate outside its index or vertex data."),
                 Log::Warning);
        return new ArmorPart;
    }
    QVector<ArmorTriangle> triangles;
    for (qint32 t = 0; t < group->primitiveCount; ++t) {
        const qint64 first = qint64(group->startIndex) + qint64(t) * 3;
        ArmorTriangle triangle;
        for (int corner = 0; corner < 3; ++corner)
            triangle.corners[corner] = geometry.positions[int(indexAt(geometry, first + corner))];
        const auto& [a, b, c] = triangle.corners;
        triangle.normal =
            cross({b[0] - a[0], b[1] - a[1], b[2] - a[2]}, {c[0] - a[0], c[1] - a[1], c[2] - a[2]});
        triangles.append(triangle);
    }
    return createPart(triangles, M);
}

ArmorPart* CollisionMesh::createPart(const QVector<ArmorTriangle>& triangles, const Matrix& M)
{
    auto* part = new ArmorPart;
    if (triangles.isEmpty())
        return part;
    auto* mesh = new btTriangleMesh(true, false);
    for (const ArmorTriangle& triangle : triangles) {
        const auto& [a, b, c] = triangle.corners;
        mesh->addTriangle(toBullet(a), toBullet(b), toBullet(c), false);
    }
    part->triangles = triangles;
    auto* shape = new btBvhTriangleMeshShape(mesh, true, true);
    auto* object = new btCollisionObject;
    object->setCollisionShape(shape);
    object->setWorldTransform(bulletTransform(M));
    object->setUserPointer(part);
    part->object = object;
    part->shape = shape;
    if (Physics* physics = Physics::instance())
        physics->adopt(object, shape, mesh);
    return part;
}

ArmorValue CollisionMesh::armorFor(const QString& name) const
{
    const CollisionArmor* armor = CollisionArmor::instance();
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    if (!armor)
        return {};
    switch (partType) {
    case 0:
        return armor->chassisArmorFor(name);
    case 1:
        return armor->hullArmorFor(name);
    case 2:
        return armor->turretArmorFor(name, chooser ? chooser->currentTurretName : QString());
    case 3:
        return armor->gunArmorFor(name, chooser ? chooser->currentGunName : QString());
    default:
        return {};
    }
}

void CollisionMesh::assignArmor()
{
    Physics* physics = Physics::instance();
    for (ArmorPart* part : std::as_const(parts))
        if (physics && part->object && !part->object->getBroadphaseHandle())
            physics->world()->addCollisionObject(part->object, 1, -1);
    int k = 0;
    for (const RenderSet* set : visual->renderSets) {
        for (const RenderGeometry* geometry : set->geometries) {
            for (const GroupMaterials* group : geometry->groups) {
                ArmorPart* part = parts.value(k++);
                const Material* first = group->materials.value(0);
                if (!part || !first)
                    continue;
                part->name = first->name;
                const ArmorValue record = armorFor(part->name);
                part->thickness = int(record.value);
                part->spaced = record.spaced;
            }
        }
    }
}

void CollisionMesh::removeFromWorld()
{
    Physics* physics = Physics::instance();
    for (ArmorPart* part : std::as_const(parts))
        if (physics && part->object && part->object->getBroadphaseHandle())
            physics->world()->removeCollisionObject(part->object);
}

void CollisionMesh::release()
{
    deleteGeometries();
    qDeleteAll(parts);
    parts.clear();
    uvGroups.clear();
    parser->clear();
    visual->unload();
}

void CollisionMesh::unload()
{
    release();
    path.clear();
    offset = {0, 0, 0};
}

bool CollisionMesh::reload()
{
    const Vector3 kept = offset;
    release();
    return load(path, kept, partType);
}

bool CollisionMesh::exportObj()
{
    // Without a mod folder the files would land beside the program.
    const Settings* settings = Settings::instance();
    if (!chain || !settings || settings->modPath.isEmpty())
        return false;
    // Like the other models of the vehicle, the chassis leaves the chain as
    // it found it, so an export never shifts the parts after it.
    if (partType == 0)
        chain->push();
    chain->multiply(translationMatrix(offset));
    const bool written = ObjExporter(settings->modPath).exportMesh(*this, chain->current);
    if (partType == 0)
        chain->pop();
    return written;
}

void CollisionMesh::refreshColours()
{
    const CollisionArmor* armor = CollisionArmor::instance();
    if (!armor)
        return;
    for (const RenderSet* set : visual->renderSets) {
        for (const RenderGeometry* geometry : set->geometries) {
            for (const GroupMaterials* group : geometry->groups) {
                Material* inUse = materialInMode(*group);
                if (!inUse)
                    continue;
                const bool surveying = inUse->name.contains(QLatin1String("surveyingDevice"));
                const ArmorValue record = armorFor(inUse->name);
                const Colour colour = armor->colourFor(record.value, record.spaced, surveying);
                inUse->diffuseColor = {colour[0], colour[1], colour[2], 1};
                if (record.spaced)
                    inUse->skipDraw = armor->hideSpacedArmor;
            }
        }
    }
}

void CollisionMesh::placeParts(int first, int count, const Matrix& M)
{
    const btTransform transform = bulletTransform(M);
    for (int k = first; k < first + count && k < parts.size(); ++k)
        if (parts[k]->object)
            parts[k]->object->setWorldTransform(transform);
}

void CollisionMesh::draw(bool hidden, int pass, Material* material, ShaderProgram* shader)
{
    if (pass == 0 || !chain)
        return;
    if (!hidden)
        refreshColours();
    int firstPart = 0;
    bool first = true;
    for (const RenderSet* set : visual->renderSets) {
        chain->multiply(translationMatrix(offset));
        const Matrix M = chain->current;
        if (first)
            placement = M;
        first = false;
        for (const RenderGeometry* geometry : set->geometries) {
            const int count = int(geometry->groups.size());
            placeParts(firstPart, count, M);
            if (!hidden)
                drawGroups(*geometry, firstPart, M, material, shader);
            firstPart += count;
        }
    }
}

void CollisionMesh::drawGroups(const RenderGeometry& geometry, int, const Matrix& M,
                               Material* material, ShaderProgram* shader)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    if (geometry.vertexBuffer)
        geometry.vertexBuffer->bind();
    if (geometry.indexBuffer->buffer)
        gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, geometry.indexBuffer->buffer->name);
    for (const GroupMaterials* group : geometry.groups) {
        Material* inUse = materialInMode(*group);
        if (!inUse)
            continue;
        if (material) {
            material->doubleSided = inUse->doubleSided;
            material->name = inUse->name;
            inUse = material;
        }
        if (inUse->skipDraw)
            continue;
        inUse->apply();
        setMatrixUniforms(shader ? shader : inUse->shader, M);
        if (geometry.drawable(group->groupIndex))
            geometry.indexBuffer->drawGroup(*geometry.indexBuffer->groups[group->groupIndex]);
        gl->glDisable(GL_BLEND);
        gl->glDisable(GL_CULL_FACE);
        if (inUse->shader && inUse->shader->program)
            inUse->shader->program->release();
    }
    gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    if (geometry.vertexBuffer)
        geometry.vertexBuffer->unbind();
}
