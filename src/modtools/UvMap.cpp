#include "UvMap.h"

#include "TankLoader.h"
#include "TankMesh.h"
#include "TurretGunChooser.h"

#include <QPainter>
#include <QPen>
#include <QPolygonF>

#include <memory>

namespace {

void appendModel(const QString& modelPath, QVector<UvGroup>& groups)
{
    // Not placed and never drawn: loaded for its coordinates alone.
    TankMesh mesh(nullptr, nullptr);
    if (mesh.load(modelPath, Vector3{0, 0, 0}, TankMesh::UvOnly, true))
        groups += mesh.uvGroups;
}

} // namespace

UvMap UvMap::collect(TankLoader& loader)
{
    QVector<UvGroup> groups;
    for (int part : {TankLoader::ChassisPart, TankLoader::HullPart}) {
        if (const TankMesh* mesh = loader.mesh(part, Intact))
            groups += mesh->uvGroups;
    }
    if (loader.chooser) {
        for (const Turret& turret : loader.chooser->turrets) {
            appendModel(turret.undamagedModel, groups);
            for (const Gun& gun : turret.guns)
                appendModel(gun.undamagedModel, groups);
        }
    }
    QStringList textures;
    for (const UvGroup& group : groups) {
        if (!textures.contains(group.textureName))
            textures.append(group.textureName);
    }
    UvMap map;
    map.setData(groups, textures);
    return map;
}

void UvMap::setData(const QVector<UvGroup>& uvGroups, const QStringList& textureList)
{
    groups = uvGroups;
    textures = textureList;
}

void UvMap::draw(QPaintDevice& device, const QString& texture, int width, int height,
                 const UvMapStyle& style) const
{
    QPainter painter;
    if (!painter.begin(&device))
        return;
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(
        QPen(QBrush(style.line), style.lineWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(style.fill);
    painter.setBackgroundMode(Qt::TransparentMode);
    painter.setBackground(style.background);
    for (const UvGroup& group : groups) {
        if (group.textureName != texture)
            continue;
        for (int i = 0; i + 2 < group.uvs.size(); i += 3) {
            QPolygonF triangle;
            for (int corner = 0; corner < 3; ++corner) {
                const Vector2& uv = group.uvs[i + corner];
                triangle << QPointF(double(uv[0]) * width, double(uv[1]) * height);
            }
            painter.drawPolygon(triangle, Qt::OddEvenFill);
        }
    }
    painter.end();
}

QImage UvMap::image(const QString& texture, const QSize& size, const UvMapStyle& style) const
{
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        return picture;
    picture.fill(style.background);
    draw(picture, texture, size.width(), size.height(), style);
    return picture;
}

QImage UvMap::preview(const QString& texture, const QSize& textureSize,
                      const UvMapStyle& style) const
{
    return image(texture, QSize(textureSize.width(), textureSize.width()), style);
}

QString UvMap::tabName(const QString& texture)
{
    return texture.split(QLatin1Char('/')).last();
}

QString UvMap::textureForTab(const QString& name) const
{
    QString found;
    for (const UvGroup& group : groups) {
        if (group.textureName.contains(name, Qt::CaseSensitive))
            found = group.textureName;
    }
    return found;
}
