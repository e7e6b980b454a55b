// Arbitrary bytes as a game document, packed or plain: read it, print it and
// walk it as the program's callers do. Nothing may crash, hang, read outside
// the data or allocate more than the data justifies.

#include "BinaryReader.h"
#include "PackedXmlReader.h"
#include "ReadFailure.h"
#include "XmlHelpers.h"

#include <QBuffer>
#include <QByteArray>
#include <QDomDocument>

#include <cstddef>
#include <cstdint>

namespace {
// The helpers see every text the document holds, as callers hand them in.
void walk(const QDomNode& node, int depth)
{
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isText()) {
            const QString text = child.nodeValue().trimmed();
            parseVector2(text);
            parseVector3(text);
            parseVector4(text);
        } else if (child.isElement()) {
            parseTransform(child);
            if (depth < 200)
                walk(child, depth + 1);
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QBuffer buffer;
    buffer.setData(reinterpret_cast<const char*>(data), qsizetype(size));
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    // No handler answers boxes here: a reader that showed one itself, instead
    // of handing its failure back, would need a GUI and end the run.
    ReadFailure failure;
    const QDomDocument document = reader.read(QStringLiteral("vehicles/Hull.model"), failure);
    if (failure.failed() != binary.failed())
        __builtin_trap(); // the failure handed back is the read's own
    walk(document, 0);
    document.toString(1);
    return 0;
}
