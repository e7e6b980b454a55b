#include "Visual.h"

#include "BinaryReader.h"
#include "BufferManager.h"
#include "FileManager.h"
#include "IndexBuffer.h"
#include "Log.h"
#include "Material.h"
#include "MaterialLoader.h"
#include "Maths.h"
#include "MeshGeometry.h"
#include "ModelFiles.h"
#include "PackedXmlReader.h"
#include "PrimitiveParser.h"
#include "ReadFailure.h"
#include "TextureLoader.h"
#include "VertexBuffer.h"
#include "XmlHelpers.h"

#include <QDomDocument>
#include <QRegularExpression>

#include <cmath>
#include <memory>

namespace {

// Simplified, then every blank removed: how names of nodes and chunks are
// compared.
QString cleaned(const QString& text)
{
    QString result = text.simplified();
    result.remove(QLatin1Char(' '));
    return result;
}

bool textIsTrue(const QDomElement& element)
{
    return element.text().contains(QLatin1String("true"), Qt::CaseInsensitive);
}

QList<QDomElement> elementsByTag(const QDomElement& parent, const QString& tag)
{
    QList<QDomElement> result;
    const QDomNodeList nodes = parent.elementsByTagName(tag);
    for (int i = 0; i < nodes.size(); ++i)
        result.append(nodes.at(i).toElement());
    return result;
}

// The first run of digits in the element's whole text, or -1 without one.
int firstNumber(const QDomElement& element)
{
    static const QRegularExpression nonDigits(QStringLiteral("\\D+"));
    const QStringList parts = element.text().split(nonDigits, Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return -1;
    bool ok = false;
    const int number = parts.first().toInt(&ok);
    return ok ? number : -1;
}

// The index of the geometry at `position`, whichever width the chunk had.
quint32 indexAt(const MeshGeometry& geometry, qint64 position)
{
    if (!geometry.indices32.isEmpty())
        return geometry.indices32[position];
    return geometry.indices16[position];
}

qint64 indexCount(const MeshGeometry& geometry)
{
    return geometry.indices32.isEmpty() ? geometry.indices16.size() : geometry.indices32.size();
}

// True when the group's triangles lie inside the index data and name only
// vertices that exist.
bool groupFits(const PrimitiveGroup& group, const MeshGeometry& geometry, quint32 vertexCount)
{
    if (group.startIndex < 0 || group.primitiveCount < 0)
        return false;
    const qint64 first = group.startIndex;
    const qint64 end = first + qint64(group.primitiveCount) * 3;
    if (end > indexCount(geometry))
        return false;
    for (qint64 i = first; i < end; ++i) {
        if (indexAt(geometry, i) >= vertexCount)
            return false;
    }
    return true;
}

QList<Material*> materialsFor(const QDomElement& material, bool perTankTextures)
{
    if (MaterialLoader* loader = MaterialLoader::instance())
        return loader->parseMaterial(material.childNodes(), perTankTextures);
    // Without a loader (no viewport) the pair still exists, so the group
    // keeps its place; it has no textures.
    return {new Material(Material::Lit), new Material(Material::Unlit)};
}

} // namespace

// ---------------------------------------------------------------- Node

Node::~Node()
{
    qDeleteAll(children);
}

Matrix Node::identityNodeMatrix()
{
    return identityMatrix();
}

Node* Node::find(const QString& name) const
{
    for (Node* child : children) {
        if (child->identifier.compare(name, Qt::CaseInsensitive) == 0)
            return child;
        if (Node* found = child->find(name))
            return found;
    }
    return nullptr;
}

void Node::clear()
{
    identifier.clear();
    qDeleteAll(children);
    children.clear();
    transform = identityMatrix();
    translation = {0, 0, 0};
    scale = {1, 1, 1};
}

GroupMaterials::~GroupMaterials()
{
    qDeleteAll(materials);
}

// ---------------------------------------------------------------- Visual

Visual::Visual() : rootNode(new Node) {}

Visual::~Visual()
{
    unload();
    delete rootNode;
}

bool Visual::load(PrimitiveParser* parser, const QString& modelPath,
                  QVector<MeshGeometry*>& geometries, QVector<UvGroup>& uvGroups, bool collectUvs,
                  bool perTankTextures)
{
    rootNode->clear();
    path = modelPath;
    path.replace(QLatin1String(".model"), QLatin1String(".visual"));

    ReadFailure failure;
    std::unique_ptr<QIODevice> device(openModelFile(FileManager::instance(), path, path, failure));
    failure.showClosingBox();
    if (!device) {
        Log::log(QStringLiteral("Failed loading: ") + path, Log::Warning);
        return false;
    }
    if (!device->isOpen() && !device->open(QIODevice::ReadOnly)) {
        Log::log(QStringLiteral("Binary reader Failed loading: ") + path, Log::Warning);
        return false;
    }

    BinaryReader binary(device.get());
    PackedXmlReader reader(&binary);
    const QDomDocument document = reader.read(path);
    xmlText = document.toString(1);

    const QDomElement root = document.documentElement();
    buildNode(rootNode, root.firstChildElement(QStringLiteral("node")), 0);
    for (const QDomElement& element : elementsByTag(root, QStringLiteral("renderSet")))
        renderSets.append(buildRenderSet(parser, element, geometries, perTankTextures));

    if (collectUvs && !geometries.isEmpty())
        collectUvGroups(geometries, uvGroups);
    return true;
}

void Visual::buildNode(Node* node, const QDomElement& element, int depth)
{
    node->identifier = element.firstChildElement(QStringLiteral("identifier")).text().trimmed();

    const Matrix m = parseTransform(element.firstChildElement(QStringLiteral("transform")));
    node->translation = {m[12], m[13], m[14]};
    node->scale = {m[0], m[5], m[10]};
    // Rotation in the file's rows is dropped: the model keeps only where a
    // node stands and how it is scaled.
    node->transform = {
        node->scale[0], 0,     0,     0, 0, node->scale[1], 0, 0, 0, 0, node->scale[2], 0,
        m[12],          m[13], m[14], 1};

    if (depth >= MaxNodeDepth) {
        if (element.firstChildElement(QStringLiteral("node")).isNull())
            return;
        Log::log(QStringLiteral("Visual file: ") + path +
                     QStringLiteral(" has nodes nested too deeply; the deeper ones are left out."),
                 Log::Warning);
        return;
    }
    for (QDomElement child = element.firstChildElement(QStringLiteral("node")); !child.isNull();
         child = child.nextSiblingElement(QStringLiteral("node"))) {
        Node* childNode = new Node;
        node->children.append(childNode);
        buildNode(childNode, child, depth + 1);
    }
}

RenderSet* Visual::buildRenderSet(PrimitiveParser* parser, const QDomElement& element,
                                  QVector<MeshGeometry*>& geometries, bool perTankTextures)
{
    auto* set = new RenderSet;
    set->treatAsWorldSpaceObject =
        textIsTrue(element.firstChildElement(QStringLiteral("treatAsWorldSpaceObject")));

    for (const QDomElement& nodeElement : elementsByTag(element, QStringLiteral("node"))) {
        const QString name = cleaned(nodeElement.text());
        Node* node = nullptr;
        if (name.compare(rootNode->identifier, Qt::CaseInsensitive) == 0)
            node = rootNode;
        else
            node = rootNode->find(name);
        set->nodes.append(node ? node : rootNode);
    }

    for (const QDomElement& geometryElement : elementsByTag(element, QStringLiteral("geometry"))) {
        auto* geometry = new MeshGeometry;
        geometries.append(geometry);
        if (RenderGeometry* built =
                buildGeometry(parser, geometryElement, geometry, perTankTextures)) {
            built->data = geometry;
            set->geometries.append(built);
        }
    }
    return set;
}

RenderGeometry* Visual::buildGeometry(PrimitiveParser* parser, const QDomElement& element,
                                      MeshGeometry* geometry, bool perTankTextures)
{
    const QString verticesName =
        cleaned(element.firstChildElement(QStringLiteral("vertices")).text());
    const QString indicesName =
        cleaned(element.firstChildElement(QStringLiteral("primitive")).text());
    const QString streamName = cleaned(element.firstChildElement(QStringLiteral("stream")).text());
    geometry->name = verticesName;
    geometry->name.remove(QLatin1String(".vertices"));

    // A geometry whose chunks are missing is left out; the lookups have
    // already said which.
    const PrimitiveChunk* vertices = parser->chunk(verticesName);
    const PrimitiveChunk* indices = parser->chunk(indicesName);
    if (!vertices || !indices)
        return nullptr;

    QByteArray streamBytes;
    if (streamName == QLatin1String("uv2")) {
        if (const PrimitiveChunk* stream = parser->chunk(QStringLiteral("uv2")))
            streamBytes = stream->data;
        else
            Log::log(QStringLiteral("Visual file: ") + path +
                         QStringLiteral(" contains a stream tag: ") + streamName +
                         QStringLiteral(" but no stream chunk exists by that name in the primitive "
                                        "file."),
                     Log::Warning);
    }

    auto* renderGeometry = new RenderGeometry;
    if (BufferManager* buffers = BufferManager::instance())
        renderGeometry->vertexBuffer = buffers->createVertexBuffer(
            path + vertices->name, vertices->data, geometry, streamBytes);
    renderGeometry->indexBuffer = new IndexBuffer(indices->data, geometry);

    const quint32 vertexCount =
        renderGeometry->vertexBuffer ? renderGeometry->vertexBuffer->vertexCount : 0;
    int groupNumber = 0;
    for (const PrimitiveGroup* group : renderGeometry->indexBuffer->groups) {
        const bool fits = groupFits(*group, *geometry, vertexCount);
        if (!fits)
            Log::log(QStringLiteral("Visual file: ") + path + QStringLiteral(": primitive group ") +
                         QString::number(groupNumber) + QStringLiteral(" of ") + geometry->name +
                         QStringLiteral(" reaches past its index or vertex data and is not drawn."),
                     Log::Warning);
        renderGeometry->validGroups.append(fits);
        ++groupNumber;
    }

    for (const QDomElement& groupElement :
         elementsByTag(element, QStringLiteral("primitiveGroup"))) {
        auto* group = new GroupMaterials;
        group->groupIndex = firstNumber(groupElement);
        group->materials = groupMaterials(
            groupElement.firstChildElement(QStringLiteral("material")), perTankTextures);
        renderGeometry->groups.append(group);
    }
    return renderGeometry;
}

void Visual::collectUvGroups(const QVector<MeshGeometry*>& geometries,
                             QVector<UvGroup>& uvGroups) const
{
    const TextureLoader* textures = TextureLoader::instance();
    for (int setIndex = 0; setIndex < renderSets.size() && setIndex < geometries.size();
         ++setIndex) {
        const MeshGeometry& geometry = *geometries[setIndex];
        for (const RenderGeometry* renderGeometry : renderSets[setIndex]->geometries) {
            const QList<PrimitiveGroup*>& groups = renderGeometry->indexBuffer->groups;
            for (int k = 0; k < renderGeometry->groups.size() && k < groups.size(); ++k) {
                const GroupMaterials* materials = renderGeometry->groups[k];
                UvGroup uvGroup;
                if (!materials->materials.isEmpty() && textures)
                    uvGroup.textureName =
                        textures->textureName(materials->materials.first()->diffuseTexture());
                if (uvGroup.textureName.contains(QLatin1String("track"), Qt::CaseInsensitive))
                    continue;
                const PrimitiveGroup& group = *groups[k];
                if (group.primitiveCount < 10)
                    continue;
                // The group's own triangles, as the draw takes them; only
                // groups whose indices fit are walked.
                if (!groupFits(group, geometry, quint32(geometry.uvs.size())))
                    continue;
                const qint64 end = group.startIndex + qint64(group.primitiveCount) * 3;
                for (qint64 i = group.startIndex; i < end; ++i) {
                    Vector2 uv = geometry.uvs[indexAt(geometry, i)];
                    if (uv[0] > 1.0f || uv[1] > 1.0f)
                        uv = {uv[0] - std::floor(uv[0]), uv[1] - std::floor(uv[1])};
                    uvGroup.uvs.append(uv);
                }
                uvGroups.append(uvGroup);
            }
        }
    }
}

void Visual::unload()
{
    BufferManager* buffers = BufferManager::instance();
    for (RenderSet* set : renderSets) {
        for (RenderGeometry* geometry : set->geometries) {
            if (geometry->vertexBuffer && buffers)
                buffers->releaseVertexBuffer(geometry->vertexBuffer);
            qDeleteAll(geometry->groups);
            delete geometry->indexBuffer;
            delete geometry;
        }
        delete set;
    }
    renderSets.clear();
    rootNode->clear();
    xmlText.clear();
}

QList<Material*> Visual::groupMaterials(const QDomElement& material, bool perTankTextures)
{
    return materialsFor(material, perTankTextures);
}

int Visual::triangleCount() const
{
    int count = 0;
    for (const RenderSet* set : renderSets)
        for (const RenderGeometry* geometry : set->geometries)
            for (const PrimitiveGroup* group : geometry->indexBuffer->groups)
                count += group->primitiveCount;
    return count;
}
