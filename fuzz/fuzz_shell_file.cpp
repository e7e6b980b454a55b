// Arbitrary bytes as a gun file's shots or a nation's shell file, packed or
// plain: every element of the document is read as a shots list, and the
// shells found are described by the same document as their shell file,
// then asked for their type and penetration. Nothing may crash, hang or
// read outside the data.

#include "FuzzDocument.h"
#include "GunShells.h"

#include <QDomDocument>

#include <cstddef>
#include <cstdint>

namespace {

void readEvery(const QDomElement& element, const QDomElement& root, int depth)
{
    if (element.isNull() || depth > 8)
        return;
    QVector<Shell> shells = readShots(element, QStringLiteral("fuzz"));
    describeShells(shells, root);
    for (const Shell& shell : shells) {
        shell.shellType();
        shell.normalization();
        for (const float distance : {-1.0f, 0.0f, 250.0f, 1e9f})
            shell.penetrationAt(distance);
    }
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        readEvery(child, root, depth + 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const FuzzDocument read = readFuzzDocument(data, size, QStringLiteral("shells.xml"));
    const QDomElement root = read.document.documentElement();
    readEvery(root, root, 0);
    return 0;
}
