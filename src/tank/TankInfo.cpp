#include "TankInfo.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "ModelFiles.h"
#include "PackedXmlReader.h"
#include "ReadFailure.h"
#include "VehicleFile.h"

#include <QRegularExpression>

#include <memory>

namespace {

bool containsCaseless(const QStringList& list, const QString& path)
{
    return list.contains(path, Qt::CaseInsensitive);
}

QDomDocument readResource(QIODevice* device, const QString& name)
{
    if (!device)
        return QDomDocument();
    BinaryReader binary(device);
    PackedXmlReader reader(&binary);
    return reader.read(name);
}

QString visualPath(const QDomElement& part, const QString& stateName)
{
    QString path = part.firstChildElement(QStringLiteral("models"))
                       .firstChildElement(stateName)
                       .text()
                       .trimmed();
    path.replace(QLatin1String(".model"), QLatin1String(".visual"));
    return path;
}

QString exclusionMask(const QDomElement& element)
{
    return element.firstChildElement(QStringLiteral("camouflage"))
        .firstChildElement(QStringLiteral("exclusionMask"))
        .text()
        .trimmed();
}

// The kind a material property names, or -1.
int propertyKind(const QDomElement& property)
{
    static const QPair<const char*, TankInfo::Kind> names[] = {
        {"diffuseMap", TankInfo::Diffuse},
        {"normalMap", TankInfo::Normal},
        {"specularMap", TankInfo::Specular},
        {"metallicGlossMap", TankInfo::MetallicGloss},
        {"metallicDetailMap", TankInfo::MetallicDetail},
    };
    for (QDomNode node = property.firstChild(); !node.isNull(); node = node.nextSibling())
        for (const auto& [name, kind] : names)
            if (node.nodeValue().trimmed() == QLatin1String(name))
                return kind;
    return -1;
}

} // namespace

TankInfo::TankInfo(QObject* parent) : QObject(parent) {}

QStringList& TankInfo::listOf(Kind kind)
{
    const bool destroyed = currentState == 1;
    switch (kind) {
    case Diffuse:
        return destroyed ? destroyedDiffuseTextures : diffuseTextures;
    case Normal:
        return destroyed ? destroyedNormalTextures : normalTextures;
    case Specular:
        return destroyed ? destroyedSpecularTextures : specularTextures;
    case MetallicGloss:
        return destroyed ? destroyedMetallicGlossTextures : metallicGlossTextures;
    case MetallicDetail:
        return metallicDetailTextures;
    case Exclusion:
        return exclusionTextures;
    case Texformat:
        break;
    }
    return texformatFiles;
}

void TankInfo::addTexture(Kind kind, const QString& path)
{
    if (path.isEmpty())
        return;
    if (!containsCaseless(allTextureFiles, path))
        allTextureFiles.append(path);
    QStringList& list = listOf(kind);
    if (!containsCaseless(list, path))
        list.append(path);
}

void TankInfo::clear()
{
    for (QStringList* list :
         {&diffuseTextures, &specularTextures, &normalTextures, &exclusionTextures,
          &metallicGlossTextures, &metallicDetailTextures, &texformatFiles,
          &destroyedDiffuseTextures, &destroyedSpecularTextures, &destroyedNormalTextures,
          &destroyedMetallicGlossTextures, &allTextureFiles, &collisionTextures})
        list->clear();
}

void TankInfo::parse(const QDomDocument& vehicleDocument, int startIndex)
{
    clear();
    // The document element, so that a declaration in front of a plain text
    // file does not hide it.
    const QDomElement root = vehicleDocument.documentElement();
    currentState = 1;
    collect(root, QStringLiteral("destroyed"), false, startIndex);
    currentState = 0;
    collect(root, QStringLiteral("undamaged"), true, startIndex);
}

