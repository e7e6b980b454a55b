#pragma once

#include <QDomDocument>
#include <QString>
#include <QVector>

class BinaryReader;

// The game's binary encoding of XML, or plain XML text, as a DOM document.
// One object reads one document.
class PackedXmlReader
{
public:
    static constexpr quint32 Magic = 0x62A14E45;

    explicit PackedXmlReader(BinaryReader* reader);

    // fileName serves only for the root's tag (".model" becomes ".visual").
    QDomDocument read(const QString& fileName);

    // True after read() took the plain text path.
    bool plainText = false;

private:
    BinaryReader* reader;
    QVector<QString> names;
};
