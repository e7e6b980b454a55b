#pragma once

#include "Maths.h"

#include <QDomElement>
#include <QList>
#include <QString>
#include <QVector>

class IndexBuffer;
class Material;
class PrimitiveParser;
class VertexBuffer;
struct MeshGeometry;

// A named node of a model's tree. Only translation and scale of the file's
// transform are kept.
struct Node
{
    ~Node();
    // Depth-first through the descendants (not this node), case-insensitive.
    Node* find(const QString& name) const;
    // Name empty, matrices identity, children deleted.
    void clear();

    QString identifier;
    QList<Node*> children;
    Matrix transform = identityNodeMatrix();
    Vector3 translation{0, 0, 0};
    Vector3 scale{1, 1, 1};

    static Matrix identityNodeMatrix();
};

// The two materials (lit, unlit) of one primitive group.
struct GroupMaterials
{
    ~GroupMaterials();
    int groupIndex = 0;
    QList<Material*> materials;
};

struct RenderGeometry
{
    VertexBuffer* vertexBuffer = nullptr; // BufferManager's
    IndexBuffer* indexBuffer = nullptr;   // owned
    MeshGeometry* data = nullptr;         // the CPU copy, the mesh's
    QList<GroupMaterials*> groups;        // owned
    // Per PrimitiveGroup of the index buffer: its index range lies inside the
    // index data and every index in it names a vertex of the vertex buffer.
    // Groups that fail are never drawn, so a forged file cannot make GL read
    // past a buffer.
    QList<bool> validGroups;

    bool drawable(int groupIndex) const
    {
        return groupIndex >= 0 && groupIndex < validGroups.size() && validGroups[groupIndex];
    }
};

struct RenderSet
{
    QList<RenderGeometry*> geometries; // owned
    QList<Node*> nodes;                // the tree's
    bool treatAsWorldSpaceObject = false;
};

// Texture coordinates of one primitive group, three per triangle, for the
// UV templates.
struct UvGroup
{
    QVector<Vector2> uvs;
    QString textureName;
};

// A model's .visual document: the node tree and the render sets with their
// GL buffers and materials.
class Visual
{
public:
    Visual();
    virtual ~Visual();
    Visual(const Visual&) = delete;
    Visual& operator=(const Visual&) = delete;

    virtual bool load(PrimitiveParser* parser, const QString& path,
                      QVector<MeshGeometry*>& geometries, QVector<UvGroup>& uvGroups,
                      bool collectUvs, bool perTankTextures);
    void unload();
    int triangleCount() const;

    QList<RenderSet*> renderSets;
    Node* rootNode;
    QString xmlText;
    QString path;

protected:
    void buildNode(Node* node, const QDomElement& element, int depth);
    RenderSet* buildRenderSet(PrimitiveParser* parser, const QDomElement& element,
                              QVector<MeshGeometry*>& geometries, bool perTankTextures);
    void collectUvGroups(const QVector<MeshGeometry*>& geometries,
                         QVector<UvGroup>& uvGroups) const;
    RenderGeometry* buildGeometry(PrimitiveParser* parser, const QDomElement& element,
                                  MeshGeometry* geometry, bool perTankTextures);
    // The material pair of one primitive group from its material element;
    // a subclass reads its own kind of material.
    virtual QList<Material*> groupMaterials(const QDomElement& material, bool perTankTextures);
    // Node trees deeper than this are cut with a warning.
    static constexpr int MaxNodeDepth = 64;
};
