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

// The low bytes of value, least significant first.
QByteArray le(qint64 value, int width)
{
    char bytes[8];
    qToLittleEndian<qint64>(value, bytes);
    return QByteArray(bytes, width);
}

QByteArray entry(int type, int end)
{
    return le((quint32(type) << 28) | (quint32(end) & 0x0FFFFFFFu), 4);
}

QByteArray record(const Element& element)
{
    QByteArray entries;
    QByteArray data = element.own.bytes;
    const int ownEnd = element.own.forcedEnd >= 0 ? element.own.forcedEnd : int(data.size());
    for (const auto& [nameIndex, value] : element.children) {
        data += value.bytes;
        const int end = value.forcedEnd >= 0 ? value.forcedEnd : int(data.size());
        entries += le(nameIndex, 2) + entry(value.type, end);
    }
    return le(element.children.size(), 2) + entry(element.own.type, ownEnd) + entries + data;
}

QByteArray packed(const QList<QByteArray>& names, const Element& root)
{
    QByteArray file = le(PackedXmlReader::Magic, 4) + QByteArray(1, '\x7f');
    for (const QByteArray& name : names)
        file += name + QByteArray(1, '\0');
    return file + QByteArray(1, '\0') + record(root);
}

Value nested(const Element& element)
{
    return {0, record(element)};
}

Value floats(const QList<float>& numbers)
{
    QByteArray bytes;
    for (float number : numbers) {
        quint32 bits;
        std::memcpy(&bits, &number, 4);
        bytes += le(bits, 4);
    }
    return {3, bytes};
}

// One reader for one document, as the program uses them.
struct ReadResult
{
    QDomDocument document;
    bool plainText = false;
    qint64 position = 0;

    QDomElement root() const { return document.documentElement(); }
};

ReadResult readDocument(const QByteArray& bytes, const QString& fileName = "x.xml")
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

QStringList childTags(const QDomNode& node)
{
    QStringList tags;
    for (QDomElement child = node.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        tags.append(child.tagName());
    return tags;
}

// Every child node: text nodes as 'text', elements as tag=text.
QStringList childNodes(const QDomNode& node)
{
    QStringList described;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling())
        described.append(child.isText() ? "'" + child.nodeValue() + "'"
                                        : child.nodeName() + "=" + child.toElement().text());
    return described;
}

int elementCount(const QDomNode& node)
{
    int count = node.isElement() ? 1 : 0;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling())
        count += elementCount(child);
    return count;
}

class PackedXmlReaderTest : public testing::Test
{
protected:
    static Value string(const QByteArray& text) { return {1, text}; }
    static Value integer(qint64 number, int width) { return {2, le(number, width)}; }
    static Value boolean(const QByteArray& bytes) { return {4, bytes}; }
    static Value blob(const QByteArray& bytes) { return {5, bytes}; }

    // Reads a root whose only child "v" holds value.
    QDomElement readOne(const Value& value)
    {
        lastRead = readDocument(packed({"v"}, Element().add(0, value)));
        return lastRead.root().firstChildElement("v");
    }

    QStringList readTexts(const QList<Value>& values)
    {
        QStringList texts;
        for (const Value& value : values)
            texts.append(readOne(value).text());
        return texts;
    }

    QString firstBoxText() const { return boxes.boxes.value(0).text; }

    // A closing box was shown, and only one, with this text first; the
    // recorder is emptied for the next read.
    void expectOneBox(const QString& message)
    {
        ASSERT_EQ(boxes.boxes.size(), 1) << message.toStdString();
        EXPECT_EQ(boxes.boxes.first().icon, QMessageBox::Critical);
        EXPECT_TRUE(firstBoxText().startsWith(message + '\n')) << firstBoxText().toStdString();
        boxes.boxes.clear();
    }

    // A document with every kind of value, nested elements, a matrix and a
    // non-empty value at the very end, so that each byte of it is needed.
    static QByteArray richFile()
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

    MessageBoxRecorder boxes;
    LogCapture log;
    ReadResult lastRead;
};

} // namespace

TEST_F(PackedXmlReaderTest, ReadsTheWorkedByteExample)
{
    const QByteArray bytes =
        QByteArray::fromHex("454ea162 00 6100 00 0100 00000010 0000 01000020 05");
    // The test encoder lays the same file out byte for byte (but for the
    // byte after the magic, which nobody reads).
    QByteArray encoded = packed({"a"}, Element().add(0, integer(5, 1)));
    encoded[4] = '\0';
    EXPECT_EQ(encoded.toHex(), bytes.toHex());

    const ReadResult result = readDocument(bytes);
    EXPECT_FALSE(result.plainText);
    EXPECT_EQ(result.root().tagName(), "x.xml");
    EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "a=5"}));
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
    EXPECT_EQ(reader.read("x.xml").documentElement().text(), "5");
}

