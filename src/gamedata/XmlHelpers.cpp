#include "XmlHelpers.h"

#include <QByteArray>
#include <QDomElement>
#include <QDomNode>

#include <clocale>
#include <cstdlib>
#include <locale.h>

namespace {
// Qt sets the process locale from the environment, and under a locale with a
// decimal comma "%f" would stop at the point. The numbers in game files always
// use a point, so they are scanned under the C locale whatever the process has.
locale_t cLocale()
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return locale;
}

// Scans count numbers separated by white space, as sscanf with "%f" repeated
// would: each conversion skips leading white space and takes the longest
// prefix that is a number. False unless all count convert.
bool scanFloats(const QString& text, float* values, int count)
{
    const QByteArray bytes = text.toUtf8();
    const char* position = bytes.constData();
    for (int i = 0; i < count; ++i) {
        char* end = nullptr;
        values[i] = strtof_l(position, &end, cLocale());
        if (end == position)
            return false;
        position = end;
    }
    return true;
}

template <typename Vector> Vector parseVector(const QString& text)
{
    Vector result{};
    if (!scanFloats(text, result.data(), int(result.size())))
        result.fill(0.0f);
    return result;
}

Vector3 parseRow(const QDomNode& node, const char* name)
{
    return parseVector3(node.firstChildElement(QLatin1String(name)).text().trimmed());
}
} // namespace

Vector2 parseVector2(const QString& text)
{
    return parseVector<Vector2>(text);
}

Vector3 parseVector3(const QString& text)
{
    return parseVector<Vector3>(text);
}

Vector4 parseVector4(const QString& text)
{
    return parseVector<Vector4>(text);
}

Matrix parseTransform(const QDomNode& node)
{
    const Vector3 row0 = parseRow(node, "row0");
    const Vector3 row1 = parseRow(node, "row1");
    const Vector3 row2 = parseRow(node, "row2");
    const Vector3 row3 = parseRow(node, "row3");
    // The translation's x changes sign: the program mirrors all model data.
    return {row0[0], row0[1], row0[2], 0.0f, row1[0],  row1[1], row1[2], 0.0f,
            row2[0], row2[1], row2[2], 0.0f, -row3[0], row3[1], row3[2], 1.0f};
}
