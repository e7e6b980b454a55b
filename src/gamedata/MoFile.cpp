#include "MoFile.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QtEndian>

namespace {
// Bytes of one table entry: length and offset, one word each.
constexpr qint64 EntrySize = 8;
} // namespace

void MoFile::clear()
{
    data.clear();
    keys.clear();
    foldedKeys.clear();
    stringCount = originalsOffset = translationsOffset = hashSize = hashOffset = 0;
    swapped = false;
    loaded = false;
}

bool MoFile::load(const QString& path)
{
    clear();
    QFile file(QDir::toNativeSeparators(path));
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug().noquote() << QStringLiteral("Failed to open file: ") + path;
        return false;
    }
    return loadFromBytes(file.readAll());
}

bool MoFile::loadFromBytes(const QByteArray& bytes)
{
    clear();
    data = bytes;
    if (!readHeader()) {
        clear();
        return false;
    }
    keys.reserve(int(stringCount > 0 ? stringCount - 1 : 0));
    for (quint32 i = 1; i < stringCount; ++i)
        keys.append(original(int(i)));
    loaded = true;
    return true;
}

quint32 MoFile::word(qint64 offset) const
{
    const quint32 value = qFromLittleEndian<quint32>(data.constData() + offset);
    return swapped ? qbswap(value) : value;
}

bool MoFile::readHeader()
{
    if (data.size() < 4) {
        qDebug() << "Magic failed.";
        return false;
    }
    const quint32 magic = qFromLittleEndian<quint32>(data.constData());
    if (magic != Magic && magic != SwappedMagic) {
        qDebug() << "Magic failed.";
        return false;
    }
    swapped = magic == SwappedMagic;
    if (data.size() < HeaderSize) {
        qDebug() << "Catalogue header truncated.";
        return false;
    }
    stringCount = word(8);
    originalsOffset = word(12);
    translationsOffset = word(16);
    hashSize = word(20);
    hashOffset = word(24);
    if (hashSize == 0) {
        qDebug() << "Hash table empty.";
        return false;
    }
    if (!tableFits(originalsOffset) || !tableFits(translationsOffset) || !hashTableFits()) {
        qDebug() << "Catalogue table outside the file.";
        return false;
    }
    if (!stringsFit(originalsOffset) || !stringsFit(translationsOffset)) {
        qDebug() << "Catalogue string outside the file.";
        return false;
    }
    return true;
}

// All arithmetic in 64 bits: a word near 2^32 must not wrap into range.
bool MoFile::tableFits(quint32 tableOffset) const
{
    return qint64(tableOffset) + qint64(stringCount) * EntrySize <= data.size();
}

bool MoFile::stringsFit(quint32 tableOffset) const
{
    for (quint32 i = 0; i < stringCount; ++i) {
        const qint64 entry = qint64(tableOffset) + qint64(i) * EntrySize;
        if (qint64(word(entry)) + qint64(word(entry + 4)) > data.size())
            return false;
    }
    return true;
}

// The table itself lies inside the file, and every used slot names an entry.
bool MoFile::hashTableFits() const
{
    if (qint64(hashOffset) + qint64(hashSize) * 4 > data.size())
        return false;
    for (quint32 i = 0; i < hashSize; ++i) {
        const quint32 slot = word(qint64(hashOffset) + qint64(i) * 4);
        if (slot != 0 && slot - 1 >= stringCount)
            return false;
    }
    return true;
}

QByteArray MoFile::rawStringAt(quint32 tableOffset, int index) const
{
    if (index < 0 || quint32(index) >= stringCount)
        return QByteArray();
    const qint64 entry = qint64(tableOffset) + qint64(index) * EntrySize;
    const qint64 length = word(entry);
    const qint64 offset = word(entry + 4);
    QByteArray bytes = data.mid(offset, length);
    // A string ends at its first zero byte, or at its recorded length.
    const int end = bytes.indexOf('\0');
    if (end >= 0)
        bytes.truncate(end);
    return bytes;
}

QString MoFile::stringAt(quint32 tableOffset, int index) const
{
    return QString::fromUtf8(rawStringAt(tableOffset, index));
}

QString MoFile::original(int index) const
{
    return stringAt(originalsOffset, index);
}

QString MoFile::translation(int index) const
{
    return stringAt(translationsOffset, index);
}

// The PJW variant used by gettext for its tables.
quint32 MoFile::hashString(const QByteArray& bytes)
{
    quint32 hash = 0;
    for (const char byte : bytes) {
        hash = (hash << 4) + quint8(byte);
        const quint32 high = hash & 0xF0000000u;
        if (high != 0) {
            hash ^= high >> 24;
            hash ^= high;
        }
    }
    return hash;
}

int MoFile::find(const QString& key) const
{
    if (!loaded)
        return -1;
    const int entry = probeHashTable(key);
    return entry >= 0 ? entry : findFolded(key);
}

// The hash is taken over the key as given, so a key in another case than
// the catalogue's usually probes other slots.
int MoFile::probeHashTable(const QString& key) const
{
    const quint32 hash = hashString(key.toUtf8());
    const quint32 start = hash % hashSize;
    // hash % (S - 2) is undefined for S = 2 and meaningless for S = 1.
    const quint32 increment = hashSize > 2 ? hash % (hashSize - 2) + 1 : 1;

    quint32 index = start;
    // Every slot at most once: a table without a free slot still ends.
    for (quint32 probe = 0; probe < hashSize; ++probe) {
        const quint32 slot = word(qint64(hashOffset) + qint64(index) * 4);
        if (slot == 0)
            return -1;
        const int entry = int(slot - 1);
        if (QString::compare(original(entry), key, Qt::CaseInsensitive) == 0)
            return entry;
        index = quint32((quint64(index) + increment) % hashSize);
        if (index == start)
            return -1;
    }
    return -1;
}

int MoFile::findFolded(const QString& key) const
{
    if (foldedKeys.isEmpty()) {
        foldedKeys.reserve(int(stringCount));
        for (quint32 i = 0; i < stringCount; ++i) {
            const QString folded = original(int(i)).toCaseFolded();
            if (!foldedKeys.contains(folded))
                foldedKeys.insert(folded, int(i));
        }
    }
    return foldedKeys.value(key.toCaseFolded(), -1);
}

bool MoFile::lookup(const QString& key, QString* translationText) const
{
    const int index = find(key);
    if (index < 0)
        return false;
    if (translationText)
        *translationText = translation(index);
    return true;
}