TEST_F(PackedXmlReaderTest, RootTagIsTheLastPathComponentWithModelBecomingVisual)
{
    // Every ".model" is replaced, not only a suffix; folders never count.
    const std::pair<const char*, const char*> cases[] = {
        {"a/b/Hull.model", "Hull.visual"},
        {"Hull.visual", "Hull.visual"},
        {"vehicles/list.xml", "list.xml"},
        {"x.model/a.model.model", "a.visual.visual"}};
    for (const auto& [path, tag] : cases)
        EXPECT_EQ(readDocument(packed({}, Element()), path).root().tagName(), tag) << path;
}

TEST_F(PackedXmlReaderTest, OwnValuesComeFirstAndNestedOwnValuesMergeIntoTheNode)
{
    // Empty own values still give their text node, so the first element of
    // a packed element sits at index 1.
    Element inner;
    inner.add(0, string("deep"));
    Element top;
    top.own = string("own text");
    top.add(0, string("")).add(1, nested(inner));
    ReadResult result = readDocument(packed({"a", "b"}, top));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"'own text'", "a=", "b=deep"}));
    EXPECT_EQ(childNodes(result.root().firstChildElement("a")), QStringList{"''"});
    EXPECT_EQ(childNodes(result.root().firstChildElement("b")), (QStringList{"''", "a=deep"}));

    // A type 0 own value is read in place: its own value and children go to
    // the same node, after nothing of its own.
    Element merged;
    merged.own = string("m");
    merged.add(1, integer(9, 1));
    top = Element();
    top.own = nested(merged);
    top.add(0, string("after"));
    result = readDocument(packed({"a", "b"}, top));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"'m'", "b=9", "a=after"}));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, ValuesReadAsTextByTheirType)
{
    // Strings take one character per byte: UTF-8 "é" stays two.
    EXPECT_EQ(
        readTexts({string("plain"), string("\xC3\xA9"), string(QByteArray("a\0b", 3)), string("")}),
        (QStringList{"plain", QString::fromLatin1("\xC3\xA9"), QString::fromLatin1("a\0b", 3),
                     ""}));
    // Integers are signed by their length.
    EXPECT_EQ(readTexts({integer(-1, 1), integer(127, 1), integer(-300, 2), integer(32767, 2),
                         integer(-2147483647 - 1, 4), integer(123456789, 4), integer(0, 0)}),
              (QStringList{"-1", "127", "-300", "32767", "-2147483648", "123456789", "0"}));
    // Floats have six significant digits and single blanks; the remainder of
    // the length beyond whole floats stays unread.
    Value ragged = floats({2.0f});
    ragged.bytes += "\xAA\xBB";
    EXPECT_EQ(readTexts({floats({1, 0, 0}), floats({0.1f, -2.5f, 1234567.0f}), floats({-0.000001f}),
                         floats({-0.0000011f}), floats({0.000001f}), floats({}), ragged}),
              (QStringList{"1 0 0", "0.1 -2.5 1.23457e+06", "0", "-1.1e-06", "1e-06", "", "2"}));
    EXPECT_EQ(readTexts({boolean(QByteArray(1, '\x01')), boolean(QByteArray())}),
              (QStringList{"true", "false"}));
    // Blobs are Base64 with padding.
    EXPECT_EQ(
        readTexts({blob("\xFB"), blob("\xFB\xFF"), blob(QByteArray("\xFB\xFF\x00", 3)), blob("")}),
        (QStringList{"+w==", "+/8=", "+/8A", ""}));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, IntegersOfOtherLengthsReadZeroAndKeepTheStreamInStep)
{
    for (int width : {3, 8}) {
        const QByteArray file =
            packed({"wide", "next"},
                   Element().add(0, integer(0x0102030405060708, width)).add(1, integer(42, 2)));
        const ReadResult result = readDocument(file);
        // The value after it comes from its own bytes.
        EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "wide=0", "next=42"})) << width;
        EXPECT_EQ(result.position, file.size());
    }
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, TwelveFloatsBecomeFourRowsAndOtherCountsStayText)
{
    QList<float> numbers;
    for (int i = 1; i <= 13; ++i)
        numbers.append(float(i) / 2);

    // No text node of its own: the rows are all there is.
    const QDomElement matrix = readOne(floats(numbers.mid(0, 12)));
    EXPECT_EQ(childNodes(matrix),
              (QStringList{"row0=0.5 1 1.5", "row1=2 2.5 3", "row2=3.5 4 4.5", "row3=5 5.5 6"}));
    for (int count : {11, 13}) {
        const QDomElement text = readOne(floats(numbers.mid(0, count)));
        EXPECT_TRUE(childTags(text).isEmpty()) << count;
        EXPECT_EQ(text.text().split(' ').size(), count);
    }

    // Seam with the helpers: a transform read from the file is the matrix.
    EXPECT_EQ(parseTransform(matrix),
              (Matrix{0.5f, 1, 1.5f, 0, 2, 2.5f, 3, 0, 3.5f, 4, 4.5f, 0, -5, 5.5f, 6, 1}));
}

