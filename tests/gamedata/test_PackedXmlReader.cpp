#include "BinaryReader.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "PackedXmlReader.h"
#include "QtPrinters.h"
#include "ReadFailure.h"

#include <QBuffer>
#include <QDomDocument>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <limits>
#include <tuple>

namespace {
// A writer of the packed form, independent of the reader: values are typed
// byte strings, an element is its own value plus named children, and the
// descriptors' end offsets are summed up as the data block is laid out.
struct Value
{
    int type = 1;
    QByteArray bytes;
    int forcedEnd = -1; // when set, written as the descriptor's end
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

const auto nested = [](const Element& element) { return Value{0, record(element)}; };
const auto string = [](const QByteArray& text) { return Value{1, text}; };
const auto integer = [](qint64 number, int width) { return Value{2, le(number, width)}; };
const auto boolean = [](const QByteArray& bytes) { return Value{4, bytes}; };
const auto blob = [](const QByteArray& bytes) { return Value{5, bytes}; };

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

struct ReadResult
{
    QDomDocument document;
    QString failure; // the failure handed back, empty when none
    bool plainText = false;
    qint64 position = 0;

    QDomElement root() const { return document.documentElement(); }
};

// Reads the bytes twice, as the tool does (the failure handed back) and as
// the program does (the closing box), and holds the two to the same
// document and to one box with the failure's text, or none.
ReadResult readDocument(const QByteArray& bytes, const QString& fileName = "x.xml")
{
    ReadResult result;
    for (bool handedBack : {true, false}) {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        BinaryReader binary(&buffer);
        PackedXmlReader reader(&binary);
        MessageBoxRecorder boxes;
        if (handedBack) {
            ReadFailure failure;
            result.document = reader.read(fileName, failure);
            result.failure = failure.message();
            EXPECT_TRUE(boxes.boxes.isEmpty());
        } else {
            EXPECT_EQ(reader.read(fileName).toString(), result.document.toString());
            QStringList texts;
            for (const MessageBoxRequest& box : boxes.boxes)
                texts.append(box.text);
            EXPECT_EQ(texts, result.failure.isEmpty()
                                 ? QStringList()
                                 : QStringList{result.failure + "\nApplication will now close."});
        }
        result.plainText = reader.plainText;
        result.position = buffer.pos();
    }
    return result;
}

// The child "v" of a root that holds value alone.
QDomElement readOne(const Value& value)
{
    const ReadResult result = readDocument(packed({"v"}, Element().add(0, value)));
    EXPECT_TRUE(result.failure.isEmpty()) << result.failure.toStdString();
    return result.root().firstChildElement("v");
}

QStringList readTexts(const QList<Value>& values)
{
    QStringList texts;
    for (const Value& value : values)
        texts.append(readOne(value).text());
    return texts;
}
} // namespace

TEST(PackedXmlReaderTest, ReadsTheWorkedByteExampleFromByteZero)
{
    const QByteArray bytes =
        QByteArray::fromHex("454ea162 00 6100 00 0100 00000010 0000 01000020 05");
    const ReadResult result = readDocument(bytes);
    EXPECT_FALSE(result.plainText);
    EXPECT_EQ(result.root().tagName(), "x.xml");
    EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "a=5"}));
    EXPECT_EQ(result.position, bytes.size());
    EXPECT_EQ(result.document.childNodes().size(), 1); // no processing instruction

    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    buffer.seek(7);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    EXPECT_EQ(reader.read("x.xml").documentElement().text(), "5");
}

