#include "PrimitiveParser.h"

#include "BinaryReader.h"
#include "DeviceBytes.h"
#include "FileManager.h"
#include "Log.h"
#include "ModelFiles.h"
#include "ReadFailure.h"

#include <QIODevice>
#include <QtEndian>

#include <memory>

namespace {
// A chunk larger than this is taken for a damaged table rather than data.
constexpr qint64 MaxChunkSize = 0x10100000;
constexpr qint64 MaxNameLength = 4096;
// The table entry's fields in front of the name: size word, 16 reserved
// bytes, name length.
constexpr qint64 ReservedBytes = 16;

qint64 roundUpToFour(qint64 value)
{
    return (value + 3) & ~qint64(3);
}

// Callers have checked that four bytes are there.
quint32 wordAt(const QByteArray& bytes, qint64 offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

// Walks the chunk table at the end of the file. Every offset is a 64-bit
// value, so no sum of file values can wrap; each payload copy is covered by
// size + P <= T, and T lies inside the file.
bool splitChunks(const QByteArray& file, QVector<PrimitiveChunk*>& chunks)
{
    const qint64 fileSize = file.size();
    if (fileSize < 8)
        return false;
    const qint64 tableLength = wordAt(file, fileSize - 4);
    const qint64 tableStart = fileSize - tableLength - 4;
    if (tableStart < 4 || tableStart >= fileSize - 4)
        return false;
    if (tableStart > fileSize - 12)
        return true; // a table too short for one entry: no chunks

    qint64 payload = 4;
    qint64 entry = tableStart;
    while (entry <= fileSize - 12) {
        qint64 size = wordAt(file, entry);
        entry += 4;
        // Only a complete entry carries the flag bit and the reserved bytes.
        if (entry + ReservedBytes <= fileSize - 8) {
            size &= 0x7FFFFFFF;
            entry += ReservedBytes;
        }
        const qint64 nameLength = wordAt(file, entry);
        entry += 4;

        if (size > MaxChunkSize || size + payload > tableStart || nameLength > MaxNameLength ||
            nameLength + entry > fileSize - 4)
            return false;

        auto* chunk = new PrimitiveChunk;
        chunk->name = QString::fromLatin1(file.constData() + entry, int(nameLength));
        chunk->size = quint32(size);
        chunk->data = file.mid(payload, size);
        chunks.append(chunk);

        entry += roundUpToFour(nameLength);
        payload += roundUpToFour(size);
    }
    return true;
}
} // namespace

PrimitiveParser::~PrimitiveParser()
{
    clear();
}

bool PrimitiveParser::load(const QString& path)
{
    QString primitivesPath = path;
    primitivesPath.replace(QLatin1String(".model"), QLatin1String(".primitives"));

    ReadFailure failure;
    std::unique_ptr<QIODevice> device(
        openModelFile(FileManager::instance(), primitivesPath, primitivesPath, failure));
    failure.showClosingBox();
    if (!device) {
        Log::log(QStringLiteral("Failed loading: ") + primitivesPath, Log::Warning);
        return false;
    }
    if (!device->isOpen() && !device->open(QIODevice::ReadOnly)) {
        Log::log(QStringLiteral("Binary reader Failed loading: ") + primitivesPath, Log::Warning);
        return false;
    }
    if (!parse(device.get())) {
        Log::log(QStringLiteral("PrimitiveParser parser Failed loading: ") + primitivesPath,
                 Log::Warning);
        return false;
    }
    return true;
}

bool PrimitiveParser::parse(QIODevice* device)
{
    ReadFailure failure;
    const bool parsed = parse(device, failure);
    failure.showClosingBox();
    return parsed;
}

bool PrimitiveParser::parse(QIODevice* device, ReadFailure& failure)
{
    clear();
    BinaryReader reader(device);
    reader.seek(0);
    const quint32 magic = quint32(reader.readInt());
    if (reader.failed()) {
        failure.record(reader.failure().message());
        return false;
    }
    if (magic != primitivesMagic) {
        Log::log(QStringLiteral("Binary header incorrect."), Log::Warning);
        return false;
    }
    return splitChunks(wholeDevice(device), chunks);
}

PrimitiveChunk* PrimitiveParser::chunk(const QString& name) const
{
    for (PrimitiveChunk* candidate : chunks) {
        if (candidate->name == name)
            return candidate;
    }
    Log::log(QStringLiteral("Could not locate data chunk: ") + name, Log::Warning);
    return nullptr;
}

void PrimitiveParser::clear()
{
    qDeleteAll(chunks);
    chunks.clear();
}
