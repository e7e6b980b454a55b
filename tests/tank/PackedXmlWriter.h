#pragma once

// Encodes a plain XML text in the game's packed form, independently of the
// reader: an element with child elements becomes a nested record whose own
// value is its direct text; one without becomes a string value.

#include <QByteArray>
#include <QDomDocument>
#include <QStringList>
#include <QtEndian>

namespace packedxml {

inline QByteArray le(quint32 value, int width)
{
    char bytes[4];
    qToLittleEndian<quint32>(value, bytes);
    return QByteArray(bytes, width);
}

inline QString ownText(const QDomElement& element)
{
    QString text;
    for (QDomNode node = element.firstChild(); !node.isNull(); node = node.nextSibling())
        if (node.isText())
            text += node.nodeValue();
    return text.trimmed();
}

inline QByteArray record(const QDomElement& element, QStringList& names)
{
    QByteArray entries;
    QByteArray data = ownText(element).toLatin1();
    const quint32 ownEnd = quint32(data.size());
    int count = 0;
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement(), ++count) {
        if (!names.contains(child.tagName()))
            names.append(child.tagName());
        const bool nested = !child.firstChildElement().isNull();
        data += nested ? record(child, names) : ownText(child).toLatin1();
        const quint32 type = nested ? 0 : 1;
        entries += le(quint32(names.indexOf(child.tagName())), 2) +
                   le((type << 28) | quint32(data.size()), 4);
    }
    return le(quint32(count), 2) + le((1u << 28) | ownEnd, 4) + entries + data;
}

inline QByteArray pack(const QString& plainText)
{
    QDomDocument document;
    document.setContent(plainText);
    QStringList names;
    const QByteArray body = record(document.documentElement(), names);
    QByteArray file = le(0x62A14E45, 4) + QByteArray(1, '\0');
    for (const QString& name : names)
        file += name.toLatin1() + QByteArray(1, '\0');
    return file + QByteArray(1, '\0') + body;
}

} // namespace packedxml
