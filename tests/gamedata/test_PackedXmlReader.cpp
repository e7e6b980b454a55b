#include "BinaryReader.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "PackedXmlReader.h"
#include "QtPrinters.h"
#include "XmlHelpers.h"

#include <QBuffer>
#include <QDomDocument>
#include <QElapsedTimer>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cstring>

namespace {
// A writer of the packed form, independent of the reader: values are typed
// byte strings, an element is its own value plus named children, and the
// descriptors' end offsets are summed up as the data block is laid out.
struct Value
{
    int type = 1;
    QByteArray bytes;
    // When set, written as the descriptor's end instead of the true one.
    int forcedEnd = -1;
};

struct Element
{
    Value own{1, {}};
    QList<QPair<int, Value>> children;

    Element& add(int nameIndex, const Value& value)
    {
        children.append({nameIndex, value});
        return *this;
    }
};

QByteArray le16(int value)
{
    char bytes[2];
    qToLittleEndian<qint16>(qint16(value), bytes);
    return QByteArray(bytes, 2);
}

QByteArray le32(quint32 value)
{
    char bytes[4];
    qToLittleEndian<quint32>(value, bytes);
    return QByteArray(bytes, 4);
}

quint32 descriptor(int type, int end)
{
    return (quint32(type) << 28) | (quint32(end) & 0x0FFFFFFFu);
}

QByteArray record(const Element& element, int forcedCount = -1)
{
    QByteArray entries;
    QByteArray data = element.own.bytes;
    const int ownEnd = element.own.forcedEnd >= 0 ? element.own.forcedEnd : int(data.size());
    for (const auto& [nameIndex, value] : element.children) {
        data += value.bytes;
        const int end = value.forcedEnd >= 0 ? value.forcedEnd : int(data.size());
        entries += le16(nameIndex) + le32(descriptor(value.type, end));
    }
    const int count = forcedCount >= 0 ? forcedCount : int(element.children.size());
    return le16(count) + le32(descriptor(element.own.type, ownEnd)) + entries + data;
}

QByteArray packed(const QList<QByteArray>& names, const Element& root)
{
    QByteArray file = le32(PackedXmlReader::Magic) + QByteArray(1, '\x7f');
    for (const QByteArray& name : names)
        file += name + QByteArray(1, '\0');
    file += QByteArray(1, '\0');
    return file + record(root);
}

Value string(const QByteArray& text)
{
    return {1, text};
}

Value integer(qint64 number, int width)
{
    char bytes[8];
    qToLittleEndian<qint64>(number, bytes);
    return {2, QByteArray(bytes, width)};
}

Value floats(const QList<float>& numbers)
{
    QByteArray bytes;
    for (float number : numbers) {
        quint32 bits;
        std::memcpy(&bits, &number, 4);
        bytes += le32(bits);
    }
    return {3, bytes};
}

Value boolean(const QByteArray& bytes)
{
    return {4, bytes};
}

Value blob(const QByteArray& bytes)
{
    return {5, bytes};
}

Value nested(const Element& element)
{
    return {0, record(element)};
}

// One reader for one document, as the program uses them.
struct ReadResult
{
    QDomDocument document;
    bool plainText = false;
    qint64 position = 0;
};

ReadResult readDocument(const QByteArray& bytes, const QString& fileName = QStringLiteral("x.xml"))
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    ReadResult result;
    result.document = reader.read(fileName);
    result.plainText = reader.plainText;
    result.position = buffer.pos();
    return result;
}

QDomElement root(const ReadResult& result)
{
    return result.document.documentElement();
}

QStringList childTags(const QDomNode& node)
{
    QStringList tags;
    for (QDomElement child = node.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        tags.append(child.tagName());
    return tags;
}

QString childText(const QDomNode& node, const QString& tag)
{
    return node.firstChildElement(tag).text();
}

int elementCount(const QDomNode& node)
{
    int count = node.isElement() ? 1 : 0;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling())
        count += elementCount(child);
    return count;
}

QString firstBoxText(const MessageBoxRecorder& boxes)
{
    return boxes.boxes.isEmpty() ? QString() : boxes.boxes.first().text;
}

class PackedXmlReaderTest : public testing::Test
{
protected:
    // Reads a root whose only child "v" holds value.
    QDomElement readOne(const Value& value)
    {
        lastRead = readDocument(packed({"v"}, Element().add(0, value)));
        return root(lastRead).firstChildElement(QStringLiteral("v"));
    }

