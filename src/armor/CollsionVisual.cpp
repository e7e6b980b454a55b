#include "CollsionVisual.h"

#include "Material.h"
#include "MaterialLoader.h"

bool CollsionVisual::load(PrimitiveParser* parser, const QString& modelPath,
                          QVector<MeshGeometry*>& geometries, QVector<UvGroup>& uvGroups, bool,
                          bool perTankTextures)
{
    return Visual::load(parser, modelPath, geometries, uvGroups, false, perTankTextures);
}

QList<Material*> CollsionVisual::groupMaterials(const QDomElement& material, bool)
{
    if (MaterialLoader* loader = MaterialLoader::instance())
        return loader->parseCollisionMaterial(material.childNodes());
    // Without a loader (no viewport) the plate still needs its name: it ties
    // the group to the armour table.
    auto* lit = new Material(Material::Lit);
    auto* unlit = new Material(Material::Unlit);
    lit->name = material.firstChildElement(QStringLiteral("identifier")).text().simplified();
    unlit->name = lit->name;
    return {lit, unlit};
}