TEST_F(PackedXmlReaderTest, BooleanByteOtherThanOneShowsTheBoxAndReadsOn)
{
    const ReadResult result = readDocument(
        packed({"flag", "next"},
               Element().add(0, boolean(QByteArray(1, '\x02'))).add(1, string("still read"))));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "flag=true", "next=still read"}));
    expectOneBox("Boolean error");
}

TEST_F(PackedXmlReaderTest, NameTablesOfOneNameOfNoneAndOfLongOrOddNames)
{
    ReadResult result =
        readDocument(packed({"only"}, Element().add(0, string("1")).add(0, string("2"))));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "only=1", "only=2"}));
    result = readDocument(packed({}, Element()));
    EXPECT_EQ(result.root().tagName(), "x.xml");
    EXPECT_TRUE(childTags(result.root()).isEmpty());

    // Names as long as or longer than the look-ahead of the name scan.
    const QByteArray long64(64, 'q');
    const QByteArray long200(200, 'r');
    result =
        readDocument(packed({long64, long200}, Element().add(1, string("r")).add(0, string("q"))));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"''", long200 + "=r", long64 + "=q"}));

    // Tags stand as the table has them, even ones XML itself would refuse.
    result = readDocument(packed({"1st item"}, Element().add(0, string("v"))));
    EXPECT_EQ(childTags(result.root()), QStringList{"1st item"});
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(PackedXmlReaderTest, PlainTextIsSimplifiedBeforeParsingOrGivesAnEmptyDocumentQuietly)
{
    const QByteArray text = "<?xml version=\"1.0\"?>\n<root>\n  <name>first\r\n   second</name>\n"
                            "  <n>\xC3\xA9</n>\n</root>\n";
    ReadResult result = readDocument(text, "ignored.model");
    EXPECT_TRUE(result.plainText);
    EXPECT_EQ(result.root().tagName(), "root");
    // No own-value text node in a plain document: blanks between tags are gone.
    EXPECT_EQ(childNodes(result.root()), (QStringList{"name=first second", "n=\u00e9"}));

    // The shortest document there is, exactly as long as the magic.
    EXPECT_EQ(readDocument("<a/>").root().tagName(), "a");

    result = readDocument("<root><open></root>");
    EXPECT_TRUE(result.plainText);
    EXPECT_TRUE(result.root().isNull());
    EXPECT_TRUE(readDocument("not xml at all").root().isNull());
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(PackedXmlReaderTest, FaultsBeforeTheRootGiveNoDocument)
{
    const QByteArray magic = le(PackedXmlReader::Magic, 4);
    // Shorter than the magic; a name table cut off; a name that never ends,
    // whose scan stops at the end of the data.
    const std::pair<QByteArray, const char*> cases[] = {
        {QByteArray(), "Error reading data: readInt()"},
        {magic, "Error reading data: peek"},
        {magic + '\0' + QByteArray(1000, 'n'), "Error reading data: peek"}};
    for (const auto& [bytes, message] : cases) {
        SCOPED_TRACE(bytes.size());
        EXPECT_TRUE(readDocument(bytes).root().isNull());
        expectOneBox(message);
    }
}

TEST_F(PackedXmlReaderTest, EveryTruncationGivesExactlyOneBoxAndAPartialDocument)
{
    const QByteArray file = richFile();
    const ReadResult full = readDocument(file);
    ASSERT_TRUE(boxes.boxes.isEmpty()) << firstBoxText().toStdString();
    const int fullElements = elementCount(full.document);
    ASSERT_GT(fullElements, 15);
    EXPECT_EQ(full.root().firstChild().nodeValue(), "3");
    const QString fullText = full.document.toString();

    for (int length = 0; length < file.size(); ++length) {
        boxes.boxes.clear();
        const ReadResult cut = readDocument(file.left(length));
        ASSERT_EQ(boxes.boxes.size(), 1) << "cut at " << length;
        EXPECT_TRUE(firstBoxText().startsWith("Error reading data: "))
            << length << ": " << firstBoxText().toStdString();
        EXPECT_FALSE(cut.plainText) << length;
        EXPECT_LE(elementCount(cut.document), fullElements) << length;
        EXPECT_NE(cut.document.toString(), fullText) << length;
    }
}

TEST_F(PackedXmlReaderTest, HugeChildCountsFailFastOnTheData)
{
    QByteArray file = packed({"a"}, Element());
    // The root's record: a count of 32767 and ten bytes behind it.
    file.chop(6);
    file += le(32767, 2) + entry(1, 0) + QByteArray(10, '\0');
    QElapsedTimer timer;
    timer.start();
    const ReadResult result = readDocument(file);
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(result.root().tagName(), "x.xml");
    EXPECT_TRUE(childTags(result.root()).isEmpty());
    // One whole entry fits; the second's descriptor comes up short.
    expectOneBox("Error reading data: readInt()");
}

TEST_F(PackedXmlReaderTest, ValueLengthsBeyondTheDataFailWithoutReading)
{
    const std::pair<int, const char*> cases[] = {{1, "Error reading data: readChar()"},
                                                 {2, "Error reading data: readInt()"},
                                                 {3, "Error reading data: readFloat()"},
                                                 {5, "Error reading data: readCharSigned()"}};
    for (const auto& [type, message] : cases) {
        SCOPED_TRACE(type);
        Value value{type, "abcd"};
        value.forcedEnd = 0x0FFFFFFF;
        EXPECT_EQ(readOne(value).text(), QString());
        EXPECT_FALSE(lastRead.root().isNull());
        expectOneBox(message);
    }
}

TEST_F(PackedXmlReaderTest, NegativeLengthsAndUnknownTypesStopTheRead)
{
    Value second = string("");
    second.forcedEnd = 2;
    ReadResult result = readDocument(packed(
        {"a", "b"}, Element().add(0, string("abcd")).add(1, second).add(0, string("never"))));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "a=abcd", "b="}));
    expectOneBox("Error reading data: negative value length");

    // Types 6 and 7 are unknown; 8 to 15 are negative and unknown too.
    for (int type : {6, 7, 8, 15}) {
        SCOPED_TRACE(type);
        result = readDocument(
            packed({"a"}, Element().add(0, Value{type, "zz"}).add(0, string("never"))));
        EXPECT_EQ(childTags(result.root()), QStringList{"a"});
        expectOneBox("Unknown xml data type");
    }
}

