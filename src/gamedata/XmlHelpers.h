#pragma once

#include "Maths.h"

#include <QString>

class QDomNode;

// Numbers held as text in the game's documents, read into the program's
// vectors and matrices (Maths.h).

// All zeros unless every number of the vector converts; text after the last
// number is ignored.
Vector2 parseVector2(const QString& text);
Vector3 parseVector3(const QString& text);
Vector4 parseVector4(const QString& text);

// The row0..row3 children of node as a matrix; the translation's x changes
// sign, as every position taken from the game's files does.
Matrix parseTransform(const QDomNode& node);
