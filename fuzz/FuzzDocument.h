#pragma once

#include "BinaryReader.h"
#include "MessageBoxes.h"
#include "PackedXmlReader.h"

#include <QBuffer>
#include <QDomDocument>

#include <cstddef>
#include <cstdint>

// The readers' closing boxes would need a GUI; under the fuzzer they only
// have to return.
inline void answerBoxesQuietly()
{
    static const bool installed = [] {
        setMessageBoxHandler([](const MessageBoxRequest&) { return int(QMessageBox::Ok); });
        return true;
    }();
    (void)installed;
}

// The fuzzer's bytes read as a game XML file, packed or plain, as the
// program reads one out of an archive.
struct FuzzDocument
{
    QDomDocument document;
    bool plainText = false;
};

inline FuzzDocument readFuzzDocument(const uint8_t* data, size_t size, const QString& name)
{
    answerBoxesQuietly();
    QBuffer buffer;
    buffer.setData(reinterpret_cast<const char*>(data), qsizetype(size));
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    FuzzDocument read;
    read.document = reader.read(name);
    read.plainText = reader.plainText;
    return read;
}