TEST(PackedXmlReaderTest, DocumentStructureNamesAndRootTag)
{
    EXPECT_EQ(childNodes(readDocument(packed({}, Element())).root()), QStringList{"''"});
    // Names longer than the look-ahead of the name scan; a tag XML would refuse.
    const QByteArray long200(200, 'r');
    EXPECT_EQ(childNodes(readDocument(packed({long200, "1st item"},
                                             Element().add(0, string("r")).add(1, string("v"))))
                             .root()),
              (QStringList{"''", long200 + "=r", "1st item=v"}));

    const std::pair<const char*, const char*> cases[] = {
        {"a/b/Hull.model", "Hull.visual"},
        {"Hull.visual", "Hull.visual"},
        {"vehicles/list.xml", "list.xml"},
        {"x.model/a.model.model", "a.visual.visual"}};
    for (const auto& [path, tag] : cases)
        EXPECT_EQ(readDocument(packed({}, Element()), path).root().tagName(), tag) << path;

    // Own values come first, even empty; a type 0 own value is read in place.
    Element inner;
    inner.add(0, string("deep"));
    Element top;
    top.own = string("own text");
    top.add(0, string("")).add(1, nested(inner));
    ReadResult result = readDocument(packed({"a", "b"}, top));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"'own text'", "a=", "b=deep"}));
    EXPECT_EQ(childNodes(result.root().firstChildElement("a")), QStringList{"''"});
    EXPECT_EQ(childNodes(result.root().firstChildElement("b")), (QStringList{"''", "a=deep"}));

    Element merged;
    merged.own = string("m");
    merged.add(1, integer(9, 1));
    top = Element();
    top.own = nested(merged);
    top.add(0, string("after"));
    result = readDocument(packed({"a", "b"}, top));
    EXPECT_EQ(childNodes(result.root()), (QStringList{"'m'", "b=9", "a=after"}));
}

TEST(PackedXmlReaderTest, ValuesReadAsTextByTheirType)
{
    EXPECT_EQ(
        readTexts({string("plain"), string("\xC3\xA9"), string(QByteArray("a\0b", 3)), string("")}),
        (QStringList{"plain", QString::fromLatin1("\xC3\xA9"), QString::fromLatin1("a\0b", 3),
                     ""}));
    EXPECT_EQ(readTexts({integer(-1, 1), integer(127, 1), integer(-300, 2), integer(32767, 2),
                         integer(-2147483647 - 1, 4), integer(123456789, 4), integer(0, 0)}),
              (QStringList{"-1", "127", "-300", "32767", "-2147483648", "123456789", "0"}));
    Value ragged = floats({2.0f});
    ragged.bytes += "\xAA\xBB";
    EXPECT_EQ(readTexts({floats({1, 0, 0}), floats({0.1f, -2.5f, 1234567.0f}), floats({-0.000001f}),
                         floats({-0.0000011f}), floats({0.000001f}), floats({}), ragged}),
              (QStringList{"1 0 0", "0.1 -2.5 1.23457e+06", "0", "-1.1e-06", "1e-06", "", "2"}));
    EXPECT_EQ(readTexts({boolean(QByteArray(1, '\x01')), boolean(QByteArray())}),
              (QStringList{"true", "false"}));
    EXPECT_EQ(
        readTexts({blob("\xFB"), blob("\xFB\xFF"), blob(QByteArray("\xFB\xFF\x00", 3)), blob("")}),
        (QStringList{"+w==", "+/8=", "+/8A", ""}));

    // Eight-byte integers give their value; other lengths read "0"; the
    // value after either stays in step.
    const std::pair<qint64, int> wide[] = {{0x0102030405060708, 3},
                                           {0x0102030405060708, 8},
                                           {-0x0102030405060708, 8},
                                           {std::numeric_limits<qint64>::min(), 8}};
    const QString wideTexts[] = {"0", "72623859790382856", "-72623859790382856",
                                 "-9223372036854775808"};
    for (size_t i = 0; i < std::size(wide); ++i) {
        const auto [value, width] = wide[i];
        const QByteArray file = packed(
            {"wide", "next"}, Element().add(0, integer(value, width)).add(1, integer(42, 2)));
        const ReadResult result = readDocument(file);
        EXPECT_EQ(childNodes(result.root()), (QStringList{"''", "wide=" + wideTexts[i], "next=42"}))
            << width;
        EXPECT_EQ(result.position, file.size());
    }
}

