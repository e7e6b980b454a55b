#pragma once

#include "Mesh.h"

struct Node;
struct TransformChain;

// The mesh of one visible part of a vehicle. It places itself on load by the
// joints of the part it hangs on (its parent mesh), and at draw time it
// multiplies its placement onto the vehicle's transform chain.
class TankMesh : public Mesh
{
public:
    enum PartType
    {
        Chassis = 0,
        Hull = 1,
        Turret = 2,
        Gun = 3,
        // A turret or gun loaded only for its texture coordinates: not placed,
        // never drawn.
        UvOnly = 4
    };

    // parent: the part this one hangs on (chassis for the hull, hull for the
    // turret, turret for the gun), null for the chassis. chain: the loader's.
    TankMesh(Mesh* parent, TransformChain* chain);
    ~TankMesh() override;

    // The parts must be loaded in the order chassis, hull, turret, gun: each
    // reads the joints of the one before. A turret's or gun's offset is only
    // a default; it becomes the joint's position.
    bool load(const QString& path, const Vector3& offset, int partType, bool perTankTextures);
    void unload() override;
    // Writes one OBJ file per geometry below the mod folder, placed by the
    // chain as draw places the part (a chassis leaves the chain as it was).
    bool exportObj() override;
    void draw(bool hidden, int pass, Material* material, ShaderProgram* shader) override;
    bool reload() override;

    // Whether a group of a part of this type with this material shows the
    // applied camouflage (one applied and enabled, the intact state, a
    // material that carries paint); if so, its exclusion mask (empty for
    // none) and its tiling, the part's times the pattern's.
    static bool camouflageFor(int partType, const QString& materialName, QString* mask,
                              Vector4* tiling);

    int partType = Chassis;

private:
    void release();
    // The named node of this mesh's visual (or of another mesh's): the root
    // itself when it has that name, else a descendant; null when none.
    static Node* findNode(const Mesh* mesh, const QString& name);
    const Mesh* chassisMesh() const;
    void place();

    TransformChain* chain;
};