    // A closing box was shown, and only one, with this text first.
    void expectOneBox(const QString& message)
    {
        ASSERT_EQ(boxes.boxes.size(), 1) << message.toStdString();
        EXPECT_EQ(boxes.boxes.first().icon, QMessageBox::Critical);
        EXPECT_TRUE(boxes.boxes.first().text.startsWith(message + QLatin1Char('\n')))
            << firstBoxText(boxes).toStdString();
    }

    MessageBoxRecorder boxes;
    LogCapture log;
    ReadResult lastRead;
};

// A document with every kind of value, nested elements, a matrix and a
// non-empty value at the very end, so that each byte of it is needed.
QByteArray richFile()
{
    Element turret;
    turret.own = string("T");
    turret.add(2, floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}))
        .add(3, integer(-7, 2))
        .add(4, boolean(QByteArray(1, '\x01')));
    Element hull;
    hull.add(1, nested(turret)).add(5, blob("\x01\x02\x03\x04")).add(0, string("end"));
    Element top;
    top.own = integer(3, 4);
    top.add(0, string("Name")).add(1, nested(hull)).add(3, integer(100000, 4));
    top.add(2, floats({0.5f, -2, 1e-7f})).add(0, string("last"));
    return packed({"name", "hull", "transform", "armor", "flag", "data"}, top);
}
} // namespace

TEST_F(PackedXmlReaderTest, ReadsTheWorkedByteExample)
{
    const QByteArray bytes = QByteArray::fromHex("454ea162"
                                                 "00"
                                                 "6100"
                                                 "00"
                                                 "0100"
                                                 "00000010"
                                                 "0000"
                                                 "01000020"
                                                 "05");
    // The test encoder lays the same file out byte for byte (but for the
    // byte after the magic, which nobody reads).
    QByteArray encoded = packed({"a"}, Element().add(0, integer(5, 1)));
    encoded[4] = '\0';
    EXPECT_EQ(encoded.toHex(), bytes.toHex());

    const ReadResult result = readDocument(bytes);
    EXPECT_FALSE(result.plainText);
    EXPECT_EQ(root(result).tagName(), QStringLiteral("x.xml"));
    EXPECT_EQ(childTags(root(result)), QStringList{QStringLiteral("a")});
    EXPECT_EQ(childText(root(result), QStringLiteral("a")), QStringLiteral("5"));
    EXPECT_EQ(result.position, bytes.size());
    // One root element and nothing else: no processing instruction.
    EXPECT_EQ(result.document.childNodes().size(), 1);
    EXPECT_TRUE(boxes.boxes.isEmpty());

    // The read starts at byte 0 wherever the device stands.
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    buffer.seek(7);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    EXPECT_EQ(reader.read(QStringLiteral("x.xml")).documentElement().text(), QStringLiteral("5"));
}

TEST_F(PackedXmlReaderTest, RootTagIsTheLastPathComponentWithModelBecomingVisual)
{
    const QByteArray file = packed({}, Element());
    EXPECT_EQ(root(readDocument(file, QStringLiteral("a/b/Hull.model"))).tagName(),
              QStringLiteral("Hull.visual"));
    EXPECT_EQ(root(readDocument(file, QStringLiteral("Hull.visual"))).tagName(),
              QStringLiteral("Hull.visual"));
    EXPECT_EQ(root(readDocument(file, QStringLiteral("vehicles/list.xml"))).tagName(),
              QStringLiteral("list.xml"));
    // Every ".model" is replaced, not only a suffix; folders never count.
    EXPECT_EQ(root(readDocument(file, QStringLiteral("x.model/a.model.model"))).tagName(),
              QStringLiteral("a.visual.visual"));
}

