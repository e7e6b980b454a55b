#include "UvMapFile.h"

#include "Log.h"

#include <QCoreApplication>
#include <QImageWriter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSvgGenerator>

namespace {
const char* const suffixes[] = {".png", ".tiff", ".svg"};
const char* const filters[] = {"Png (*.png)", "Tiff (*.tiff)", "Svg (*.svg)"};
const char* const imageFormats[] = {"PNG", "TIFF"};
} // namespace

QString UvMapFile::proposedName(const QString& texture, Format format)
{
    QString name = texture;
    static const QRegularExpression dds(QStringLiteral("\\.dds"),
                                        QRegularExpression::CaseInsensitiveOption);
    return name.replace(dds, QLatin1String(suffixes[format]));
}

QString UvMapFile::filter(Format format)
{
    return QLatin1String(filters[format]);
}

int UvMapFile::scaleOfIndex(int index)
{
    return index >= 0 && index < 4 ? index + 1 : 1;
}

bool UvMapFile::save(const UvMap& map, const QString& texture, const QSize& textureSize, int scale,
                     Format format, const UvMapStyle& style, const QString& file)
{
    const QSize size = textureSize * scale;
    const bool saved =
        !size.isEmpty() && (format == Svg ? saveSvg(map, texture, size, style, file)
                                          : saveImage(map, texture, size, format, style, file));
    if (!saved)
        Log::log(QStringLiteral("Failed to save UV Map: ") + file, Log::Warning);
    return saved;
}

bool UvMapFile::saveImage(const UvMap& map, const QString& texture, const QSize& size,
                          Format format, const UvMapStyle& style, const QString& file)
{
    const QImage picture = map.image(texture, size, style);
    QSaveFile out(file);
    if (picture.isNull() || !out.open(QIODevice::WriteOnly))
        return false;
    QImageWriter writer(&out, imageFormats[format]);
    writer.setQuality(100);
    if (!writer.write(picture)) {
        out.cancelWriting();
        return false;
    }
    return out.commit();
}

bool UvMapFile::saveSvg(const UvMap& map, const QString& texture, const QSize& size,
                        const UvMapStyle& style, const QString& file)
{
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    {
        QSvgGenerator generator;
        generator.setOutputDevice(&out);
        generator.setSize(size);
        generator.setViewBox(QRect(QPoint(0, 0), size));
        generator.setTitle(file);
        generator.setDescription(
            QCoreApplication::translate("UvGenerateForm", "Ferrox SVG Generator"));
        map.draw(generator, texture, size.width(), size.height(), style);
    }
    return out.commit();
}
