#include "PackedXmlReader.h"

#include "BinaryReader.h"
#include "Log.h"
#include "ReadFailure.h"

#include <QVarLengthArray>
#include <QtEndian>

#include <cstring>

// A packed document stops at its first fault (short read, unknown value type,
// negative length, name index outside the table, nesting too deep, a
// boolean byte other than 1): the failure is kept and read() returns what
// was built up to there, with one closing box at most. Reading on would
// only turn the rest of the bytes into noise.

namespace {
enum ValueType
{
    Element = 0,
    String = 1,
    Integer = 2,
    Floats = 3,
    Boolean = 4,
    Blob = 5
};

constexpr int MatrixFloats = 12;

struct ChildEntry
{
    qint16 nameIndex;
    quint32 descriptor;
};

int endOffset(quint32 descriptor)
{
    return int(descriptor & 0x0FFFFFFFu);
}

// The top four bits as a signed field: 8 to 15 are negative, no known type.
int valueType(quint32 descriptor)
{
    return qint32(descriptor) >> 28;
}

QString rootTag(const QString& fileName)
{
    QString tag = fileName.split(QLatin1Char('/')).last();
    tag.replace(QLatin1String(".model"), QLatin1String(".visual"));
    return tag;
}

float floatAt(const char* data)
{
    const quint32 bits = qFromLittleEndian<quint32>(data);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// GCC and Clang both have it; the pedantic warning knows no other way.
__extension__ typedef unsigned __int128 Wide;

// 10^0 to 10^38, the largest that fits below 2^127.
struct PowersOfTen
{
    Wide value[39];
    int bits[39]; // bit length of each
    constexpr PowersOfTen() : value(), bits()
    {
        Wide power = 1;
        for (int i = 0; i < 39; ++i) {
            value[i] = power;
            int length = 0;
            for (Wide rest = power; rest != 0; rest >>= 1)
                ++length;
            bits[i] = length;
            power *= 10;
        }
    }
};
constexpr PowersOfTen powersOfTen;

constexpr int SignificantDigits = 6;
constexpr quint64 LowestSix = 100000;  // 10^(digits - 1)
constexpr quint64 BeyondSix = 1000000; // 10^digits

// The significand times 2^binaryExponent times 10^scale, split into its
// whole part and how the fraction compares with one half (-1, 0 or 1).
// False when the numbers would not fit in 128 bits.
bool scaleExactly(quint32 significand, int binaryExponent, int scale, quint64& whole, int& half)
{
    if (scale > 38 || scale < -38)
        return false;
    Wide numerator = significand;
    int numeratorBits = 24;
    if (scale >= 0) {
        numerator *= powersOfTen.value[scale];
        numeratorBits += powersOfTen.bits[scale];
    }
    if (binaryExponent > 0) {
        numerator <<= binaryExponent;
        numeratorBits += binaryExponent;
    }
    if (numeratorBits > 126)
        return false;
    const int shift = binaryExponent < 0 ? -binaryExponent : 0;
    Wide quotient, remainder, denominator;
    if (scale >= 0) {
        if (shift > 126)
            return false;
        denominator = Wide(1) << shift;
        quotient = numerator >> shift;
        remainder = numerator & (denominator - 1);
    } else {
        if (powersOfTen.bits[-scale] + shift > 126)
            return false;
        denominator = powersOfTen.value[-scale] << shift;
        quotient = numerator / denominator;
        remainder = numerator % denominator;
    }
    if (quotient >= Wide(BeyondSix) * 10)
        return false;
    whole = quint64(quotient);
    const Wide twice = remainder << 1;
    half = twice < denominator ? -1 : twice == denominator ? 0 : 1;
    return true;
}

// Writes the decimal exponent as Qt does: a sign and at least two digits.
char* writeExponent(char* out, int exponent)
{
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 100)
        *out++ = char('0' + magnitude / 100);
    *out++ = char('0' + magnitude / 10 % 10);
    *out++ = char('0' + magnitude % 10);
    return out;
}

// value as QString::number(double(value), 'g', 6) writes it: six significant
// digits, rounded from the exact binary value with ties away from zero,
// trailing zeros dropped, the exponent form below 1e-4 and from 1e6 on.
// Computed exactly in 128-bit integers, at a fraction of the cost of Qt's
// general double formatting. Gives the end of what was written to out (16
// bytes are enough), or nullptr for values it leaves to Qt: zero with its
// sign, the infinities, NaN, and magnitudes beyond 1e+24 or below 1e-24.
char* writeFloat(char* out, float value)
{
    quint32 bits;
    std::memcpy(&bits, &value, sizeof bits);
    const bool negative = bits >> 31;
    const int biasedExponent = int(bits >> 23) & 0xFF;
    quint32 significand = bits & 0x7FFFFFu;
    if (biasedExponent == 0xFF)
        return nullptr;
    if (biasedExponent == 0 && significand == 0) {
        if (negative)
            return nullptr;
        *out++ = '0';
        return out;
    }
    int binaryExponent = -149;
    if (biasedExponent != 0) {
        significand |= 0x800000u;
        binaryExponent = biasedExponent - 150;
    }

    // The highest set bit gives the decimal exponent to within one
    // (78913 / 2^18 is log10(2) to seven places); the loop settles it.
    const int topBit = 31 - __builtin_clz(significand) + binaryExponent;
    int exponent = (topBit * 78913) >> 18;
    if (exponent > 24 || exponent < -24)
        return nullptr;
    quint64 digits = 0;
    int half = 0;
    for (;;) {
        if (!scaleExactly(significand, binaryExponent, SignificantDigits - 1 - exponent, digits,
                          half))
            return nullptr;
        if (digits >= BeyondSix)
            ++exponent;
        else if (digits < LowestSix)
            --exponent;
        else
            break;
    }
    if (half >= 0 && ++digits == BeyondSix) {
        digits = LowestSix;
        ++exponent;
    }

    char text[SignificantDigits];
    for (int i = SignificantDigits - 1; i >= 0; --i) {
        text[i] = char('0' + digits % 10);
        digits /= 10;
    }
    int count = SignificantDigits;
    while (text[count - 1] == '0')
        --count;

    if (negative)
        *out++ = '-';
    if (exponent < -4 || exponent >= SignificantDigits) {
        *out++ = text[0];
        if (count > 1) {
            *out++ = '.';
            for (int i = 1; i < count; ++i)
                *out++ = text[i];
        }
        return writeExponent(out, exponent);
    }
    if (exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        for (int i = -1; i > exponent; --i)
            *out++ = '0';
        for (int i = 0; i < count; ++i)
            *out++ = text[i];
        return out;
    }
    for (int i = 0; i <= exponent; ++i)
        *out++ = i < count ? text[i] : '0';
    if (count > exponent + 1) {
        *out++ = '.';
        for (int i = exponent + 1; i < count; ++i)
            *out++ = text[i];
    }
    return out;
}

// Room for one number however it is written, and its blank.
constexpr int MaxFloatText = 24;

// The floats joined by blanks, each as setNum gives it with six digits, but
// "-1e-06" reads "0". A vehicle file holds hundreds of thousands of these:
// they are written as Latin-1 into one buffer and become one string.
QString floatsText(const char* data, int count)
{
    QVarLengthArray<char, 16 * MaxFloatText> text(qsizetype(count) * MaxFloatText);
    char* out = text.data();
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            *out++ = ' ';
        const float value = floatAt(data + 4 * i);
        char* numberEnd = writeFloat(out, value);
        if (!numberEnd) {
            const QByteArray number = QString::number(double(value), 'g', 6).toLatin1();
            std::memcpy(out, number.constData(), size_t(number.size()));
            numberEnd = out + number.size();
        }
        if (numberEnd - out == 6 && std::memcmp(out, "-1e-06", 6) == 0) {
            *out = '0';
            numberEnd = out + 1;
        }
        out = numberEnd;
    }
    return QString::fromLatin1(text.data(), out - text.data());
}

