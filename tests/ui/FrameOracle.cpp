#include "FrameOracle.h"

#include "ImageCheck.h"
#include "MainWindow.h"
#include "RenderWidget.h"
#include "ToolRunner.h"

#include <QTemporaryDir>

#include <algorithm>
#include <cstdlib>

namespace {

QImage differenceImage(const QImage& a, const QImage& b)
{
    QImage difference(a.size(), QImage::Format_RGB32);
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            difference.setPixel(x, y,
                                qRgb(std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                     std::abs(qBlue(p) - qBlue(q))));
        }
    return difference;
}

} // namespace

FrameDifference FrameOracle::compare(const QImage& shown, const QImage& expected)
{
    FrameDifference result;
    if (shown.size() != expected.size() || shown.isNull()) {
        result.meanLevels = 255;
        result.strongShare = 1;
        return result;
    }
    double sum = 0;
    qint64 strong = 0;
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x) {
            const QRgb p = shown.pixel(x, y);
            const QRgb q = expected.pixel(x, y);
            const int r = std::abs(qRed(p) - qRed(q));
            const int g = std::abs(qGreen(p) - qGreen(q));
            const int b = std::abs(qBlue(p) - qBlue(q));
            sum += r + g + b;
            strong += std::max({r, g, b}) > StrongLevels ? 1 : 0;
        }
    const double pixels = double(shown.width()) * shown.height();
    result.meanLevels = sum / (3 * pixels);
    result.strongShare = double(strong) / pixels;
    return result;
}

testing::AssertionResult FrameOracle::sameFrame(MainWindow& window, const QString& vehicle,
                                                const QStringList& toolArguments,
                                                const QString& label)
{
    RenderWidget& view = *window.renderWidget;
    const QImage shown = view.grabFramebuffer().convertToFormat(QImage::Format_RGB32);
    QTemporaryDir scratch;
    const QString camera = scratch.filePath(QStringLiteral("view.Camera"));
    const QString out = scratch.filePath(QStringLiteral("frame.png"));
    if (!view.controls.saveView(camera))
        return testing::AssertionFailure() << "the viewport's camera could not be saved";

    QStringList arguments{QStringLiteral("render"),
                          SampleGame,
                          vehicle,
                          QStringLiteral("--out"),
                          out,
                          QStringLiteral("--size"),
                          QStringLiteral("%1x%2").arg(shown.width()).arg(shown.height()),
                          QStringLiteral("--camera"),
                          camera};
    arguments += toolArguments;
    const ToolResult tool = runTool(arguments);
    if (tool.exitCode != 0)
        return testing::AssertionFailure()
               << "ferrox-tool " << arguments.join(QLatin1Char(' ')).toStdString()
               << " failed: " << tool.err.toStdString();
    testing::AssertionResult same = sameImage(shown, QImage(out), label);
    if (!same)
        return same << " (tool: " << toolArguments.join(QLatin1Char(' ')).toStdString()
                    << "; viewport samples " << view.frame.imageSamples << ")";
    return same;
}

testing::AssertionResult FrameOracle::sameImage(const QImage& shownImage,
                                                const QImage& expectedImage, const QString& label)
{
    const QImage shown = shownImage.convertToFormat(QImage::Format_RGB32);
    const QImage expected = expectedImage.convertToFormat(QImage::Format_RGB32);
    const FrameDifference difference = compare(shown, expected);
    if (difference.meanLevels <= MeanLevelsAllowed && difference.strongShare <= StrongShareAllowed)
        return testing::AssertionSuccess();
    saveFailedImage(shown, label + QStringLiteral("-window"));
    saveFailedImage(expected, label + QStringLiteral("-offscreen"));
    if (shown.size() == expected.size())
        saveFailedImage(differenceImage(shown, expected), label + QStringLiteral("-difference"));
    return testing::AssertionFailure()
           << label.toStdString() << ": the window's frame differs from the off-screen frame by "
           << difference.meanLevels << " levels on average, " << difference.strongShare * 100
           << " % of pixels by more than " << StrongLevels;
}
