#pragma once

#include <QDomDocument>
#include <QString>
#include <QVector>

class BinaryReader;
class ByteCursor;
class ReadFailure;

// The game's binary encoding of XML, or plain XML text, as a DOM document.
// One object reads one document.
class PackedXmlReader
{
public:
    static constexpr quint32 Magic = 0x62A14E45;

    explicit PackedXmlReader(BinaryReader* reader);

    // fileName serves only for the root's tag (".model" becomes ".visual").
    // A packed document stops at its first failure and gives what was built
    // up to there; this form then shows the closing box with the failure.
    QDomDocument read(const QString& fileName);
    // The same read, but the first failure goes to failure and no box shows.
    QDomDocument read(const QString& fileName, ReadFailure& failure);

    // True after read() took the plain text path.
    bool plainText = false;

    // Nested element records deeper than this end the read: no game file
    // comes near it, and a forged file must not exhaust the stack.
    static constexpr int MaxDepth = 64;

private:
    QDomDocument readDocument(const QString& fileName);
    QDomDocument readPacked(const QString& fileName);
    QDomDocument readPlainText(const QByteArray& bytes);
    bool readNames();
    bool readElement(QDomDocument& document, QDomNode& node, int depth);
    bool readValue(QDomDocument& document, QDomNode& node, int previousEnd, quint32 descriptor,
                   int depth);
    bool readString(QDomDocument& document, QDomNode& node, int length);
    bool readInteger(QDomDocument& document, QDomNode& node, int length);
    bool readFloats(QDomDocument& document, QDomNode& node, int length);
    bool readBoolean(QDomDocument& document, QDomNode& node, int length);
    bool readBlob(QDomDocument& document, QDomNode& node, int length);
    // Records the failure and ends the read.
    bool stop(const char* message);

    BinaryReader* reader;
    QVector<QString> names;
    // The packed document's bytes while read() walks them.
    ByteCursor* cursor = nullptr;
};