TEST(PackedXmlReaderTest, TwelveFloatsBecomeFourRowsAndOtherCountsStayText)
{
    QList<float> numbers;
    for (int i = 1; i <= 13; ++i)
        numbers.append(float(i) / 2);
    const QDomElement matrix = readOne(floats(numbers.mid(0, 12)));
    EXPECT_EQ(childNodes(matrix),
              (QStringList{"row0=0.5 1 1.5", "row1=2 2.5 3", "row2=3.5 4 4.5", "row3=5 5.5 6"}));
    for (int count : {11, 13})
        EXPECT_EQ(childNodes(readOne(floats(numbers.mid(0, count)))).size(), 1) << count;
}

// Numbers read as QString::number(v, 'g', 6) writes them, "-1e-06" as "0":
// ties, values that round up to a new digit, the edges of the exponent form,
// zeros, infinities, NaN, denormals, and a stride through all bit patterns.
TEST(PackedXmlReaderTest, FloatsReadAsQtWritesThemWithSixDigits)
{
    QList<float> numbers = {
        1234565, 1234.125f,     123456.5f,      1048576.5f,     999999.5f, 99999.95f,     1e-4f,
        1e-5f,   1e24f,         1e-24f,         -0.0f,          0,         1e-45f,        FLT_MIN,
        FLT_MAX, float(qInf()), -float(qInf()), float(qQNaN()), -1e-6f,    -1.0000001e-6f};
    for (quint32 i = 0; i < 20000; ++i) {
        const quint32 bits = i * 0x9E3779B1u;
        numbers.append(0);
        std::memcpy(&numbers.last(), &bits, 4);
    }
    QStringList expected;
    for (float number : numbers) {
        const QString text = QString::number(double(number), 'g', 6);
        expected.append(text == "-1e-06" ? "0" : text);
    }
    EXPECT_EQ(readOne(floats(numbers)).text().split(' '), expected);
}

TEST(PackedXmlReaderTest, PlainTextIsSimplifiedBeforeParsingOrGivesAnEmptyDocumentQuietly)
{
    LogCapture log;
    const QByteArray text = "<?xml version=\"1.0\"?>\n<root>\n  <name>first\r\n   second</name>\n"
                            "  <n>\xC3\xA9</n>\n</root>\n";
    ReadResult result = readDocument(text, "ignored.model");
    EXPECT_TRUE(result.plainText);
    EXPECT_EQ(childNodes(result.root()), (QStringList{"name=first second", "n=\u00e9"}));
    EXPECT_EQ(readDocument("<a/>").root().tagName(), "a"); // exactly as long as the magic
    for (const QByteArray& broken : {QByteArray("<root><open></root>"), QByteArray("not xml")}) {
        result = readDocument(broken);
        EXPECT_TRUE(result.plainText && result.root().isNull() && result.failure.isEmpty());
    }
    EXPECT_TRUE(log.lines.isEmpty());
}