void TankInfo::collect(const QDomElement& root, const QString& stateName, bool withMasks,
                       int startIndex)
{
    currentStateName = stateName;
    const QString hullVisual =
        visualPath(root.firstChildElement(QStringLiteral("hull")), stateName);
    const QString chassisVisual = visualPath(
        root.firstChildElement(QStringLiteral("chassis")).firstChildElement(), stateName);
    addTexture(Exclusion, exclusionMask(root));

    QStringList turretVisuals;
    QStringList gunVisuals;
    for (const QDomElement& turret :
         listedElements(root.firstChildElement(QStringLiteral("turrets0")), startIndex)) {
        if (withMasks)
            addTexture(Exclusion, exclusionMask(turret));
        turretVisuals.append(visualPath(turret, stateName));
        for (const QDomElement& gun :
             listedElements(turret.firstChildElement(QStringLiteral("guns")), startIndex))
            gunVisuals.append(visualPath(gun, stateName));
    }

    readVisual(hullVisual);
    readVisual(chassisVisual);
    for (const QString& path : std::as_const(turretVisuals))
        readVisual(path);
    for (const QString& path : std::as_const(gunVisuals))
        readVisual(path);
}

void TankInfo::readVisual(const QString& path)
{
    FileManager* files = FileManager::instance();
    if (!files || path.isEmpty())
        return;
    // Current clients keep the visual as "<name>.visual_processed".
    ReadFailure failure;
    QString pathInUse;
    std::unique_ptr<QIODevice> device(openModelFile(files, path, pathInUse, failure));
    failure.showClosingBox();
    const QDomDocument document = readResource(device.get(), pathInUse);
    const QDomNodeList renderSets = document.elementsByTagName(QStringLiteral("renderSet"));
    for (int i = 0; i < renderSets.size(); ++i) {
        const QDomElement geometry =
            renderSets.at(i).toElement().firstChildElement(QStringLiteral("geometry"));
        const QDomNodeList groups = geometry.elementsByTagName(QStringLiteral("primitiveGroup"));
        for (int j = 0; j < groups.size(); ++j)
            readMaterial(groups.at(j).toElement().firstChildElement(QStringLiteral("material")));
    }
}

void TankInfo::readMaterial(const QDomElement& material)
{
    for (QDomElement property = material.firstChildElement(QStringLiteral("property"));
         !property.isNull(); property = property.nextSiblingElement(QStringLiteral("property"))) {
        const int kind = propertyKind(property);
        if (kind < 0)
            continue;
        QString path = property.firstChildElement(QStringLiteral("Texture")).text().trimmed();
        if (path.isEmpty() && (kind == MetallicGloss || kind == MetallicDetail))
            continue;
        if (path.split(QLatin1Char('.')).size() < 2)
            path += QLatin1String(".dds");
        addTexture(Kind(kind), path);
        addTexture(Kind(kind), resolveTexformat(path));
    }
}

QString TankInfo::resolveTexformat(const QString& path)
{
    FileManager* files = FileManager::instance();
    QString texformat = path;
    texformat.replace(QLatin1String(".dds"), QLatin1String(".texformat"), Qt::CaseInsensitive);
    if (!files || !files->existsInArchives(texformat))
        return QString();
    addTexture(Texformat, texformat);
    std::unique_ptr<QIODevice> device(files->openArchiveFile(texformat));
    const QDomDocument document = readResource(device.get(), texformat);
    const QString mip = document.documentElement()
                            .firstChildElement()
                            .firstChildElement(QStringLiteral("mip"))
                            .text()
                            .trimmed();
    addTexture(Texformat, mip);
    return mip;
}

QStringList TankInfo::allTextures() const
{
    return allTextureFiles;
}

QStringList TankInfo::paintableTextures() const
{
    QStringList paintable;
    static const QRegularExpression excluded(QStringLiteral("track|bottoms|equipment"),
                                             QRegularExpression::CaseInsensitiveOption);
    for (const QString& path : diffuseTextures)
        if (!path.contains(excluded))
            paintable.append(path);
    return paintable;
}
