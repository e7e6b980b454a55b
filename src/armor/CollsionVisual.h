#pragma once

#include "Visual.h"

// The .visual of a collision model: each primitive group is an armour plate
// whose material identifier names the armour material, drawn with the
// collision programs. Texture coordinates are not collected.
class CollsionVisual : public Visual
{
public:
    bool load(PrimitiveParser* parser, const QString& path, QVector<MeshGeometry*>& geometries,
              QVector<UvGroup>& uvGroups, bool collectUvs, bool perTankTextures) override;

protected:
    QList<Material*> groupMaterials(const QDomElement& material, bool perTankTextures) override;
    // Plates are drawn in armour colours: a second uv is never read.
    bool readsUvStream() const override { return false; }
};
