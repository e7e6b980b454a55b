#pragma once

#include <QHash>
#include <QImage>
#include <QPair>
#include <QString>

class GltfDocument;
class Material;
struct ArmorValue;

// The glTF materials of one export: one for each program material (and
// part type, as each part takes its own camouflage tiling and mask), with
// the textures read back from GL as the viewport samples them, converted as
// PbrMapping says and written as PNG once for each texture and use. Needs
// the context the textures live in to be current.
class GltfMaterials
{
public:
    explicit GltfMaterials(GltfDocument& document);

    // The material of a group of a part; the part type is TankMesh's. A
    // normal map needs the primitive's tangents.
    int forGroup(const Material& material, int partType, bool doubleSided, bool withTangents);
    // An armour plate in the colour of its thickness, its armour in extras.
    int forArmor(const QString& name, const ArmorValue& armor, bool surveying, bool doubleSided);

    // The pixels of a GL texture, top row first; null for no texture and
    // for the stand-in of one that could not be loaded.
    static QImage readTexture(unsigned int id);

private:
    int baseColourTexture(const Material& material, int partType, bool withAlpha);
    int normalTexture(const Material& material);
    int metallicRoughnessTexture(const Material& material);
    // The texture of a slot converted by convert, cached under key.
    int slotTexture(const Material& material, int slot, const QString& role,
                    QImage (*convert)(const QImage&, const Material&));
    int addImage(const QString& key, const QImage& image, const QString& name);

    GltfDocument& document;
    QHash<QPair<const Material*, int>, int> materials; // part type x 2 + tangents
    QHash<QString, int> textures;
};
