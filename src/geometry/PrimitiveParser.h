#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

class QIODevice;
class ReadFailure;

// One named chunk of a .primitives file with a private copy of its payload.
struct PrimitiveChunk
{
    QString name;
    quint32 size = 0;
    QByteArray data;
};

// Splits a .primitives file into its chunks and keeps them in memory while
// the model that owns the parser is loaded.
class PrimitiveParser
{
public:
    PrimitiveParser() = default;
    ~PrimitiveParser();
    PrimitiveParser(const PrimitiveParser&) = delete;
    PrimitiveParser& operator=(const PrimitiveParser&) = delete;

    // path names the .model file or any file beside it; ".model" becomes
    // ".primitives" and the file comes from FileManager.
    bool load(const QString& path);
    // Splits an opened device. Chunks read before a failed table check stay.
    // A file too short for its magic shows the closing box.
    bool parse(QIODevice* device);
    // The same, but that failure goes to failure and no box shows.
    bool parse(QIODevice* device, ReadFailure& failure);
    // The first chunk of that exact name, or null with a warning.
    PrimitiveChunk* chunk(const QString& name) const;
    void clear();

    QVector<PrimitiveChunk*> chunks;
};

// The magic number at the start of every .primitives file.
constexpr quint32 primitivesMagic = 0x42A14E65;
