#pragma once

#include <QRegularExpression>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>

class QTextDocument;

// Colours the XML text of a visual file as it is typed. It scans each line
// on its own and carries over only whether the line ended inside a comment
// or inside a tag, so that a change re-colours as few lines as possible.
class XmlHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT
public:
    // How a line ended, kept as the block state.
    enum BlockState
    {
        InComment = 0,
        InTag = 1,
        Outside = -1
    };

    explicit XmlHighlighter(QTextDocument* document);

protected:
    void highlightBlock(const QString& text) override;

private:
    // What the scanner expects next inside a line.
    enum ScanState
    {
        NoState = 0,
        ExpectElementNameOrSlash = 1,
        ExpectElementName = 2,
        ExpectAttributeOrTagEnd = 3,
        ExpectEqualSign = 4,
        ExpectAttributeValue = 5
    };

    // The scan of one line; the highlighter's members hold only what lasts.
    struct LineScan
    {
        const QString& text;
        int position = 0;
        int state = NoState;
        int openBrackets = 0;
        int lastOpenBracket = -1;
        bool done = false;
    };

    // Colours the rest of a comment that began on an earlier line; false if
    // the comment goes on past this line.
    bool finishComment(LineScan& scan);
    void scanCharacter(LineScan& scan);
    void openBracket(LineScan& scan);
    void closeBracket(LineScan& scan);
    void slash(LineScan& scan);
    void equalSign(LineScan& scan);
    void quote(LineScan& scan);
    void exclamation(LineScan& scan);
    void defaultHandling(LineScan& scan);
    void setOne(LineScan& scan, const QTextCharFormat& format);

    QTextCharFormat syntaxFormat;
    QTextCharFormat elementNameFormat;
    QTextCharFormat commentFormat;
    QTextCharFormat attributeNameFormat;
    QTextCharFormat attributeValueFormat;
    QTextCharFormat errorFormat;
    QTextCharFormat otherFormat;

    QRegularExpression commentEnd;
    QRegularExpression wholeComment;
    QRegularExpression commentStart;
    QRegularExpression attributeValue;
    QRegularExpression name;
};
