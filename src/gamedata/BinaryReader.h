#pragma once

#include "ReadFailure.h"

#include <QByteArray>
#include <QChar>
#include <QtEndian>

class QIODevice;

// Little-endian reads from a device, each checked against what the device
// still holds. A short read records the operation's message as the
// failure and yields 0 (or what was read); every read after it yields 0 and
// leaves the device alone. Showing the failure is the caller's business.
class BinaryReader
{
public:
    explicit BinaryReader(QIODevice* device);

    qint32 readInt();
    qint16 readShort();
    QChar readChar();
    qint8 readCharSigned();
    float readFloat();
    // Bytes up to a zero byte, which stays unread.
    QByteArray readCString();
    // Exactly count bytes, or a short read.
    QByteArray readBytes(qint64 count, const char* message);
    QByteArray readAll();

    bool skip(qint64 count);
    bool seek(qint64 position);
    qint64 position() const;
    qint64 remaining() const;

    // True once any read came up short.
    bool failed() const { return readFailure.failed(); }
    const ReadFailure& failure() const { return readFailure; }
    void fail(const char* message);

    QIODevice* device() const { return input; }

private:
    // Reads count bytes into target, or fails with message.
    bool readExactly(char* target, qint64 count, const char* message);

    QIODevice* input;
    ReadFailure readFailure;
};

// Little-endian reads from bytes already in memory, checked as BinaryReader
// checks its device: a short read records its message as the reader's
// failure, yields 0 and leaves the position where it was. For a reader that
// takes a whole document in small pieces, where a device call for each
// piece would cost more than the piece.
class ByteCursor
{
public:
    // Walks bytes from position; failures go to reader.
    ByteCursor(const QByteArray& bytes, qint64 position, BinaryReader& failures)
        : at(bytes.constData() + position), end(bytes.constData() + bytes.size()), start(at),
          reader(failures)
    {
    }

    // The next count bytes in place, or nullptr after a short read.
    const char* take(qint64 count, const char* message)
    {
        if (count < 0 || count > end - at) {
            reader.fail(message);
            return nullptr;
        }
        const char* taken = at;
        at += count;
        return taken;
    }

    qint16 readShort()
    {
        const char* bytes = take(2, "Error reading data: readShort()");
        return bytes ? qFromLittleEndian<qint16>(bytes) : 0;
    }

    qint32 readInt()
    {
        const char* bytes = take(4, "Error reading data: readInt()");
        return bytes ? qFromLittleEndian<qint32>(bytes) : 0;
    }

    qint8 readCharSigned()
    {
        const char* bytes = take(1, "Error reading data: readCharSigned()");
        return bytes ? qint8(*bytes) : 0;
    }

    // Bytes up to a zero byte, which stays unread; with no zero byte left,
    // the failure of BinaryReader's look-ahead.
    QByteArray readCString();

    qint64 remaining() const { return end - at; }
    // Bytes taken so far.
    qint64 taken() const { return at - start; }

private:
    const char* at;
    const char* end;
    const char* start;
    BinaryReader& reader;
};
