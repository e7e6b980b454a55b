#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <QTime>
#include <QVector>

// What the screenshot actions need beside the viewport's own off-screen
// render (RenderWidget::renderToImage): file names, the size presets within
// what the GPU allows, and writing the picture.
class Screenshots
{
public:
    struct Preset
    {
        QString text;
        // 0 for the "Max" preset: the largest size, square.
        int width;
        int height;
    };

    // The presets of the screenshot dialog, in its box's order.
    static const QVector<Preset>& presets();
    // The maximum of the size boxes: maxImageSize, at most 8196, 0 when
    // below 1.
    static int sizeLimit(int maxImageSize);
    // A preset's size within sizeLimit; "Max" is maxImageSize (at most
    // 8000) on both sides.
    static QSize presetSize(int index, int maxImageSize);

    // The tank's name with each of / * < > : | ? \ " made "_".
    static QString safeName(const QString& tankName);
    // directory / safe name [ "_" h-m-s ] ".png", native separators; the
    // time as plain numbers, 9-5-3.
    static QString fileName(const QString& directory, const QString& tankName, bool timeStamp,
                            const QTime& time);

    // The file as the save dialog gave it, with the suffix of the chosen
    // name filter ("Tiff (*.tiff)") when it has none of its own; PNG's
    // when the filter names none.
    static QString withFormatSuffix(const QString& file, const QString& nameFilter);

    // Writes image whole or not at all, in the format the file's suffix
    // names (PNG when none), at quality 0 to 100. False with the writer's
    // reason in error.
    static bool save(const QImage& image, const QString& file, int quality,
                     QString* error = nullptr);
};