// As QString::number(value) writes it, base 10.
QString integerText(qint64 value)
{
    char text[21];
    char* end = text + sizeof text;
    char* out = end;
    quint64 magnitude = value < 0 ? 0u - quint64(value) : quint64(value);
    do {
        *--out = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0)
        *--out = '-';
    return QString::fromLatin1(out, end - out);
}

void appendText(QDomDocument& document, QDomNode& node, const QString& text)
{
    node.appendChild(document.createTextNode(text));
}
} // namespace

PackedXmlReader::PackedXmlReader(BinaryReader* binaryReader) : reader(binaryReader) {}

QDomDocument PackedXmlReader::read(const QString& fileName)
{
    ReadFailure failure;
    QDomDocument document = read(fileName, failure);
    failure.showClosingBox();
    return document;
}

QDomDocument PackedXmlReader::read(const QString& fileName, ReadFailure& failure)
{
    QDomDocument document = readDocument(fileName);
    if (reader->failed())
        failure.record(reader->failure().message());
    return document;
}

QDomDocument PackedXmlReader::readDocument(const QString& fileName)
{
    // The whole document is taken at once and walked in memory: a device
    // call for each of its many small values cost more than the values.
    reader->seek(0);
    const QByteArray bytes = reader->readAll();
    if (bytes.size() < 4) {
        reader->fail("Error reading data: readInt()");
        return QDomDocument();
    }
    if (qFromLittleEndian<quint32>(bytes.constData()) != Magic)
        return readPlainText(bytes);

    ByteCursor bytesCursor(bytes, 4, *reader);
    cursor = &bytesCursor;
    QDomDocument document = readPacked(fileName);
    // The device stands after the last byte used, as if read piece by piece.
    reader->seek(bytesCursor.taken() + 4);
    cursor = nullptr;
    return document;
}

