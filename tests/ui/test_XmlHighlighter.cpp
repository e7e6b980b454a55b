// The highlighter's colours, character by character, and how a line's end
// carries over into the next line.

#include "XmlHighlighter.h"

#include "QtPrinters.h"

#include <QCoreApplication>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <gtest/gtest.h>

namespace {

// One letter per character: S syntax or attribute value (both blue),
// E element name (dark red), C comment (dark green), A attribute name (red),
// X error (dark magenta), O other text (black), - none.
struct HighlightCase
{
    const char* what;
    QString text;
    QStringList colours;   // one string per line
    QList<int> lineStates; // the block state of every line
};

void PrintTo(const HighlightCase& c, std::ostream* out)
{
    *out << c.what;
}

QChar letterOf(const QColor& colour)
{
    const std::pair<Qt::GlobalColor, char> letters[] = {{Qt::blue, 'S'},        {Qt::darkRed, 'E'},
                                                        {Qt::darkGreen, 'C'},   {Qt::red, 'A'},
                                                        {Qt::darkMagenta, 'X'}, {Qt::black, 'O'}};
    for (const auto& [known, letter] : letters) {
        if (colour == QColor(known))
            return QLatin1Char(letter);
    }
    return QLatin1Char('?');
}

QString lettersOf(const QTextBlock& block)
{
    QString letters(block.length() - 1, QLatin1Char('-'));
    for (const QTextLayout::FormatRange& range : block.layout()->formats()) {
        for (int i = range.start; i < range.start + range.length && i < letters.size(); ++i)
            letters[i] = letterOf(range.format.foreground().color());
    }
    return letters;
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
    QString letters(int line) const { return lettersOf(document.findBlockByNumber(line)); }
    QTextDocument document;
    XmlHighlighter highlighter{&document};
};

constexpr int Comment = XmlHighlighter::InComment, Tag = XmlHighlighter::InTag,
              Outside = XmlHighlighter::Outside;

const HighlightCase cases[] = {
    {"an element with an attribute",
     "<tank attr=\"v\">x</tank>",
     {"SEEEEOAAAAOOSOSOSSEEEES"},
     {Outside}},
    {"a comment over three lines",
     "a <!-- one\ntwo <b>\nthree --> <b/>",
     {"OOSSSSCCCC", "CCCCCCC", "CCCCCCSSSOSESS"},
     {Comment, Comment, Outside}},
    {"a comment inside one line, its end at its own place",
     "<a><!-- c - d --></a>",
     {"SESSSSSCCCCCCCSSSSSES"},
     {Outside}},
    {"attributes on lines of their own after a line that ended in a tag",
     "<node\n  name=\"x\"\n  size='2'>text",
     // The bracket count starts afresh on every line.
     {"SEEEE", "OOAAAAOOSO", "OOAAAAOOSOXOOOO"},
     {Tag, Tag, Outside}},
    {"a tag opened inside a tag, a quote outside a value",
     "<a <b>> \"q\"",
     {"SEOXAXSOOOO"},
     {Outside}},
    {"a name outside ASCII, a slash before the end of a tag",
     QString::fromUtf8("<\xc4\x89"
                       "apo x='1'/>"),
     {"SEEEEOAOOSOSS"},
     {Outside}},
};

class XmlHighlighterTest : public testing::TestWithParam<HighlightCase>
{
};

TEST_P(XmlHighlighterTest, ColoursAndLineStates)
{
    const HighlightCase& c = GetParam();
    HighlightedDocument highlighted;
    highlighted.document.setPlainText(c.text);
    ASSERT_EQ(highlighted.document.blockCount(), c.lineStates.size());
    for (int line = 0; line < c.lineStates.size(); ++line) {
        SCOPED_TRACE(testing::Message() << "line " << line);
        EXPECT_EQ(highlighted.letters(line), c.colours[line]);
        EXPECT_EQ(highlighted.document.findBlockByNumber(line).userState(), c.lineStates[line]);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, XmlHighlighterTest, testing::ValuesIn(cases));

// Closing a comment on a later line re-colours the lines in between.
TEST(XmlHighlighterEditTest, EndingACommentRecoloursTheLinesBelow)
{
    HighlightedDocument highlighted;
    highlighted.document.setPlainText("<!-- open\n<a>\n<b>");
    EXPECT_EQ(highlighted.letters(2), "CCC");

    QTextCursor cursor(highlighted.document.firstBlock());
    cursor.movePosition(QTextCursor::EndOfBlock);
    cursor.insertText(" -->");
    EXPECT_EQ(highlighted.letters(0), "SSSSCCCCCCSSS");
    EXPECT_EQ(highlighted.letters(1), "SES");
    EXPECT_EQ(highlighted.letters(2), "SES");
}

} // namespace
