#include "VehicleFile.h"

#include "Log.h"
#include "MoReaderCached.h"

#include <QFileInfo>

namespace {

// Without a MoReaderCached (tools, tests) keys stay keys.
QString translate(const QString& text)
{
    MoReaderCached* reader = MoReaderCached::instance();
    return reader ? reader->translate(text) : text;
}

// The element at a slash-separated path below element; null if any step is
// missing. "*" takes the first child element, whatever its tag.
QDomElement at(const QDomElement& element, const QString& path)
{
    QDomElement current = element;
    for (const QString& step : path.split(QLatin1Char('/'))) {
        current = step == QLatin1String("*") ? current.firstChildElement()
                                             : current.firstChildElement(step);
        if (current.isNull())
            break;
    }
    return current;
}

QString textAt(const QDomElement& element, const QString& path)
{
    return at(element, path).text().trimmed();
}

Vector3 mirroredPosition(const QString& text)
{
    Vector3 position = parseVector3(text);
    position[0] = -position[0];
    return position;
}

VehicleBody readBody(const QDomElement& element)
{
    VehicleBody body;
    body.undamagedModel = textAt(element, QStringLiteral("models/undamaged"));
    body.destroyedModel = textAt(element, QStringLiteral("models/destroyed"));
    body.collisionModel = textAt(element, QStringLiteral("hitTester/collisionModel"));
    body.maxHealth = textAt(element, QStringLiteral("maxHealth")).toInt();
    return body;
}

// A part's own mask, or the vehicle's; tiling only with a mask of its own.
void readCamouflage(const QDomElement& element, const QString& vehicleMask, QString& mask,
                    Vector4& tiling)
{
    mask = textAt(element, QStringLiteral("camouflage/exclusionMask"));
    tiling = {1, 1, 1, 1};
    if (mask.isEmpty()) {
        mask = vehicleMask;
        return;
    }
    const QString tilingText = textAt(element, QStringLiteral("camouflage/tiling"));
    if (!tilingText.isEmpty())
        tiling = parseVector4(tilingText);
}

class Reader
{
public:
    Reader(const QDomDocument& gunDocument, int start)
        : sharedGuns(gunDocument.documentElement().firstChildElement(QStringLiteral("shared"))),
          startIndex(start)
    {
    }

    Turret readTurret(const QDomElement& element, const VehicleFile& vehicle);
    Gun readGun(const QDomElement& element, const QString& turretUserString,
                const QString& vehicleMask);
    void readExtraPitchLimits(const QDomElement& element, Gun& gun) const;
    // The gun's own limit text, else for a shared gun the gun file's.
    QString limitText(const QDomElement& element, const QString& tag, const QString& name) const;

