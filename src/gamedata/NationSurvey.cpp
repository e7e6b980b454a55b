#include "NationSurvey.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "PackedXmlReader.h"
#include "ReadFailure.h"
#include "Settings.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QMap>

#include <memory>

namespace {
const QString VehicleFolder = QStringLiteral("scripts/item_defs/vehicles/");

// Nation folders with a list.xml below one directory on disk.
QStringList foldersOnDisk(const QString& vehiclesDirectory)
{
    QStringList found;
    const QDir directory(vehiclesDirectory);
    for (const QString& folder : directory.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (QFile::exists(directory.filePath(folder + QStringLiteral("/list.xml"))))
            found.append(folder);
    return found;
}

// Nation folders of "scripts/item_defs/vehicles/<nation>/list.xml" members.
QStringList foldersInArchives()
{
    QStringList found;
    const FileManager* files = FileManager::instance();
    if (!files)
        return found;
    const QByteArray prefix = VehicleFolder.toLatin1();
    for (int number = 0; number < files->archiveCount(); ++number) {
        for (const ZipArchive::Member& member : files->archive(number).members()) {
            const QByteArray lower = member.name.toLower();
            if (!lower.startsWith(prefix) || !lower.endsWith("/list.xml"))
                continue;
            const QByteArray folder =
                member.name.mid(prefix.size(), member.name.size() - prefix.size() - 9);
            if (!folder.isEmpty() && !folder.contains('/'))
                found.append(QString::fromUtf8(folder));
        }
    }
    return found;
}

QDomDocument readResource(const QString& name)
{
    FileManager* files = FileManager::instance();
    ReadFailure failure;
    std::unique_ptr<QIODevice> device(files ? files->findFile(name, failure) : nullptr);
    if (!device)
        return QDomDocument();
    BinaryReader reader(device.get());
    PackedXmlReader xml(&reader);
    return xml.read(name, failure);
}
} // namespace

QStringList NationSurvey::unlistedNations(const QStringList& namedNations)
{
    const QString modPath = currentModPath();
    QStringList candidates;
    if (!modPath.isEmpty())
        candidates += foldersOnDisk(modPath + QLatin1Char('/') + VehicleFolder);
    candidates += foldersOnDisk(currentGamePath() + QStringLiteral("/res/") + VehicleFolder);
    candidates += foldersInArchives();

    QMap<QString, QString> byFoldedName; // sorted by name, first spelling kept
    for (const QString& named : namedNations)
        byFoldedName.insert(named.toCaseFolded(), QString());
    for (const QString& folder : std::as_const(candidates))
        if (!byFoldedName.contains(folder.toCaseFolded()))
            byFoldedName.insert(folder.toCaseFolded(), folder);
    QStringList result;
    for (const QString& folder : std::as_const(byFoldedName))
        if (!folder.isEmpty())
            result.append(folder);
    return result;
}

QString NationSurvey::listPath(const QString& nation)
{
    return VehicleFolder + nation + QStringLiteral("/list.xml");
}

QString NationSurvey::dataPathFromVehicles(const QString& nation, const QDomElement& listRoot)
{
    for (QDomElement vehicle = listRoot.firstChildElement(); !vehicle.isNull();
         vehicle = vehicle.nextSiblingElement()) {
        const QString file =
            (VehicleFolder + nation + QLatin1Char('/') + vehicle.tagName() + QStringLiteral(".xml"))
                .toLower();
        const QString model = readResource(file)
                                  .documentElement()
                                  .firstChildElement(QStringLiteral("hull"))
                                  .firstChildElement(QStringLiteral("models"))
                                  .firstChildElement(QStringLiteral("undamaged"))
                                  .text()
                                  .trimmed();
        const QStringList parts = model.split(QLatin1Char('/'));
        if (parts.size() > 2 && !parts[0].isEmpty() && !parts[1].isEmpty())
            return parts[0] + QLatin1Char('/') + parts[1];
    }
    return QString();
}
