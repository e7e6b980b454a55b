#pragma once

#include "CollisionArmor.h"
#include "Mesh.h"

#include <QString>
#include <QVector>

#include <array>

class btCollisionObject;
class btCollisionShape;
struct PrimitiveGroup;
struct TransformChain;

// One triangle of a plate as the ray test numbers it, with its face normal
// (b - a) x (c - a), not normalised.
struct ArmorTriangle
{
    std::array<Vector3, 3> corners;
    Vector3 normal;
};

// One armour plate: a primitive group of a collision model, its armour and
// its object in the ray world.
struct ArmorPart
{
    QString name;
    int thickness = 0; // mm, the table's value cut to a whole number
    bool spaced = false;
    // Both owned by Physics; null for a plate without triangles.
    btCollisionObject* object = nullptr;
    btCollisionShape* shape = nullptr;
    QVector<ArmorTriangle> triangles; // in the order of Bullet's triangle index
};

// The collision model of one vehicle part: drawn with each plate in the
// colour of its armour, and each plate an object of the ray world that
// follows the part wherever the vehicle's transform chain puts it.
class CollisionMesh : public Mesh
{
public:
    // chain: the loader's, which places the part on load and at each draw.
    explicit CollisionMesh(TransformChain* chain);
    ~CollisionMesh() override;

    bool load(const QString& path, const Vector3& offset, int partType);
    // Turns each primitive group into a plate with its ray object, placed
    // where the chain stands; not yet in the world.
    void buildParts();
    // Puts every plate in the world and gives it its armour from the table.
    void assignArmor();
    void removeFromWorld();
    void unload() override;
    bool reload() override;
    // The plates as OBJ files below the mod folder, placed as drawn.
    bool exportObj() override;
    // Never draws in the shadow pass. Hidden, it only moves the plates' ray
    // objects to where the part stands.
    void draw(bool hidden, int pass, Material* material, ShaderProgram* shader) override;

    // A plate of these triangles with its ray object placed by M (its
    // object, shape and triangles go to Physics, if it exists); not in the
    // world.
    static ArmorPart* createPart(const QVector<ArmorTriangle>& triangles, const Matrix& M);

    // The armour record of a plate's material, by this part's kind.
    ArmorValue armorFor(const QString& name) const;

    int partType = 0; // 0 chassis, 1 hull, 2 turret, 3 gun
    QVector<ArmorPart*> parts;

private:
    void release();
    void refreshColours();
    void placeParts(int first, int count, const Matrix& M);
    void drawGroups(const RenderGeometry& geometry, int firstPart, const Matrix& M,
                    Material* material, ShaderProgram* shader);
    ArmorPart* buildPart(const MeshGeometry& geometry, const PrimitiveGroup* group,
                         const Matrix& M);

    TransformChain* chain;
};
