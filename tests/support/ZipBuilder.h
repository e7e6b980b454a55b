#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Writes zip archives byte by byte, so tests can make valid archives and
// archives that lie about themselves without any zip library.
class ZipBuilder
{
public:
    enum Method
    {
        Stored = 0,
        Deflated = 8
    };

    struct Entry
    {
        QByteArray name;
        QByteArray content;
        Method method = Stored;
        // When set, the central directory records this uncompressed size
        // instead of the real one.
        qint64 recordedSize = -1;
        // When set, the member's compressed data is cut to this many bytes
        // (the recorded compressed size follows, so the archive stays walkable).
        qint64 truncateDataTo = -1;
        // When set, these bytes replace the compressed data as stored.
        QByteArray replaceData;
    };

    ZipBuilder& add(const QByteArray& name, const QByteArray& content, Method method = Stored);
    ZipBuilder& add(const Entry& entry);

    QByteArray build() const;
    bool writeTo(const QString& path) const;

    static QByteArray deflateRaw(const QByteArray& data);

private:
    QList<Entry> entries;
};
