#include "MatrixStack.h"

namespace {

Matrix3 identityMatrix3()
{
    return {1, 0, 0, 0, 1, 0, 0, 0, 1};
}

// Clip space (-1..1) to texture space (0..1) on x, y and z.
Matrix clipToTexture()
{
    return {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, 0.5f, 0.5f, 0.5f, 1};
}

} // namespace

MatrixStack::MatrixStack(QObject* parent)
    : QObject(parent), projection(identityMatrix()), view(identityMatrix()),
      depthProjection(identityMatrix()), depthView(identityMatrix()),
      normalMatrix(identityMatrix3()), depthBias(clipToTexture())
{
}

void MatrixStack::setView(const Matrix& newView)
{
    view = newView;

    // a(r, c) of the upper 3 x 3, column order as in the 4 x 4.
    auto a = [&](int r, int c) { return newView[c * 4 + r]; };
    // The inverse transposed is the cofactor matrix divided by the determinant.
    auto cofactor = [&](int r, int c) {
        const int r0 = (r + 1) % 3, r1 = (r + 2) % 3;
        const int c0 = (c + 1) % 3, c1 = (c + 2) % 3;
        // The cyclic choice of rows and columns already carries the sign.
        return a(r0, c0) * a(r1, c1) - a(r0, c1) * a(r1, c0);
    };
    const float det =
        a(0, 0) * cofactor(0, 0) + a(0, 1) * cofactor(0, 1) + a(0, 2) * cofactor(0, 2);
    // A view that flattens space has no normal matrix; the last one stays
    // rather than turning every normal into NaN.
    if (det == 0)
        return;
    for (int c = 0; c < 3; ++c)
        for (int r = 0; r < 3; ++r)
            normalMatrix[c * 3 + r] = cofactor(r, c) / det;
}
