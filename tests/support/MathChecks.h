#pragma once

// Element-wise comparison of the fixed-size float arrays the program uses
// for vectors and matrices.

#include <QMatrix4x4>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

template <std::size_t N>
void expectNear(const std::array<float, N>& actual, const std::array<float, N>& expected,
                float tolerance = 1e-5f)
{
    for (std::size_t i = 0; i < N; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

// QMatrix4x4 keeps its data column after column, as the program does.
inline std::array<float, 16> fromQt(const QMatrix4x4& m)
{
    std::array<float, 16> result;
    std::copy(m.constData(), m.constData() + 16, result.begin());
    return result;
}