TEST_F(PackedXmlReaderTest, EveryElementStartsWithItsOwnValueTextNode)
{
    Element inner;
    inner.add(0, string("deep"));
    Element top;
    top.own = string("own text");
    top.add(0, string("")).add(1, nested(inner));
    const ReadResult result = readDocument(packed({"a", "b"}, top));

    const QDomNodeList nodes = root(result).childNodes();
    ASSERT_EQ(nodes.size(), 3);
    EXPECT_TRUE(nodes.at(0).isText());
    EXPECT_EQ(nodes.at(0).nodeValue(), QStringLiteral("own text"));
    EXPECT_EQ(nodes.at(1).nodeName(), QStringLiteral("a"));
    EXPECT_EQ(nodes.at(2).nodeName(), QStringLiteral("b"));

    // Empty own values still give their text node, so the first element of
    // a packed element sits at index 1.
    const QDomNodeList aNodes = nodes.at(1).childNodes();
    ASSERT_EQ(aNodes.size(), 1);
    EXPECT_TRUE(aNodes.at(0).isText());
    EXPECT_EQ(aNodes.at(0).nodeValue(), QString());

    const QDomNodeList bNodes = nodes.at(2).childNodes();
    ASSERT_EQ(bNodes.size(), 2);
    EXPECT_TRUE(bNodes.at(0).isText());
    EXPECT_EQ(bNodes.at(1).nodeName(), QStringLiteral("a"));
    EXPECT_EQ(bNodes.at(1).toElement().text(), QStringLiteral("deep"));
}

TEST_F(PackedXmlReaderTest, NestedElementsAddToTheNodeInHand)
{
    // A type 0 own value is read in place: its own value and children go to
    // the same node, after nothing of its own.
    Element merged;
    merged.own = string("m");
    merged.add(1, integer(9, 1));
    Element top;
    top.own = nested(merged);
    top.add(0, string("after"));
    const ReadResult result = readDocument(packed({"a", "b"}, top));

    const QDomNodeList nodes = root(result).childNodes();
    ASSERT_EQ(nodes.size(), 3);
    EXPECT_EQ(nodes.at(0).nodeValue(), QStringLiteral("m"));
    EXPECT_EQ(nodes.at(1).nodeName(), QStringLiteral("b"));
    EXPECT_EQ(nodes.at(1).toElement().text(), QStringLiteral("9"));
    EXPECT_EQ(nodes.at(2).nodeName(), QStringLiteral("a"));
    EXPECT_EQ(nodes.at(2).toElement().text(), QStringLiteral("after"));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, StringsTakeOneCharacterPerByte)
{
    EXPECT_EQ(readOne(string("plain")).text(), QStringLiteral("plain"));
    // The bytes of "é" in UTF-8 stay two characters.
    EXPECT_EQ(readOne(string("\xC3\xA9")).text(), QString::fromLatin1("\xC3\xA9"));
    EXPECT_EQ(readOne(string(QByteArray("a\0b", 3))).text().size(), 3);
    EXPECT_EQ(readOne(string("")).text(), QString());
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, IntegersAreSignedByTheirLength)
{
    EXPECT_EQ(readOne(integer(-1, 1)).text(), QStringLiteral("-1"));
    EXPECT_EQ(readOne(integer(127, 1)).text(), QStringLiteral("127"));
    EXPECT_EQ(readOne(integer(-300, 2)).text(), QStringLiteral("-300"));
    EXPECT_EQ(readOne(integer(32767, 2)).text(), QStringLiteral("32767"));
    EXPECT_EQ(readOne(integer(-2147483647 - 1, 4)).text(), QStringLiteral("-2147483648"));
    EXPECT_EQ(readOne(integer(123456789, 4)).text(), QStringLiteral("123456789"));
    EXPECT_EQ(readOne(integer(0, 0)).text(), QStringLiteral("0"));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, IntegersOfOtherLengthsReadZeroAndKeepTheStreamInStep)
{
    for (int width : {3, 8}) {
        const QByteArray file =
            packed({"wide", "next"},
                   Element().add(0, integer(0x0102030405060708, width)).add(1, integer(42, 2)));
        const ReadResult result = readDocument(file);
        EXPECT_EQ(childText(root(result), QStringLiteral("wide")), QStringLiteral("0")) << width;
        // The value after it comes from its own bytes.
        EXPECT_EQ(childText(root(result), QStringLiteral("next")), QStringLiteral("42")) << width;
        EXPECT_EQ(result.position, file.size());
    }
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, FloatsUseSixSignificantDigitsAndSingleBlanks)
{
    EXPECT_EQ(readOne(floats({1, 0, 0})).text(), QStringLiteral("1 0 0"));
    EXPECT_EQ(readOne(floats({0.1f, -2.5f, 1234567.0f})).text(),
              QStringLiteral("0.1 -2.5 1.23457e+06"));
    EXPECT_EQ(readOne(floats({-0.000001f})).text(), QStringLiteral("0"));
    EXPECT_EQ(readOne(floats({-0.0000011f})).text(), QStringLiteral("-1.1e-06"));
    EXPECT_EQ(readOne(floats({0.000001f})).text(), QStringLiteral("1e-06"));
    EXPECT_EQ(readOne(floats({})).text(), QString());
    // The remainder of the length beyond whole floats stays unread.
    Value ragged = floats({2.0f});
    ragged.bytes += "\xAA\xBB";
    EXPECT_EQ(readOne(ragged).text(), QStringLiteral("2"));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, TwelveFloatsBecomeFourRowsAndOtherCountsStayText)
{
    QList<float> numbers;
    for (int i = 1; i <= 13; ++i)
        numbers.append(float(i) / 2);

    const QDomElement matrix = readOne(floats(numbers.mid(0, 12)));
    EXPECT_EQ(childTags(matrix), (QStringList{"row0", "row1", "row2", "row3"}));
    EXPECT_EQ(childText(matrix, "row0"), QStringLiteral("0.5 1 1.5"));
    EXPECT_EQ(childText(matrix, "row3"), QStringLiteral("5 5.5 6"));
    // No text node of its own: the rows are all there is.
    EXPECT_EQ(matrix.childNodes().size(), 4);
    EXPECT_TRUE(matrix.firstChild().isElement());

    for (int count : {11, 13}) {
        const QDomElement text = readOne(floats(numbers.mid(0, count)));
        EXPECT_TRUE(childTags(text).isEmpty()) << count;
        EXPECT_EQ(text.text().split(QLatin1Char(' ')).size(), count);
    }

    // Seam with the helpers: a transform read from the file is the matrix.
    const Matrix m = parseTransform(matrix);
    EXPECT_EQ(m[0], 0.5f);
    EXPECT_EQ(m[6], 3.0f);
    EXPECT_EQ(m[12], -5.0f);
    EXPECT_EQ(m[14], 6.0f);
    EXPECT_EQ(m[15], 1.0f);
}