    QDomElement sharedGuns;
    int startIndex;
    bool lastGunShared = false;
};

Turret Reader::readTurret(const QDomElement& element, const VehicleFile& vehicle)
{
    Turret turret;
    turret.tag = element.tagName();
    const QString userString = textAt(element, QStringLiteral("userString"));
    turret.name = translate(userString);
    turret.undamagedModel = textAt(element, QStringLiteral("models/undamaged"));
    turret.destroyedModel = textAt(element, QStringLiteral("models/destroyed"));
    turret.collisionModel = textAt(element, QStringLiteral("hitTester/collisionModel"));
    turret.maxHealth = textAt(element, QStringLiteral("maxHealth")).toInt();
    readCamouflage(element, vehicle.vehicleMask, turret.exclusionMask, turret.tiling);
    QString yawLimits = textAt(element, QStringLiteral("yawLimits"));
    if (yawLimits.isEmpty())
        yawLimits = QStringLiteral("-180 180");
    const Vector2 yaw = parseVector2(yawLimits);
    turret.yawMin = yaw[0];
    turret.yawMax = yaw[1];
    turret.gunPosition = mirroredPosition(textAt(element, QStringLiteral("gunPosition")));
    turret.position = vehicle.turretPosition;
    turret.hullPosition = vehicle.hullPosition;
    for (const QDomElement& gunElement :
         listedElements(element.firstChildElement(QStringLiteral("guns")), startIndex))
        turret.guns.append(readGun(gunElement, userString, vehicle.vehicleMask));
    return turret;
}

QString Reader::limitText(const QDomElement& element, const QString& tag, const QString& name) const
{
    const QString own = textAt(element, name);
    if (!own.isEmpty() || !lastGunShared)
        return own;
    return textAt(sharedGuns, tag + QLatin1Char('/') + name);
}

Gun Reader::readGun(const QDomElement& element, const QString& turretUserString,
                    const QString& vehicleMask)
{
    Gun gun;
    lastGunShared =
        element.text().trimmed().startsWith(QLatin1String("shared"), Qt::CaseInsensitive);
    gun.tag = element.tagName();
    gun.undamagedModel = textAt(element, QStringLiteral("models/undamaged"));
    gun.destroyedModel = textAt(element, QStringLiteral("models/destroyed"));
    gun.collisionModel = textAt(element, QStringLiteral("hitTester/collisionModel"));

    const Vector2 pitch = parseVector2(limitText(element, gun.tag, QStringLiteral("pitchLimits")));
    gun.pitchMin = -pitch[1];
    gun.pitchMax = -pitch[0];
    const Vector2 yaw =
        parseVector2(limitText(element, gun.tag, QStringLiteral("turretYawLimits")));
    gun.yawMin = yaw[0];
    gun.yawMax = yaw[1];

    readCamouflage(element, vehicleMask, gun.exclusionMask, gun.tiling);
    readExtraPitchLimits(element, gun);
    QDomElement shots = element.firstChildElement(QStringLiteral("shots"));
    if (shots.isNull())
        shots = at(sharedGuns, gun.tag + QStringLiteral("/shots"));
    gun.shells = readShots(shots, gun.tag);

    if (lastGunShared)
        gun.name = translate(textAt(sharedGuns, gun.tag + QStringLiteral("/userString")));
    else
        gun.name = translate(turretUserString.section(QLatin1Char(':'), 0, 0) + QLatin1Char(':') +
                             gun.tag);
    return gun;
}

void Reader::readExtraPitchLimits(const QDomElement& element, Gun& gun) const
{
    const QDomElement limits = element.firstChildElement(QStringLiteral("extraPitchLimits"));
    if (limits.text().trimmed().isEmpty())
        return;
    for (const QDomElement& child : listedElements(limits, startIndex)) {
        const QString tag = child.tagName();
        if (tag == QLatin1String("back"))
            gun.back = parseVector3(child.text().trimmed());
        else if (tag == QLatin1String("front"))
            gun.front = parseVector3(child.text().trimmed());
        else
            Log::log(QStringLiteral("Found an unsupported pitch node: ") + tag +
                         QStringLiteral(" on gun: ") + gun.tag,
                     Log::Warning);
    }
}

// Guns of a turret that shares its name with an earlier one join that one.
void addTurret(QVector<Turret>& turrets, const Turret& turret)
{
    for (Turret& earlier : turrets) {
        if (earlier.name == turret.name) {
            earlier.guns += turret.guns;
            return;
        }
    }
    turrets.append(turret);
}

} // namespace

// The child elements of a list element, from the document's start index on.
QVector<QDomElement> listedElements(const QDomElement& list, int startIndex)
{
    QVector<QDomElement> elements;
    const QDomNodeList children = list.childNodes();
    for (int i = startIndex; i < children.size(); ++i)
        if (children.at(i).isElement())
            elements.append(children.at(i).toElement());
    return elements;
}

QString VehicleFile::assemblyProblem() const
{
    if (turrets.isEmpty())
        return QStringLiteral("the vehicle file has no turret");
    for (const Turret& turret : turrets)
        if (turret.guns.isEmpty())
            return QStringLiteral("turret ") + turret.tag + QStringLiteral(" has no gun");
    return QString();
}

QString gunFilePath(const QString& vehicleFilePath)
{
    return QFileInfo(vehicleFilePath).path() + QStringLiteral("/components/guns.xml");
}

QString shellFilePath(const QString& vehicleFilePath)
{
    return QFileInfo(vehicleFilePath).path() + QStringLiteral("/components/shells.xml");
}

VehicleFile readVehicleFile(const QDomDocument& vehicle, bool plainText,
                            const QDomDocument& gunFile, const QDomDocument& shellFile)
{
    VehicleFile file;
    file.startIndex = plainText ? 0 : 1;
    const QDomElement root = vehicle.documentElement();
    const QDomElement hull = root.firstChildElement(QStringLiteral("hull"));
    const QDomElement chassis = at(root, QStringLiteral("chassis/*"));

    file.vehicleMask = textAt(root, QStringLiteral("camouflage/exclusionMask"));
    file.chassisMask = file.vehicleMask;
    file.hullMask = file.vehicleMask.isEmpty()
                        ? textAt(hull, QStringLiteral("camouflage/exclusionMask"))
                        : file.vehicleMask;

    file.hull = readBody(hull);
    file.turretPosition = mirroredPosition(textAt(hull, QStringLiteral("turretPositions/turret")));
    file.chassis = readBody(chassis);
    file.chassis.collisionModel.replace(QLatin1String("//"), QLatin1String("/"));
    file.hullPosition = mirroredPosition(textAt(chassis, QStringLiteral("hullPosition")));

    Reader reader(gunFile, file.startIndex);
    for (const QDomElement& element :
         listedElements(root.firstChildElement(QStringLiteral("turrets0")), file.startIndex))
        addTurret(file.turrets, reader.readTurret(element, file));
    file.lastGunShared = reader.lastGunShared;
    for (Turret& turret : file.turrets)
        for (Gun& gun : turret.guns)
            describeShells(gun.shells, shellFile.documentElement());
    return file;
}
