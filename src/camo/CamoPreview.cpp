#include "CamoPreview.h"

#include "DdsImage.h"

#include <QIODevice>

namespace {
constexpr int PreviewSide = 128;
}

Vector3 camoTexelColour(const uchar texel[4], const Vector4& armorColor,
                        const std::array<Vector4, 4>& colors)
{
    Vector3 colour{armorColor[0], armorColor[1], armorColor[2]};
    for (size_t channel = 0; channel < colors.size(); ++channel) {
        const Vector4& c = colors[channel];
        const float weight = texel[channel] / 255.0f * c[3] / 255.0f;
        for (size_t i = 0; i < 3; ++i)
            colour[i] += (c[i] - colour[i]) * weight;
    }
    return colour;
}

QImage camoPreview(const QByteArray& pixels, int width, int height, const Vector4& armorColor,
                   const std::array<Vector4, 4>& colors)
{
    if (width <= 0 || height <= 0 || pixels.size() < qint64(width) * height * 4)
        return QImage();
    QImage mixed(width, height, QImage::Format_RGB888);
    const auto* texel = reinterpret_cast<const uchar*>(pixels.constData());
    for (int y = 0; y < height; ++y) {
        uchar* line = mixed.scanLine(y);
        for (int x = 0; x < width; ++x, texel += 4) {
            const Vector3 colour = camoTexelColour(texel, armorColor, colors);
            for (int i = 0; i < 3; ++i)
                line[3 * x + i] = uchar(qBound(0.0f, colour[size_t(i)], 255.0f));
        }
    }
    return mixed.scaled(PreviewSide, PreviewSide, Qt::IgnoreAspectRatio, Qt::FastTransformation)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .mirrored(false, true);
}

bool decodeDdsPixels(QIODevice* device, QByteArray& pixels, int& width, int& height)
{
    if (!device || (!device->isOpen() && !device->open(QIODevice::ReadOnly)))
        return false;
    device->seek(0);
    DdsImage image;
    if (!image.parse(device->readAll()))
        return false;
    image.unpack(); // false for formats that need no unpacking
    if (!image.decompress() || !image.toRgba8())
        return false;
    const qint64 baseBytes = qint64(image.width) * image.height * 4;
    if (image.width <= 0 || image.height <= 0 || image.pixels.size() < baseBytes)
        return false;
    pixels = image.pixels.left(baseBytes);
    width = image.width;
    height = image.height;
    return true;
}
