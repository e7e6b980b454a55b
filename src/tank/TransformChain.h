#pragma once

#include "Camera.h"

#include <QVector>

// The matrix the parts of a vehicle hang on while they are drawn: each part
// multiplies its placement onto it, so that the next part sits on it.
struct TransformChain
{
    Matrix current = identityMatrix();
    QVector<Matrix> saved;

    void reset()
    {
        current = identityMatrix();
        saved.clear();
    }
    void push() { saved.append(current); }
    // A pop without a push keeps the current matrix.
    void pop()
    {
        if (!saved.isEmpty())
            current = saved.takeLast();
    }
    void multiply(const Matrix& by) { current = matrixProduct(current, by); }
};
