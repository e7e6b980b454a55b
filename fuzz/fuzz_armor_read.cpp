// Arbitrary bytes as a vehicle file, packed or plain: read its armour for
// the first turret and the first gun it names, as a load does, then build
// the thickness colours and the two armour lists. The same document serves
// as the shared gun file. Nothing may crash, hang or read outside the data.

#include "CollisionArmor.h"
#include "FuzzDocument.h"
#include "VehicleFile.h"

#include <QDomDocument>

#include <cstddef>
#include <cstdint>

namespace {

ArmorSource sourceFor(const QDomDocument& document, bool plainText, bool sharedGun)
{
    ArmorSource source;
    source.vehicle = document;
    source.guns = document;
    source.startIndex = plainText ? 0 : 1;
    source.sharedGun = sharedGun;
    const QVector<QDomElement> turrets =
        listedElements(document.documentElement().firstChildElement(QStringLiteral("turrets0")),
                       source.startIndex);
    if (turrets.isEmpty())
        return source;
    const QString userString =
        turrets.first().firstChildElement(QStringLiteral("userString")).text();
    source.turret = userString;
    const QVector<QDomElement> guns = listedElements(
        turrets.first().firstChildElement(QStringLiteral("guns")), source.startIndex);
    if (!guns.isEmpty())
        source.gun =
            userString.section(QLatin1Char(':'), 0, 0) + QLatin1Char(':') + guns.first().tagName();
    return source;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const FuzzDocument read = readFuzzDocument(data, size, QStringLiteral("vehicle.xml"));
    const QDomDocument& document = read.document;
    // A fresh table each run: its old list models go with it, as no event
    // loop runs here to take them on deleteLater.
    CollisionArmor armor;
    for (const bool sharedGun : {false, true}) {
        armor.read(sourceFor(document, read.plainText, sharedGun));
        armor.finish();
        for (const float value : armor.regularValues)
            armor.colourFor(value, false, false);
        for (const float value : armor.spacedValues)
            armor.colourFor(value, true, false);
        if (!armor.regularValues.isEmpty())
            armor.toggleRegularSelection(armor.regularValues.first());
    }
    return 0;
}
