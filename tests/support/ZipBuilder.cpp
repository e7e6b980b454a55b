#include "ZipBuilder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <zlib.h>

namespace {
void put16(QByteArray& out, quint32 value)
{
    out.append(char(value & 0xFF));
    out.append(char((value >> 8) & 0xFF));
}

void put32(QByteArray& out, quint32 value)
{
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}

struct Layout
{
    QByteArray data;
    quint32 crc = 0;
    quint32 uncompressedSize = 0;
    quint32 offset = 0;
};
} // namespace

ZipBuilder& ZipBuilder::add(const QByteArray& name, const QByteArray& content, Method method)
{
    Entry entry;
    entry.name = name;
    entry.content = content;
    entry.method = method;
    return add(entry);
}

ZipBuilder& ZipBuilder::add(const Entry& entry)
{
    entries.append(entry);
    return *this;
}

QByteArray ZipBuilder::deflateRaw(const QByteArray& data)
{
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    QByteArray out(int(deflateBound(&stream, uLong(data.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.constData()));
    stream.avail_in = uInt(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(int(stream.total_out));
    deflateEnd(&stream);
    return out;
}

QByteArray ZipBuilder::build() const
{
    QByteArray out;
    QList<Layout> layouts;
    for (const Entry& entry : entries) {
        Layout layout;
        layout.crc = quint32(crc32(0, reinterpret_cast<const Bytef*>(entry.content.constData()),
                                   uInt(entry.content.size())));
        layout.uncompressedSize =
            quint32(entry.recordedSize >= 0 ? entry.recordedSize : entry.content.size());
        layout.data = entry.method == Deflated ? deflateRaw(entry.content) : entry.content;
        if (!entry.replaceData.isNull())
            layout.data = entry.replaceData;
        if (entry.truncateDataTo >= 0)
            layout.data.truncate(int(entry.truncateDataTo));
        layout.offset = quint32(out.size());

        put32(out, 0x04034b50);
        put16(out, 20);
        put16(out, 0);
        put16(out, entry.method);
        put16(out, 0);      // time
        put16(out, 0x5021); // date
        put32(out, layout.crc);
        put32(out, quint32(layout.data.size()));
        put32(out, layout.uncompressedSize);
        put16(out, quint32(entry.name.size()));
        put16(out, 0);
        out.append(entry.name);
        out.append(layout.data);
        layouts.append(layout);
    }

    const quint32 directoryOffset = quint32(out.size());
    for (int i = 0; i < entries.size(); ++i) {
        const Entry& entry = entries[i];
        const Layout& layout = layouts[i];
        put32(out, 0x02014b50);
        put16(out, 20);
        put16(out, 20);
        put16(out, 0);
        put16(out, entry.method);
        put16(out, 0);
        put16(out, 0x5021);
        put32(out, layout.crc);
        put32(out, quint32(layout.data.size()));
        put32(out, layout.uncompressedSize);
        put16(out, quint32(entry.name.size()));
        put16(out, 0); // extra
        put16(out, 0); // comment
        put16(out, 0); // disk
        put16(out, 0); // internal attributes
        put32(out, 0); // external attributes
        put32(out, layout.offset);
        out.append(entry.name);
    }
    const quint32 directorySize = quint32(out.size()) - directoryOffset;

    put32(out, 0x06054b50);
    put16(out, 0);
    put16(out, 0);
    put16(out, quint32(entries.size()));
    put16(out, quint32(entries.size()));
    put32(out, directorySize);
    put32(out, directoryOffset);
    put16(out, 0);
    return out;
}

bool ZipBuilder::writeTo(const QString& path) const
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(build()) >= 0;
}