TEST_F(PackedXmlReaderTest, BooleansReadTrueForOneByteAndFalseForNone)
{
    EXPECT_EQ(readOne(boolean(QByteArray(1, '\x01'))).text(), QStringLiteral("true"));
    EXPECT_EQ(readOne(boolean(QByteArray())).text(), QStringLiteral("false"));
    EXPECT_TRUE(boxes.boxes.isEmpty());

    // A byte other than 1 shows the box, reads "true", and the read goes on.
    const QByteArray file =
        packed({"flag", "next"},
               Element().add(0, boolean(QByteArray(1, '\x02'))).add(1, string("still read")));
    const ReadResult result = readDocument(file);
    EXPECT_EQ(childText(root(result), "flag"), QStringLiteral("true"));
    EXPECT_EQ(childText(root(result), "next"), QStringLiteral("still read"));
    expectOneBox(QStringLiteral("Boolean error"));
}

TEST_F(PackedXmlReaderTest, BlobsAreBase64WithPadding)
{
    EXPECT_EQ(readOne(blob("\xFB")).text(), QStringLiteral("+w=="));
    EXPECT_EQ(readOne(blob("\xFB\xFF")).text(), QStringLiteral("+/8="));
    EXPECT_EQ(readOne(blob(QByteArray("\xFB\xFF\x00", 3))).text(), QStringLiteral("+/8A"));
    EXPECT_EQ(readOne(blob("")).text(), QString());
}

