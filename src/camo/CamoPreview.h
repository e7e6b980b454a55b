#pragma once

#include "Maths.h"

#include <QByteArray>
#include <QImage>

#include <array>

class QIODevice;

// The colour of one pattern texel: the base colour with each channel's
// colour mixed in by the texel's byte of that channel times the colour's
// strength, c0 first. Bytes p0 to p3 in memory order; colours 0 to 255.
Vector3 camoTexelColour(const uchar texel[4], const Vector4& armorColor,
                        const std::array<Vector4, 4>& colors);

// The preview of a pattern from its 32-bit pixels (width x height, four
// bytes each): 128 x 128, premultiplied ARGB, mirrored vertically.
QImage camoPreview(const QByteArray& pixels, int width, int height, const Vector4& armorColor,
                   const std::array<Vector4, 4>& colors);

// The base level of a DDS file as 32-bit pixels; false if it doesn't decode.
bool decodeDdsPixels(QIODevice* device, QByteArray& pixels, int& width, int& height);
