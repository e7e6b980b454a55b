#pragma once

// Pixel checks for rendering tests. A failing check writes the whole image it
// got to build/tests/failed-images/<Suite>.<Test>[-label].png, so a person
// can look at what was drawn.

#include <QColor>
#include <QImage>
#include <QPoint>

#include <gtest/gtest.h>

// Whether each of red, green and blue lies within tolerance of colour.
bool sameColour(QRgb pixel, const QColor& colour, int tolerance = 2);

// Writes image for the running test; label tells several images apart.
// Returns the path written.
QString saveFailedImage(const QImage& image, const QString& label = QString());

// Succeeds when the pixel at `at` matches colour; otherwise saves the image
// and says what was found.
testing::AssertionResult pixelIs(const QImage& image, QPoint at, const QColor& colour,
                                 int tolerance = 2);

#define EXPECT_PIXEL(image, x, y, colour, ...)                                                    \
    EXPECT_TRUE(pixelIs((image), QPoint((x), (y)), (colour), ##__VA_ARGS__))
