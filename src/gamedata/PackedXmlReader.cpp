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

// The floats joined by blanks, each as setNum gives it with six digits, but
// "-1e-06" reads "0". Written into one string: a vehicle file holds
// hundreds of thousands of these, and a list of parts joined afterwards
// cost more than the numbers themselves.
QString floatsText(const char* data, int count)
{
    QString text;
    text.reserve(count * 9);
    QString number;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            text += QLatin1Char(' ');
        number.setNum(floatAt(data + 4 * i), 'g', 6);
        if (number == QLatin1String("-1e-06"))
            text += QLatin1Char('0');
        else
            text += number;
    }
    return text;
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
    reader->seek(0);
    const quint32 magic = quint32(reader->readInt());
    if (reader->failed())
        return QDomDocument();
    if (magic != Magic)
        return readPlainText();

    // The byte after the magic carries nothing we use. With nothing left the
    // name table's first peek reports the short file.
    if (reader->remaining() > 0)
        reader->skip(1);
    if (!readNames())
        return QDomDocument();

    QDomDocument document;
    QDomElement root = document.createElement(rootTag(fileName));
    document.appendChild(root);
    readElement(document, root, 0);
    return document;
}

QDomDocument PackedXmlReader::readPlainText()
{
    plainText = true;
    reader->seek(0);
    const QString text = QString::fromUtf8(reader->readAll()).simplified();
    QDomDocument document;
    if (!document.setContent(text))
        return QDomDocument();
    return document;
}

bool PackedXmlReader::readNames()
{
    for (;;) {
        const QByteArray name = reader->readCString();
        if (reader->failed())
            return false;
        // readCString leaves the terminator; it is there, since the peek saw it.
        reader->skip(1);
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

    const qint16 childCount = reader->readShort();
    if (reader->failed())
        return false;
    const quint32 ownDescriptor = quint32(reader->readInt());
    if (reader->failed())
        return false;

    // Each entry takes six bytes, so the data bounds what is reserved.
    const int count = qMax<int>(childCount, 0);
    QVarLengthArray<ChildEntry, 32> children;
    children.reserve(int(qMin<qint64>(count, reader->remaining() / 6)));
    for (int i = 0; i < count; ++i) {
        const qint16 nameIndex = reader->readShort();
        if (reader->failed())
            return false;
        const quint32 descriptor = quint32(reader->readInt());
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
    const QByteArray bytes = reader->readBytes(length, "Error reading data: readChar()");
    if (reader->failed())
        return false;
    // One character for each byte, whatever the bytes are.
    appendText(document, node, QString::fromLatin1(bytes));
    return true;
}

// Lengths 1, 2 and 4 are decoded. Any other length reads "0"; its bytes are
// consumed so that the values after it stay in step.
bool PackedXmlReader::readInteger(QDomDocument& document, QDomNode& node, int length)
{
    qint32 value = 0;
    switch (length) {
    case 1:
        value = reader->readCharSigned();
        break;
    case 2:
        value = reader->readShort();
        break;
    case 4:
        value = reader->readInt();
        break;
    default:
        reader->readBytes(length, "Error reading data: readInt()");
        break;
    }
    if (reader->failed())
        return false;
    appendText(document, node, QString::number(value));
    return true;
}

bool PackedXmlReader::readFloats(QDomDocument& document, QDomNode& node, int length)
{
    // A remainder of length / 4 stays unread, as the format has it.
    const int count = length / 4;
    if (qint64(count) * 4 > reader->remaining())
        return stop("Error reading data: readFloat()");
    const QByteArray bytes =
        reader->readBytes(qint64(count) * 4, "Error reading data: readFloat()");
    if (reader->failed())
        return false;

    if (count != MatrixFloats) {
        appendText(document, node, floatsText(bytes.constData(), count));
        return true;
    }
    // Twelve numbers are a 4 x 3 matrix, one row element for each three.
    static const QString rowTags[] = {QStringLiteral("row0"), QStringLiteral("row1"),
                                      QStringLiteral("row2"), QStringLiteral("row3")};
    for (int row = 0; row < 4; ++row) {
        QDomElement element = document.createElement(rowTags[row]);
        appendText(document, element, floatsText(bytes.constData() + row * 12, 3));
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
    const qint8 byte = reader->readCharSigned();
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
    const QByteArray bytes = reader->readBytes(length, "Error reading data: readCharSigned()");
    if (reader->failed())
        return false;
    appendText(document, node, QString::fromLatin1(bytes.toBase64()));
    return true;
}

bool PackedXmlReader::stop(const char* message)
{
    reader->fail(message);
    return false;
}
