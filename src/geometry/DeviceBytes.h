#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QIODevice>

// Every byte of a readable device from its start. FileManager hands out
// resources as QBuffers: their bytes are shared rather than copied, since a
// copy of a large texture or geometry file costs as much as inflating it.
inline QByteArray wholeDevice(QIODevice* device)
{
    if (auto* buffer = qobject_cast<QBuffer*>(device))
        return buffer->data();
    device->seek(0);
    return device->readAll();
}

// The same for a caller done with the device: a QBuffer hands its bytes over
// and is left empty, so that they are not shared and can be changed in place
// without a copy.
inline QByteArray takeWholeDevice(QIODevice* device)
{
    if (auto* buffer = qobject_cast<QBuffer*>(device)) {
        QByteArray bytes;
        bytes.swap(buffer->buffer());
        return bytes;
    }
    return wholeDevice(device);
}
