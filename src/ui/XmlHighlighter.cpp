#include "XmlHighlighter.h"

namespace {
QTextCharFormat foreground(Qt::GlobalColor colour)
{
    QTextCharFormat format;
    format.setForeground(colour);
    return format;
}

// A match that begins exactly at `position`, or an invalid one.
QRegularExpressionMatch matchAt(const QRegularExpression& expression, const QString& text,
                                int position)
{
    return expression.match(text, position, QRegularExpression::NormalMatch,
                            QRegularExpression::AnchorAtOffsetMatchOption);
}
} // namespace

XmlHighlighter::XmlHighlighter(QTextDocument* document)
    : QSyntaxHighlighter(document), syntaxFormat(foreground(Qt::blue)),
      elementNameFormat(foreground(Qt::darkRed)), commentFormat(foreground(Qt::darkGreen)),
      attributeNameFormat(foreground(Qt::red)), attributeValueFormat(foreground(Qt::blue)),
      errorFormat(foreground(Qt::darkMagenta)), otherFormat(foreground(Qt::black)),
      commentEnd(QStringLiteral("[^-]*-([^-][^-]*-)*->")),
      wholeComment(QStringLiteral("<!--[^-]*-([^-][^-]*-)*->")),
      commentStart(QStringLiteral("<!--")), attributeValue(QStringLiteral("\"[^<\"]*\"|'[^<']*'")),
      name(QStringLiteral("([A-Za-z_:]|[^\\x00-\\x7F])([A-Za-z0-9_:.-]|[^\\x00-\\x7F])*"))
{
}

void XmlHighlighter::highlightBlock(const QString& text)
{
    const int previous = previousBlockState();
    LineScan scan{text};
    scan.state = previous == InTag ? ExpectAttributeOrTagEnd : NoState;
    setCurrentBlockState(Outside);

    if (previous == InComment && !finishComment(scan))
        return;
    while (!scan.done && scan.position < text.size())
        scanCharacter(scan);
    if (!scan.done && scan.state == ExpectAttributeOrTagEnd)
        setCurrentBlockState(InTag);
}

bool XmlHighlighter::finishComment(LineScan& scan)
{
    const QRegularExpressionMatch end = commentEnd.match(scan.text);
    if (!end.hasMatch()) {
        setFormat(0, scan.text.size(), commentFormat);
        setCurrentBlockState(InComment);
        return false;
    }
    const int behind = end.capturedEnd();
    setFormat(0, behind - 3, commentFormat);
    setFormat(behind - 3, 3, syntaxFormat);
    scan.position = behind;
    return true;
}

void XmlHighlighter::scanCharacter(LineScan& scan)
{
    switch (scan.text.at(scan.position).toLatin1()) {
    case '<':
        openBracket(scan);
        break;
    case '>':
        closeBracket(scan);
        break;
    case '/':
        slash(scan);
        break;
    case '=':
        equalSign(scan);
        break;
    case '"':
    case '\'':
        quote(scan);
        break;
    case '!':
        exclamation(scan);
        break;
    default:
        defaultHandling(scan);
    }
}

void XmlHighlighter::openBracket(LineScan& scan)
{
    ++scan.openBrackets;
    if (scan.openBrackets == 1) {
        scan.state = ExpectElementNameOrSlash;
        scan.lastOpenBracket = scan.position;
        setOne(scan, syntaxFormat);
    } else {
        setOne(scan, errorFormat);
    }
}

void XmlHighlighter::closeBracket(LineScan& scan)
{
    --scan.openBrackets;
    setOne(scan, scan.openBrackets == 0 ? syntaxFormat : errorFormat);
    scan.state = NoState;
}

void XmlHighlighter::slash(LineScan& scan)
{
    if (scan.state == ExpectElementNameOrSlash) {
        scan.state = ExpectElementName;
        setOne(scan, syntaxFormat);
    } else if (scan.state == ExpectAttributeOrTagEnd) {
        setOne(scan, syntaxFormat);
    } else {
        defaultHandling(scan);
    }
}

void XmlHighlighter::equalSign(LineScan& scan)
{
    if (scan.state != ExpectEqualSign) {
        defaultHandling(scan);
        return;
    }
    scan.state = ExpectAttributeValue;
    setOne(scan, otherFormat);
}

void XmlHighlighter::quote(LineScan& scan)
{
    const QRegularExpressionMatch value = scan.state == ExpectAttributeValue
                                              ? matchAt(attributeValue, scan.text, scan.position)
                                              : QRegularExpressionMatch();
    if (!value.hasMatch()) {
        defaultHandling(scan);
        return;
    }
    const int length = value.capturedLength();
    setFormat(scan.position, 1, otherFormat);
    setFormat(scan.position + 1, length - 2, attributeValueFormat);
    setFormat(scan.position + length - 1, 1, otherFormat);
    scan.position += length;
    scan.state = ExpectAttributeOrTagEnd;
}

void XmlHighlighter::exclamation(LineScan& scan)
{
    if (scan.state != ExpectElementNameOrSlash || scan.lastOpenBracket < 0) {
        defaultHandling(scan);
        return;
    }
    const QRegularExpressionMatch comment = matchAt(wholeComment, scan.text, scan.lastOpenBracket);
    if (comment.hasMatch()) {
        const int start = comment.capturedStart();
        const int behind = comment.capturedEnd();
        setFormat(start, 4, syntaxFormat);
        setFormat(start + 4, behind - 3 - (start + 4), commentFormat);
        setFormat(behind - 3, 3, syntaxFormat);
        scan.position = behind;
        scan.state = NoState;
        --scan.openBrackets;
        return;
    }
    const int opening = scan.text.indexOf(commentStart, scan.lastOpenBracket);
    if (opening < 0) {
        defaultHandling(scan);
        return;
    }
    // The comment goes on past this line.
    setFormat(opening + 1, 3, syntaxFormat);
    setFormat(opening + 4, scan.text.size() - (opening + 4), commentFormat);
    setCurrentBlockState(InComment);
    scan.done = true;
}

void XmlHighlighter::defaultHandling(LineScan& scan)
{
    const bool inElementName =
        scan.state == ExpectElementNameOrSlash || scan.state == ExpectElementName;
    if (!inElementName && scan.state != ExpectAttributeOrTagEnd) {
        setOne(scan, otherFormat);
        return;
    }
    const QRegularExpressionMatch match = matchAt(name, scan.text, scan.position);
    if (!match.hasMatch()) {
        setOne(scan, otherFormat);
        return;
    }
    setFormat(scan.position, match.capturedLength(),
              inElementName ? elementNameFormat : attributeNameFormat);
    scan.position += match.capturedLength();
    scan.state = inElementName ? ExpectAttributeOrTagEnd : ExpectEqualSign;
}

void XmlHighlighter::setOne(LineScan& scan, const QTextCharFormat& format)
{
    setFormat(scan.position, 1, format);
    ++scan.position;
}
