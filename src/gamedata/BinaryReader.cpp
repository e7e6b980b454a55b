#include "BinaryReader.h"

#include <QIODevice>
#include <QtEndian>

#include <cstring>

namespace {
// readCString looks ahead this many bytes at a time, so a missing terminator
// costs at most one chunk beyond the data and never a scan past its end.
constexpr qint64 CStringChunk = 64;
// A device that cannot tell its size up front is read in pieces of this
// size, so a bogus count allocates no more than the data delivers.
constexpr qint64 SequentialChunk = 64 * 1024;
} // namespace

BinaryReader::BinaryReader(QIODevice* device) : input(device) {}

bool BinaryReader::readExactly(char* target, qint64 count, const char* message)
{
    if (failed())
        return false;
    if (input->read(target, count) == count)
        return true;
    fail(message);
    return false;
}

qint32 BinaryReader::readInt()
{
    char bytes[4];
    if (!readExactly(bytes, 4, "Error reading data: readInt()"))
        return 0;
    return qFromLittleEndian<qint32>(bytes);
}

qint16 BinaryReader::readShort()
{
    char bytes[2];
    if (!readExactly(bytes, 2, "Error reading data: readShort()"))
        return 0;
    return qFromLittleEndian<qint16>(bytes);
}

QChar BinaryReader::readChar()
{
    char byte = 0;
    if (!readExactly(&byte, 1, "Error reading data: readChar()"))
        return QChar();
    return QChar::fromLatin1(byte);
}

qint8 BinaryReader::readCharSigned()
{
    char byte = 0;
    if (!readExactly(&byte, 1, "Error reading data: readCharSigned()"))
        return 0;
    return qint8(byte);
}

float BinaryReader::readFloat()
{
    char bytes[4];
    if (!readExactly(bytes, 4, "Error reading data: readFloat()"))
        return 0.0f;
    const quint32 bits = qFromLittleEndian<quint32>(bytes);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

QByteArray BinaryReader::readCString()
{
    QByteArray result;
    if (failed())
        return result;
    for (;;) {
        const QByteArray chunk = input->peek(CStringChunk);
        if (chunk.isEmpty()) {
            fail("Error reading data: peek");
            return result;
        }
        const qsizetype zero = chunk.indexOf('\0');
        const qint64 take = zero < 0 ? chunk.size() : zero;
        const QByteArray part = input->read(take);
        result.append(part);
        if (part.size() != take) {
            fail("Error reading data: readChar()");
            return result;
        }
        if (zero >= 0)
            return result;
    }
}

QByteArray BinaryReader::readBytes(qint64 count, const char* message)
{
    if (count <= 0 || failed())
        return QByteArray();
    if (!input->isSequential()) {
        if (count > remaining()) {
            fail(message);
            return QByteArray();
        }
        QByteArray result = input->read(count);
        if (result.size() != count) {
            fail(message);
            return QByteArray();
        }
        return result;
    }
    // The data may still be on its way: grow with what really arrives.
    QByteArray result;
    while (result.size() < count) {
        const QByteArray part = input->read(qMin(count - result.size(), SequentialChunk));
        if (part.isEmpty()) {
            fail(message);
            return QByteArray();
        }
        result.append(part);
    }
    return result;
}

QByteArray BinaryReader::readAll()
{
    return input->readAll();
}

bool BinaryReader::skip(qint64 count)
{
    if (count <= 0)
        return count == 0;
    return input->skip(count) == count;
}

bool BinaryReader::seek(qint64 position)
{
    return input->seek(position);
}

qint64 BinaryReader::position() const
{
    return input->pos();
}

qint64 BinaryReader::remaining() const
{
    return input->bytesAvailable();
}

void BinaryReader::fail(const char* message)
{
    readFailure.record(QString::fromLatin1(message));
}

QByteArray ByteCursor::readCString()
{
    const void* zero = std::memchr(at, 0, size_t(end - at));
    if (!zero) {
        reader.fail("Error reading data: peek");
        return QByteArray();
    }
    const qint64 length = static_cast<const char*>(zero) - at;
    return QByteArray(take(length, "Error reading data: readChar()"), length);
}
