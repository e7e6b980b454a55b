#pragma once

#include "ReadFailure.h"

#include <QByteArray>
#include <QChar>

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
