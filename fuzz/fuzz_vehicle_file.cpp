// Arbitrary bytes as a vehicle file, packed or plain: read it into turrets,
// guns and limits as the tank assembly does, without GL. The same document
// serves as the shared gun file, so that shared guns look their limits up
// in something. Nothing may crash, hang or read outside the data.

#include "FuzzDocument.h"
#include "VehicleFile.h"

#include <QDomDocument>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const FuzzDocument read = readFuzzDocument(data, size, QStringLiteral("vehicle.xml"));
    const QDomDocument& document = read.document;
    // Both start indices: a plain file read as packed and the other way
    // round must be as harmless as the right one.
    for (const bool plainText : {read.plainText, !read.plainText}) {
        const VehicleFile file = readVehicleFile(document, plainText, document);
        file.assemblyProblem();
    }
    return 0;
}
