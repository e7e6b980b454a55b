#pragma once

#include "Visual.h"

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVector>

class QPaintDevice;
class TankLoader;

// The colours and pen of a UV template.
struct UvMapStyle
{
    QColor line = Qt::black;
    QColor fill = Qt::white;
    QColor background = Qt::white;
    // 0 is a cosmetic one-pixel line.
    float lineWidth = 0.5f;
};

// The texture coordinates of a whole vehicle, grouped by texture: every
// triangle that uses a texture, drawn in that texture's space, makes its UV
// template.
class UvMap
{
public:
    // The groups of the intact chassis and hull and of every turret and gun
    // the vehicle may carry, mounted or not; each texture listed once, in
    // order of first appearance, compared with case. Needs the vehicle's GL
    // context current: the turrets and guns are loaded for the occasion.
    static UvMap collect(TankLoader& loader);

    void setData(const QVector<UvGroup>& groups, const QStringList& textures);

    // Every triangle of texture as a filled, outlined polygon on a device
    // of width x height; later triangles paint over earlier ones.
    void draw(QPaintDevice& device, const QString& texture, int width, int height,
              const UvMapStyle& style) const;
    // A picture of size filled with the background, then drawn.
    QImage image(const QString& texture, const QSize& size, const UvMapStyle& style) const;
    // The preview: a square as wide as the texture.
    QImage preview(const QString& texture, const QSize& textureSize, const UvMapStyle& style) const;

    // The last component of a texture path, the name of its tab.
    static QString tabName(const QString& texture);
    // The last group's texture whose path contains name; empty when none.
    QString textureForTab(const QString& name) const;

    QVector<UvGroup> groups;
    QStringList textures;
};
