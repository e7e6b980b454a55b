#pragma once

#include "UvMap.h"

#include <QSize>
#include <QString>

// A UV template saved as PNG, TIFF or SVG at one to four times its
// texture's size, written whole or not at all.
class UvMapFile
{
public:
    enum Format
    {
        Png = 0,
        Tiff = 1,
        Svg = 2
    };

    // The texture path with ".dds" (any case) replaced by the format's
    // suffix: the name proposed to the user.
    static QString proposedName(const QString& texture, Format format);
    // "Png (*.png)", "Tiff (*.tiff)" or "Svg (*.svg)".
    static QString filter(Format format);
    // The factor of the "Resolution" box's index: 1 to 4, 1 for any other.
    static int scaleOfIndex(int index);

    // Draws texture's triangles at textureSize x scale into file. False,
    // with the warning "Failed to save UV Map: " + file, when the size is
    // empty or the file cannot be written; an older file then stays.
    static bool save(const UvMap& map, const QString& texture, const QSize& textureSize, int scale,
                     Format format, const UvMapStyle& style, const QString& file);

private:
    static bool saveImage(const UvMap& map, const QString& texture, const QSize& size,
                          Format format, const UvMapStyle& style, const QString& file);
    static bool saveSvg(const UvMap& map, const QString& texture, const QSize& size,
                        const UvMapStyle& style, const QString& file);
};
