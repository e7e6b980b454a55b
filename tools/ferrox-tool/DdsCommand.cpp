#include "GeometryCommands.h"

#include "DdsImage.h"
#include "FileManager.h"
#include "Log.h"
#include "ToolContext.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

#include <cstdio>
#include <memory>

namespace {
QString layoutText(const DdsImage& image)
{
    if (image.depth == 0)
        return QStringLiteral("cube map");
    if (image.depth > 1)
        return QStringLiteral("volume of %1 slices").arg(image.depth);
    return QStringLiteral("2D");
}

void printInfo(const DdsImage& image)
{
    const QString line = QStringLiteral("%1 %2 x %3, %4, %5 mip levels, %6 bytes\n")
                             .arg(QLatin1String(ddsFormatName(image.format)))
                             .arg(image.width)
                             .arg(image.height)
                             .arg(layoutText(image))
                             .arg(image.mipCount)
                             .arg(image.dataSize(0, image.mipCount));
    std::fputs(line.toUtf8().constData(), stdout);
}

// The base level (first face or slice) through the same decoders the
// camouflage preview uses.
bool writePng(DdsImage image, const QString& path)
{
    image.unpack(); // false for formats that are not packed, which go on as they are
    if (!image.decompress() || !image.toRgba8()) {
        printError(QStringLiteral("No decoder for format ") +
                   QLatin1String(ddsFormatName(image.format)));
        return false;
    }
    const QImage picture(reinterpret_cast<const uchar*>(image.pixels.constData()), image.width,
                         image.height, image.width * 4, QImage::Format_RGBA8888);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !picture.save(&file, "PNG") || !file.commit()) {
        printError(QStringLiteral("Cannot write PNG file: ") + path);
        return false;
    }
    return true;
}
} // namespace

int ddsCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() < 1 || arguments.positional.size() > 2 ||
        (arguments.hasOption(QStringLiteral("png")) &&
         arguments.option(QStringLiteral("png")).isEmpty())) {
        printError(QStringLiteral("usage: ferrox-tool dds FILE_OR_NAME [GAME_DIR] [--png OUT]"));
        return 2;
    }
    // Looking a name up moves to the program's folder; OUT stays where the
    // user meant it.
    QString png = arguments.option(QStringLiteral("png"));
    if (!png.isEmpty())
        png = QFileInfo(png).absoluteFilePath();
    QByteArray bytes;
    if (!readFileOrResource(arguments.positional[0], arguments.positional.value(1), arguments,
                            bytes))
        return 1;

    // The parser explains a refusal in the log; here the log is standard error.
    Log::setFallbackSink([](const QString& message, int) { printError(message); });
    DdsImage image;
    const bool parsed = image.parse(bytes);
    Log::setFallbackSink({});
    if (!parsed) {
        printError(QStringLiteral("Not a readable DDS file: ") + arguments.positional[0]);
        return 1;
    }

    printInfo(image);
    if (!png.isEmpty() && !writePng(std::move(image), png))
        return 1;
    return 0;
}