TEST_F(PackedXmlReaderTest, NameTablesOfOneNameAndOfNone)
{
    const ReadResult one =
        readDocument(packed({"only"}, Element().add(0, string("1")).add(0, string("2"))));
    EXPECT_EQ(childTags(root(one)), (QStringList{"only", "only"}));
    EXPECT_EQ(root(one).lastChildElement().text(), QStringLiteral("2"));

    const ReadResult none = readDocument(packed({}, Element()));
    EXPECT_EQ(root(none).tagName(), QStringLiteral("x.xml"));
    EXPECT_TRUE(childTags(root(none)).isEmpty());
    // Names as long as or longer than the look-ahead of the name scan.
    const QByteArray long64(64, 'q');
    const QByteArray long200(200, 'r');
    const ReadResult longNames =
        readDocument(packed({long64, long200}, Element().add(1, string("r")).add(0, string("q"))));
    EXPECT_EQ(childTags(root(longNames)),
              (QStringList{QString::fromLatin1(long200), QString::fromLatin1(long64)}));
    EXPECT_EQ(root(longNames).lastChildElement().text(), QStringLiteral("q"));

    // Tags stand as the table has them, even ones XML itself would refuse.
    const ReadResult odd = readDocument(packed({"1st item"}, Element().add(0, string("v"))));
    EXPECT_EQ(childTags(root(odd)), QStringList{"1st item"});
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, PlainTextIsSimplifiedBeforeParsing)
{
    const QByteArray text = "<?xml version=\"1.0\"?>\n<root>\n  <name>first\r\n   second</name>\n"
                            "  <n>\xC3\xA9</n>\n</root>\n";
    const ReadResult result = readDocument(text, QStringLiteral("ignored.model"));
    EXPECT_TRUE(result.plainText);
    EXPECT_EQ(root(result).tagName(), QStringLiteral("root"));
    EXPECT_EQ(childText(root(result), "name"), QStringLiteral("first second"));
    EXPECT_EQ(childText(root(result), "n"), QString(QChar(0xE9)));
    // No own-value text node in a plain document: blanks between tags are gone.
    EXPECT_TRUE(root(result).firstChild().isElement());

    // The shortest document there is, exactly as long as the magic.
    EXPECT_EQ(root(readDocument("<a/>")).tagName(), QStringLiteral("a"));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, PlainTextThatDoesNotParseGivesAnEmptyDocumentQuietly)
{
    const ReadResult result = readDocument("<root><open></root>");
    EXPECT_TRUE(result.plainText);
    EXPECT_TRUE(result.document.documentElement().isNull());
    EXPECT_TRUE(readDocument("not xml at all").document.documentElement().isNull());
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(PackedXmlReaderTest, FilesShorterThanTheMagicShowTheReadIntBox)
{
    const ReadResult empty = readDocument(QByteArray());
    EXPECT_TRUE(empty.document.documentElement().isNull());
    expectOneBox(QStringLiteral("Error reading data: readInt()"));
}

TEST_F(PackedXmlReaderTest, EveryTruncationGivesExactlyOneBoxAndAPartialDocument)
{
    const QByteArray file = richFile();
    const ReadResult full = readDocument(file);
    ASSERT_TRUE(boxes.boxes.isEmpty()) << firstBoxText(boxes).toStdString();
    const int fullElements = elementCount(full.document);
    ASSERT_GT(fullElements, 15);
    EXPECT_EQ(root(full).firstChild().nodeValue(), QStringLiteral("3"));
    const QString fullText = full.document.toString();

    for (int length = 0; length < file.size(); ++length) {
        boxes.boxes.clear();
        const ReadResult cut = readDocument(file.left(length));
        ASSERT_EQ(boxes.boxes.size(), 1) << "cut at " << length;
        EXPECT_TRUE(boxes.boxes.first().text.startsWith(QLatin1String("Error reading data: ")))
            << length << ": " << firstBoxText(boxes).toStdString();
        EXPECT_FALSE(cut.plainText) << length;
        EXPECT_LE(elementCount(cut.document), fullElements) << length;
        EXPECT_NE(cut.document.toString(), fullText) << length;
    }
}

TEST_F(PackedXmlReaderTest, NameTableFaultsStopBeforeAnyDocument)
{
    const QByteArray magic = le32(PackedXmlReader::Magic);
    ReadResult result = readDocument(magic);
    EXPECT_TRUE(result.document.isNull());
    expectOneBox(QStringLiteral("Error reading data: peek"));

    // A name that never ends: the scan stops at the end of the data.
    boxes.boxes.clear();
    result = readDocument(magic + "\0" + QByteArray(1000, 'n'));
    EXPECT_TRUE(result.document.documentElement().isNull());
    expectOneBox(QStringLiteral("Error reading data: peek"));
}

TEST_F(PackedXmlReaderTest, HugeChildCountsFailFastOnTheData)
{
    QByteArray file = packed({"a"}, Element());
    // The root's record: a count of 32767 and ten bytes behind it.
    file.chop(6);
    file += le16(32767) + le32(descriptor(1, 0)) + QByteArray(10, '\0');
    QElapsedTimer timer;
    timer.start();
    const ReadResult result = readDocument(file);
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(root(result).tagName(), QStringLiteral("x.xml"));
    EXPECT_TRUE(childTags(root(result)).isEmpty());
    // One whole entry fits; the second's descriptor comes up short.
    expectOneBox(QStringLiteral("Error reading data: readInt()"));
}

TEST_F(PackedXmlReaderTest, ValueLengthsBeyondTheDataFailWithoutReading)
{
    struct Case
    {
        int type;
        const char* message;
    } cases[] = {{1, "Error reading data: readChar()"},
                 {2, "Error reading data: readInt()"},
                 {3, "Error reading data: readFloat()"},
                 {5, "Error reading data: readCharSigned()"}};
    for (const Case& c : cases) {
        boxes.boxes.clear();
        Value value{c.type, "abcd"};
        value.forcedEnd = 0x0FFFFFFF;
        const QDomElement element = readOne(value);
        EXPECT_FALSE(root(lastRead).isNull());
        expectOneBox(QLatin1String(c.message));
        EXPECT_EQ(element.text(), QString()) << c.type;
    }
}

TEST_F(PackedXmlReaderTest, NegativeLengthsAndUnknownTypesStopTheRead)
{
    Element descending;
    Value first = string("abcd");
    Value second = string("");
    second.forcedEnd = 2;
    descending.add(0, first).add(1, second).add(0, string("never"));
    ReadResult result = readDocument(packed({"a", "b"}, descending));
    EXPECT_EQ(childText(root(result), "a"), QStringLiteral("abcd"));
    EXPECT_EQ(childTags(root(result)), (QStringList{"a", "b"}));
    expectOneBox(QStringLiteral("Error reading data: negative value length"));

    // Types 6 and 7 are unknown; 8 to 15 are negative and unknown too.
    for (int type : {6, 7, 8, 15}) {
        boxes.boxes.clear();
        result = readDocument(
            packed({"a"}, Element().add(0, Value{type, "zz"}).add(0, string("never"))));
        EXPECT_EQ(childTags(root(result)), QStringList{"a"}) << type;
        expectOneBox(QStringLiteral("Unknown xml data type"));
    }
}

TEST_F(PackedXmlReaderTest, NameIndexOutsideTheTableStopsWithAWarning)
{
    for (int index : {2, -1}) {
        boxes.boxes.clear();
        log.lines.clear();
        const ReadResult result = readDocument(
            packed({"a", "b"}, Element().add(1, string("kept")).add(index, string("x"))));
        EXPECT_EQ(childTags(root(result)), QStringList{"b"}) << index;
        EXPECT_EQ(childText(root(result), "b"), QStringLiteral("kept"));
        expectOneBox(QStringLiteral("Error reading data: name index out of range"));
        ASSERT_EQ(log.lines.size(), 1);
        EXPECT_TRUE(log.lines.first().startsWith(QLatin1String("[Warning] "))) << index;
    }
}

TEST_F(PackedXmlReaderTest, NestingIsBoundedAtMaxDepth)
{
    auto chain = [](int levels) {
        Element element;
        element.add(0, string("leaf"));
        for (int i = 0; i < levels; ++i) {
            Element outer;
            outer.add(0, nested(element));
            element = outer;
        }
        return packed({"e"}, element);
    };

    // The root's record is level 0; each element child adds one.
    ReadResult result = readDocument(chain(PackedXmlReader::MaxDepth));
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_EQ(result.document.elementsByTagName("e").size(), PackedXmlReader::MaxDepth + 1);

    result = readDocument(chain(PackedXmlReader::MaxDepth + 1));
    expectOneBox(QStringLiteral("Error reading data: nesting too deep"));
    EXPECT_EQ(root(result).tagName(), QStringLiteral("x.xml"));
    EXPECT_EQ(log.lines.size(), 1);

    // Own values that nest in place count as well, though they add no node.
    boxes.boxes.clear();
    QByteArray selfNested = packed({}, Element());
    selfNested.chop(6);
    for (int i = 0; i < 10000; ++i)
        selfNested += le16(0) + le32(descriptor(0, 0));
    readDocument(selfNested);
    expectOneBox(QStringLiteral("Error reading data: nesting too deep"));
}
