// Arbitrary bytes as a nation's customization.xml, packed or plain: read its
// patterns as the camouflage loader does, without GL. Nothing may crash,
// hang or read outside the data.

#include "CamoCatalogue.h"
#include "FuzzDocument.h"

#include <QDomDocument>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const FuzzDocument read = readFuzzDocument(data, size, QStringLiteral("customization.xml"));
    const QDomDocument& document = read.document;
    readCamoCatalogue(document.firstChildElement(), QStringLiteral("nation"));
    return 0;
}
