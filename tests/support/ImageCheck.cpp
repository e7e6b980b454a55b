#include "ImageCheck.h"

#include <QDir>

#include <cstdlib>

bool sameColour(QRgb pixel, const QColor& colour, int tolerance)
{
    return std::abs(qRed(pixel) - colour.red()) <= tolerance &&
           std::abs(qGreen(pixel) - colour.green()) <= tolerance &&
           std::abs(qBlue(pixel) - colour.blue()) <= tolerance;
}

QString saveFailedImage(const QImage& image, const QString& label)
{
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    QString name = test ? QStringLiteral("%1.%2").arg(QString::fromUtf8(test->test_suite_name()),
                                                      QString::fromUtf8(test->name()))
                        : QStringLiteral("image");
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    if (!label.isEmpty())
        name += QLatin1Char('-') + label;
    const QString directory = QStringLiteral(FERROX_FAILED_IMAGE_DIR);
    QDir().mkpath(directory);
    const QString path = directory + QLatin1Char('/') + name + QStringLiteral(".png");
    image.save(path);
    return path;
}

testing::AssertionResult pixelIs(const QImage& image, QPoint at, const QColor& colour,
                                 int tolerance)
{
    if (!image.valid(at))
        return testing::AssertionFailure()
               << "pixel " << at.x() << "," << at.y() << " outside a " << image.width() << "x"
               << image.height() << " image (saved to "
               << saveFailedImage(image).toStdString() << ")";
    const QRgb got = image.pixel(at);
    if (sameColour(got, colour, tolerance))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "pixel " << at.x() << "," << at.y() << " is " << qRed(got) << "," << qGreen(got)
           << "," << qBlue(got) << "," << qAlpha(got) << ", expected " << colour.red() << ","
           << colour.green() << "," << colour.blue() << " within " << tolerance
           << " (image saved to " << saveFailedImage(image).toStdString() << ")";
}
