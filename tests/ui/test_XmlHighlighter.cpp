// The highlighter's colours at chosen places, and how a line's end carries
// over into the next line.

#include "XmlHighlighter.h"

#include "QtPrinters.h"

#include <QCoreApplication>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <gtest/gtest.h>

namespace {

// What a character should look like: line, column, colour.
struct Expected
{
    int line;
    int column;
    Qt::GlobalColor colour;
};

struct HighlightCase
{
    const char* what;
    QString text;
    QList<Expected> colours;
    // The block state of every line.
    QList<int> lineStates;
};

void PrintTo(const HighlightCase& c, std::ostream* out)
{
    *out << c.what;
}

// A document as an editor holds it: with a layout (without one, edits are
// not reported) and past the highlighter's first, posted pass, from which on
// it follows every edit.
struct HighlightedDocument
{
    HighlightedDocument()
    {
        document.documentLayout();
        QCoreApplication::sendPostedEvents();
    }
    QTextDocument document;
    XmlHighlighter highlighter{&document};
};

// The foreground given to one character; "none" when no format covers it.
QString colourAt(const QTextDocument& document, int line, int column)
{
    const QTextBlock block = document.findBlockByNumber(line);
    for (const QTextLayout::FormatRange& range : block.layout()->formats()) {
        if (column >= range.start && column < range.start + range.length)
            return range.format.foreground().color().name();
    }
    return QStringLiteral("none");
}

QString colourName(Qt::GlobalColor colour)
{
    return QColor(colour).name();
}

constexpr int Comment = XmlHighlighter::InComment, Tag = XmlHighlighter::InTag,
              Outside = XmlHighlighter::Outside;
constexpr Qt::GlobalColor Syntax = Qt::blue, Element = Qt::darkRed, CommentText = Qt::darkGreen,
                          Attribute = Qt::red, Value = Qt::blue, Error = Qt::darkMagenta,
                          Other = Qt::black;

const HighlightCase cases[] = {
    {"an element with an attribute",
     "<tank attr=\"v\">x</tank>",
     {{0, 0, Syntax},
      {0, 1, Element},
      {0, 4, Element},
      {0, 5, Other},
      {0, 6, Attribute},
      {0, 10, Other},
      {0, 11, Other},
      {0, 12, Value},
      {0, 13, Other},
      {0, 14, Syntax},
      {0, 15, Other},
      {0, 16, Syntax},
      {0, 17, Syntax},
      {0, 18, Element},
      {0, 22, Syntax}},
     {Outside}},
    {"a comment over three lines",
     "a <!-- one\ntwo <b>\nthree --> <b/>",
     {{0, 0, Other},
      {0, 2, Syntax},
      {0, 3, Syntax},
      {0, 5, Syntax},
      {0, 6, CommentText},
      {0, 9, CommentText},
      {1, 0, CommentText},
      {1, 4, CommentText},
      {1, 6, CommentText},
      {2, 0, CommentText},
      {2, 5, CommentText},
      {2, 6, Syntax},
      {2, 8, Syntax},
      {2, 10, Syntax},
      {2, 11, Element},
      {2, 12, Syntax},
      {2, 13, Syntax}},
     {Comment, Comment, Outside}},
    {"a comment inside one line, its end at its own place",
     "<a><!-- c - d --></a>",
     {{0, 2, Syntax},
      {0, 3, Syntax},
      {0, 6, Syntax},
      {0, 7, CommentText},
      {0, 10, CommentText},
      {0, 13, CommentText},
      {0, 14, Syntax},
      {0, 16, Syntax},
      {0, 17, Syntax},
      {0, 18, Syntax},
      {0, 19, Element}},
     {Outside}},
    {"attributes on lines of their own after a line that ended in a tag",
     "<node\n  name=\"x\"\n  size='2'>text",
     {{0, 1, Element},
      {1, 0, Other},
      {1, 2, Attribute},
      {1, 5, Attribute},
      {1, 6, Other},
      {1, 7, Other},
      {1, 8, Value},
      {2, 2, Attribute},
      {2, 7, Other},
      {2, 8, Value},
      {2, 9, Other},
      // The bracket count starts afresh on every line.
      {2, 10, Error},
      {2, 11, Other}},
     {Tag, Tag, Outside}},
    {"a tag opened inside a tag, a quote outside a value",
     "<a <b>> \"q\"",
     {{0, 0, Syntax},
      {0, 1, Element},
      {0, 3, Error},
      {0, 4, Attribute},
      {0, 5, Error},
      {0, 6, Syntax},
      {0, 8, Other},
      {0, 9, Other}},
     {Outside}},
    {"a name outside ASCII, a slash before the end of a tag",
     QString::fromUtf8("<\xc4\x89"
                       "apo x='1'/>"),
     {{0, 1, Element}, {0, 4, Element}, {0, 6, Attribute}, {0, 11, Syntax}, {0, 12, Syntax}},
     {Outside}},
};

class XmlHighlighterTest : public testing::TestWithParam<HighlightCase>
{
};

TEST_P(XmlHighlighterTest, ColoursAndLineStates)
{
    const HighlightCase& c = GetParam();
    HighlightedDocument highlighted;
    QTextDocument& document = highlighted.document;
    document.setPlainText(c.text);

    for (const Expected& e : c.colours) {
        SCOPED_TRACE(testing::Message() << "line " << e.line << " column " << e.column);
        EXPECT_EQ(colourAt(document, e.line, e.column), colourName(e.colour));
    }
    ASSERT_EQ(document.blockCount(), c.lineStates.size());
    for (int line = 0; line < c.lineStates.size(); ++line)
        EXPECT_EQ(document.findBlockByNumber(line).userState(), c.lineStates[line])
            << "line " << line;
}

INSTANTIATE_TEST_SUITE_P(Cases, XmlHighlighterTest, testing::ValuesIn(cases));

// Closing a comment on a later line re-colours the lines in between.
TEST(XmlHighlighterEditTest, EndingACommentRecoloursTheLinesBelow)
{
    HighlightedDocument highlighted;
    QTextDocument& document = highlighted.document;
    document.setPlainText("<!-- open\n<a>\n<b>");
    EXPECT_EQ(colourAt(document, 2, 1), colourName(CommentText));

    QTextCursor cursor(document.findBlockByNumber(0));
    cursor.movePosition(QTextCursor::EndOfBlock);
    cursor.insertText(" -->");
    EXPECT_EQ(colourAt(document, 1, 1), colourName(Element));
    EXPECT_EQ(colourAt(document, 2, 1), colourName(Element));
}

} // namespace
