// .primitives containers from arbitrary bytes: the table walk must stay
// inside the file, and every chunk it yields must hold exactly its size.

#include "PrimitiveParser.h"
#include "ReadFailure.h"

#include <QBuffer>
#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool quiet = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return true;
    }();
    Q_UNUSED(quiet);

    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);

    PrimitiveParser parser;
    ReadFailure failure;
    parser.parse(&device, failure);
    for (const PrimitiveChunk* chunk : parser.chunks) {
        if (chunk->data.size() != qsizetype(chunk->size) || chunk->size > quint32(size))
            __builtin_trap(); // a payload is a copy of bytes that are there
        if (parser.chunk(chunk->name) == nullptr)
            __builtin_trap(); // every chunk can be found by its name
    }
    parser.chunk(QStringLiteral("Hull.vertices"));
    parser.chunk(QStringLiteral("uv2"));
    return 0;
}
