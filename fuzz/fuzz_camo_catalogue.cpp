// Arbitrary bytes as a nation's customization.xml, packed or plain: read its
// patterns as the camouflage loader does, without GL. Nothing may crash,
// hang or read outside the data.

#include "BinaryReader.h"
#include "CamoCatalogue.h"
#include "PackedXmlReader.h"
#include "QuietMessageBoxes.h"

#include <QBuffer>
#include <QByteArray>
#include <QDomDocument>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    answerBoxesQuietly();
    QBuffer buffer;
    buffer.setData(reinterpret_cast<const char*>(data), qsizetype(size));
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    const QDomDocument document = reader.read(QStringLiteral("customization.xml"));
    readCamoCatalogue(document.firstChildElement(), QStringLiteral("nation"));
    return 0;
}