TEST_F(PackedXmlReaderTest, NameIndexOutsideTheTableStopsWithAWarning)
{
    for (int index : {2, -1}) {
        SCOPED_TRACE(index);
        log.lines.clear();
        const ReadResult result = readDocument(
            packed({"a", "b"}, Element().add(1, string("kept")).add(index, string("x"))));
        EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "b=kept"}));
        expectOneBox("Error reading data: name index out of range");
        ASSERT_EQ(log.lines.size(), 1);
        EXPECT_TRUE(log.lines.first().startsWith("[Warning] "));
    }
}

TEST_F(PackedXmlReaderTest, NestingIsBoundedAtMaxDepth)
{
    auto chain = [](int levels) {
        Element element;
        element.add(0, string("leaf"));
        for (int i = 0; i < levels; ++i)
            element = Element().add(0, nested(element));
        return packed({"e"}, element);
    };

    // The root's record is level 0; each element child adds one.
    ReadResult result = readDocument(chain(PackedXmlReader::MaxDepth));
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_EQ(result.document.elementsByTagName("e").size(), PackedXmlReader::MaxDepth + 1);

    result = readDocument(chain(PackedXmlReader::MaxDepth + 1));
    expectOneBox("Error reading data: nesting too deep");
    EXPECT_EQ(result.root().tagName(), "x.xml");
    EXPECT_EQ(log.lines.size(), 1);

    // Own values that nest in place count as well, though they add no node.
    QByteArray selfNested = packed({}, Element());
    selfNested.chop(6);
    for (int i = 0; i < 10000; ++i)
        selfNested += le(0, 2) + entry(0, 0);
    readDocument(selfNested);
    expectOneBox("Error reading data: nesting too deep");
}