// Each fault stops the read at once with its message and no more than its
// log line; what was built before it stays, and nothing after it is read.
TEST(PackedXmlReaderTest, EachFaultStopsTheReadWithItsMessage)
{
    const QByteArray magic = le(PackedXmlReader::Magic, 4);
    QByteArray hugeCount = packed({"a"}, Element());
    hugeCount.chop(6); // the root's record: a count of 32767, ten bytes behind it
    hugeCount += le(32767, 2) + entry(1, 0) + QByteArray(10, '\0');
    QByteArray selfNested = packed({}, Element()); // own values nested in place
    selfNested.chop(6);
    for (int i = 0; i < 10000; ++i)
        selfNested += le(0, 2) + entry(0, 0);
    // The child "a" holding value, then a child "b" that must stay unread.
    auto then = [](const Value& value) {
        return packed({"a", "b"}, Element().add(0, value).add(1, string("never")));
    };
    auto beyondData = [&](int type) {
        Value value{type, "abcd"};
        value.forcedEnd = 0x0FFFFFFF;
        return then(value);
    };
    Value negative = string("");
    negative.forcedEnd = 0;
    auto chain = [](int levels) {
        Element element;
        element.add(0, string("leaf"));
        for (int i = 0; i < levels; ++i)
            element = Element().add(0, nested(element));
        return packed({"e"}, element);
    };
    const QString reading = "Error reading data: ";
    const QStringList none = {"-"}, empty = {"''", "a="};
    // The file, the failure, the root's child nodes ("-" for no document) and
    // the warnings logged.
    const std::tuple<QByteArray, QString, QStringList, int> cases[] = {
        // clang-format off
        {QByteArray(), reading + "readInt()", none, 0},
        {magic, reading + "peek", none, 0},
        {magic + '\0' + QByteArray(1000, 'n'), reading + "peek", none, 0},
        {hugeCount, reading + "readInt()", {}, 0},
        {beyondData(1), reading + "readChar()", empty, 0},
        {beyondData(2), reading + "readInt()", empty, 0},
        {beyondData(3), reading + "readFloat()", empty, 0},
        {beyondData(5), reading + "readCharSigned()", empty, 0},
        {packed({"a", "b"}, Element().add(0, string("abcd")).add(1, negative).add(0, string("n"))),
         reading + "negative value length", {"''", "a=abcd", "b="}, 1},
        {then(Value{6, "zz"}), "Unknown xml data type", empty, 0},
        {then(Value{8, "zz"}), "Unknown xml data type", empty, 0},
        {then(boolean(QByteArray(1, '\x02'))), "Boolean error", {"''", "a=true"}, 0},
        {packed({"a"}, Element().add(0, string("kept")).add(1, string("x"))),
         reading + "name index out of range", {"''", "a=kept"}, 1},
        {packed({"a"}, Element().add(0, string("kept")).add(-1, string("x"))),
         reading + "name index out of range", {"''", "a=kept"}, 1},
        {chain(PackedXmlReader::MaxDepth), "", {"''", "e=leaf"}, 0},
        {chain(PackedXmlReader::MaxDepth + 1), reading + "nesting too deep", {"''", "e="}, 1},
        {selfNested, reading + "nesting too deep", {}, 1}};
    // clang-format on
    for (const auto& [bytes, message, rootNodes, warnings] : cases) {
        SCOPED_TRACE(message.toStdString() + " " + bytes.toHex().left(80).toStdString());
        LogCapture log;
        const ReadResult result = readDocument(bytes);
        EXPECT_EQ(result.failure, message);
        if (rootNodes == none)
            EXPECT_TRUE(result.root().isNull());
        else
            EXPECT_EQ(childNodes(result.root()), rootNodes);
        EXPECT_EQ(log.lines.size(), 2 * warnings); // once for each of the two reads
    }
    EXPECT_EQ(readDocument(chain(PackedXmlReader::MaxDepth)).document.elementsByTagName("e").size(),
              PackedXmlReader::MaxDepth + 1);
}

TEST(PackedXmlReaderTest, EveryTruncationFailsOnceAndKeepsAPartialDocument)
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
    const QByteArray file = packed({"name", "hull", "transform", "armor", "flag", "data"}, top);

    const ReadResult full = readDocument(file);
    ASSERT_TRUE(full.failure.isEmpty()) << full.failure.toStdString();
    const int fullElements = elementCount(full.document);
    ASSERT_GT(fullElements, 15);
    for (int length = 0; length < file.size(); ++length) {
        SCOPED_TRACE(length);
        const ReadResult cut = readDocument(file.left(length));
        EXPECT_TRUE(cut.failure.startsWith("Error reading data: ")) << cut.failure.toStdString();
        EXPECT_FALSE(cut.plainText);
        EXPECT_LE(elementCount(cut.document), fullElements);
        EXPECT_NE(cut.document.toString(), full.document.toString());
    }
}