QDomDocument PackedXmlReader::readPacked(const QString& fileName)
{
    // The byte after the magic carries nothing we use. With nothing left the
    // name table's look-ahead reports the short file.
    if (cursor->remaining() > 0)
        cursor->take(1, "");
    if (!readNames())
        return QDomDocument();

    QDomDocument document;
    QDomElement root = document.createElement(rootTag(fileName));
    document.appendChild(root);
    readElement(document, root, 0);
    return document;
}

QDomDocument PackedXmlReader::readPlainText(const QByteArray& bytes)
{
    plainText = true;
    const QString text = QString::fromUtf8(bytes).simplified();
    QDomDocument document;
    if (!document.setContent(text))
        return QDomDocument();
    return document;
}

bool PackedXmlReader::readNames()
{
    for (;;) {
        const QByteArray name = cursor->readCString();
        if (reader->failed())
            return false;
        // readCString leaves the terminator; it is there, since it was found.
        cursor->take(1, "");
        if (name.isEmpty())
            return true;
        names.append(QString::fromLatin1(name));
    }
}

bool PackedXmlReader::readElement(QDomDocument& document, QDomNode& node, int depth)
{
    if (depth > MaxDepth) {
        Log::log(QStringLiteral("Packed XML nested deeper than %1 levels").arg(MaxDepth),
                 Log::Warning);
        return stop("Error reading data: nesting too deep");
    }

    const qint16 childCount = cursor->readShort();
    if (reader->failed())
        return false;
    const quint32 ownDescriptor = quint32(cursor->readInt());
    if (reader->failed())
        return false;

    // Each entry takes six bytes, so the data bounds what is reserved.
    const int count = qMax<int>(childCount, 0);
    QVarLengthArray<ChildEntry, 32> children;
    children.reserve(int(qMin<qint64>(count, cursor->remaining() / 6)));
    for (int i = 0; i < count; ++i) {
        const qint16 nameIndex = cursor->readShort();
        if (reader->failed())
            return false;
        const quint32 descriptor = quint32(cursor->readInt());
        if (reader->failed())
            return false;
        children.append({nameIndex, descriptor});
    }

    if (!readValue(document, node, 0, ownDescriptor, depth))
        return false;
    int previousEnd = endOffset(ownDescriptor);
    for (const ChildEntry& child : children) {
        if (child.nameIndex < 0 || child.nameIndex >= names.size()) {
            Log::log(QStringLiteral("Packed XML name index %1 outside a table of %2 names")
                         .arg(child.nameIndex)
                         .arg(names.size()),
                     Log::Warning);
            return stop("Error reading data: name index out of range");
        }
        QDomElement element = document.createElement(names[child.nameIndex]);
        node.appendChild(element);
        if (!readValue(document, element, previousEnd, child.descriptor, depth))
            return false;
        previousEnd = endOffset(child.descriptor);
    }
    return true;
}

