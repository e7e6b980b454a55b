#pragma once

#include <QString>

#include <array>

class QDomNode;

// Numbers held as text in the game's documents, as the program's vectors and
// matrices. A matrix is 16 floats in OpenGL order, column after column, with
// the translation in elements 12 to 14.
using Vector2 = std::array<float, 2>;
using Vector3 = std::array<float, 3>;
using Vector4 = std::array<float, 4>;
using Matrix = std::array<float, 16>;

// All zeros unless every number of the vector converts; text after the last
// number is ignored.
Vector2 parseVector2(const QString& text);
Vector3 parseVector3(const QString& text);
Vector4 parseVector4(const QString& text);

// The row0..row3 children of node as a matrix; the translation's x changes
// sign, as every position taken from the game's files does.
Matrix parseTransform(const QDomNode& node);

// m = m x other.
void multiplyMatrix(Matrix& m, const Matrix& other);
