#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

// One GNU gettext message catalogue (.mo) held in memory. Lookups go through
// the catalogue's own hash table. Every offset and length of the file is
// checked against its size while loading, so a loaded file can be read
// without further bounds checks.
class MoFile
{
public:
    static constexpr quint32 Magic = 0x950412DE;
    static constexpr quint32 SwappedMagic = 0xDE120495;
    static constexpr int HeaderSize = 28;

    // Reads the file at path (a plain file, never an archive member).
    bool load(const QString& path);
    // The same checks on bytes already in memory.
    bool loadFromBytes(const QByteArray& bytes);
    void clear();

    bool isLoaded() const { return loaded; }

    // Index of the key's entry, or -1. Case is ignored: the hash table is
    // probed with the key as given, and when that misses, a case-folded
    // index of all keys (built on the first miss) answers.
    int find(const QString& key) const;
    // Sets translation and returns true when the key is in the catalogue.
    bool lookup(const QString& key, QString* translation) const;

    QString original(int index) const;
    QString translation(int index) const;

    // Keys of entries 1 to N - 1 (entry 0 is the catalogue header).
    QStringList keys;

    quint32 stringCount = 0;        // N
    quint32 originalsOffset = 0;    // O
    quint32 translationsOffset = 0; // T
    quint32 hashSize = 0;           // S
    quint32 hashOffset = 0;         // H

    static quint32 hashString(const QByteArray& bytes);

private:
    quint32 word(qint64 offset) const;
    bool readHeader();
    bool tableFits(quint32 tableOffset) const;
    bool stringsFit(quint32 tableOffset) const;
    bool hashTableFits() const;
    QString stringAt(quint32 tableOffset, int index) const;
    int probeHashTable(const QString& key) const;
    int findFolded(const QString& key) const;
    QByteArray rawStringAt(quint32 tableOffset, int index) const;

    QByteArray data;
    bool swapped = false;
    bool loaded = false;
    // Case-folded key to its first entry; empty until a probe misses.
    mutable QHash<QString, int> foldedKeys;
};