bool PackedXmlReader::readValue(QDomDocument& document, QDomNode& node, int previousEnd,
                                quint32 descriptor, int depth)
{
    const int type = valueType(descriptor);
    if (type == Element)
        return readElement(document, node, depth + 1);

    const int length = endOffset(descriptor) - previousEnd;
    if (length < 0 && type >= String && type <= Blob) {
        Log::log(QStringLiteral("Packed XML value ends at %1, before the previous one at %2")
                     .arg(endOffset(descriptor))
                     .arg(previousEnd),
                 Log::Warning);
        return stop("Error reading data: negative value length");
    }

    switch (type) {
    case String:
        return readString(document, node, length);
    case Integer:
        return readInteger(document, node, length);
    case Floats:
        return readFloats(document, node, length);
    case Boolean:
        return readBoolean(document, node, length);
    case Blob:
        return readBlob(document, node, length);
    default:
        return stop("Unknown xml data type");
    }
}

bool PackedXmlReader::readString(QDomDocument& document, QDomNode& node, int length)
{
    const char* bytes = cursor->take(length, "Error reading data: readChar()");
    if (!bytes)
        return false;
    // One character for each byte, whatever the bytes are.
    appendText(document, node, QString::fromLatin1(bytes, length));
    return true;
}

// Lengths 1, 2, 4 and 8 are decoded. Any other length reads "0"; its bytes
// are consumed so that the values after it stay in step.
bool PackedXmlReader::readInteger(QDomDocument& document, QDomNode& node, int length)
{
    qint64 value = 0;
    switch (length) {
    case 1:
        value = cursor->readCharSigned();
        break;
    case 2:
        value = cursor->readShort();
        break;
    case 4:
        value = cursor->readInt();
        break;
    case 8:
        if (const char* bytes = cursor->take(8, "Error reading data: readInt()"))
            value = qFromLittleEndian<qint64>(bytes);
        break;
    default:
        cursor->take(length, "Error reading data: readInt()");
        break;
    }
    if (reader->failed())
        return false;
    appendText(document, node, integerText(value));
    return true;
}

bool PackedXmlReader::readFloats(QDomDocument& document, QDomNode& node, int length)
{
    // A remainder of length / 4 stays unread, as the format has it.
    const int count = length / 4;
    const char* bytes = cursor->take(qint64(count) * 4, "Error reading data: readFloat()");
    if (!bytes)
        return false;

    if (count != MatrixFloats) {
        appendText(document, node, floatsText(bytes, count));
        return true;
    }
    // Twelve numbers are a 4 x 3 matrix, one row element for each three.
    static const QString rowTags[] = {QStringLiteral("row0"), QStringLiteral("row1"),
                                      QStringLiteral("row2"), QStringLiteral("row3")};
    for (int row = 0; row < 4; ++row) {
        QDomElement element = document.createElement(rowTags[row]);
        appendText(document, element, floatsText(bytes + row * 12, 3));
        node.appendChild(element);
    }
    return true;
}

bool PackedXmlReader::readBoolean(QDomDocument& document, QDomNode& node, int length)
{
    if (length != 1) {
        appendText(document, node, QStringLiteral("false"));
        return true;
    }
    const qint8 byte = cursor->readCharSigned();
    if (reader->failed())
        return false;
    // The value stands as true even when the byte is not 1, which is the
    // failure.
    appendText(document, node, QStringLiteral("true"));
    if (byte != 1)
        return stop("Boolean error");
    return true;
}

bool PackedXmlReader::readBlob(QDomDocument& document, QDomNode& node, int length)
{
    const char* bytes = cursor->take(length, "Error reading data: readCharSigned()");
    if (!bytes)
        return false;
    appendText(document, node,
               QString::fromLatin1(QByteArray::fromRawData(bytes, length).toBase64()));
    return true;
}

bool PackedXmlReader::stop(const char* message)
{
    reader->fail(message);
    return false;
}
