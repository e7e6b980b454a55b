#include "Garage.h"

#include "Constants.h"
#include "FileManager.h"
#include "GlContext.h"
#include "Log.h"
#include "Material.h"
#include "Maths.h"
#include "Settings.h"
#include "StaticMesh.h"
#include "XmlHelpers.h"

#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>

namespace {

QString childText(const QDomElement& element, const char* tag)
{
    return element.firstChildElement(QLatin1String(tag)).text().trimmed();
}

} // namespace

Matrix garagePlacement(const QDomElement& element)
{
    Matrix placement = identityMatrix();
    const QString position = childText(element, "Position");
    if (!position.isEmpty())
        multiplyMatrix(placement, translationMatrix(parseVector3(position)));
    const QString rotation = childText(element, "Rotation");
    if (!rotation.isEmpty()) {
        const Vector4 axisAngle = parseVector4(rotation);
        multiplyMatrix(placement, rotate(identityMatrix(), axisAngle[3],
                                         Vector3{axisAngle[0], axisAngle[1], axisAngle[2]}));
    }
    const QString scale = childText(element, "Scale");
    if (!scale.isEmpty())
        multiplyMatrix(placement, scalingMatrix(parseVector3(scale)));
    return placement;
}

Garage::Garage(const QString& garageName, QObject* parent) : QObject(parent), name(garageName)
{
    if (Settings* settings = Settings::instance())
        connect(settings, &Settings::gavrelPathChanged, this, &Garage::reload);
}

Garage::~Garage()
{
    clear();
}

void Garage::load()
{
    Log::log(QStringLiteral("Loading garage."), Log::Info);
    QFile file(QDir::toNativeSeparators(QString::fromLatin1(Ferrox::DataDirectory) +
                                        QString::fromLatin1(Ferrox::GarageListName)));
    if (!file.open(QIODevice::ReadOnly)) {
        Log::log(QStringLiteral("Could not open hangar file."), Log::Error);
        return;
    }
    QDomDocument document(QString::fromLatin1(Ferrox::GarageListName));
    if (!document.setContent(&file)) {
        Log::log(QStringLiteral("Could not set XML content: hangar."), Log::Error);
        return;
    }
    file.close();

    // A garage the file doesn't name reads as an empty element: no archive,
    // no mesh, no error.
    const QDomElement garage = document.documentElement().firstChildElement(name);
    const Matrix garageMatrix =
        garagePlacement(garage.firstChildElement(QStringLiteral("Transform")));
    addArchives(garage);
    loadMeshes(garage, garageMatrix);
    makeMaterialsDoubleSided();
}

void Garage::addArchives(const QDomElement& garage)
{
    const Settings* settings = Settings::instance();
    const QString gamePath = settings ? settings->gavrelPath : QString();
    FileManager* files = FileManager::instance();
    const QDomNodeList zips = garage.elementsByTagName(QString::fromLatin1(Ferrox::ArchiveTag));
    for (int i = 0; i < zips.size(); ++i) {
        const QString relative = zips.at(i).toElement().text().trimmed();
        if (relative.isEmpty())
            continue;
        const QString path = QDir::toNativeSeparators(
            gamePath + QString::fromLatin1(Ferrox::PackageFolder) + relative);
        // The meshes inside fail next, each with its own warning.
        if (!files || !files->addArchive(path, true))
            Log::log(QStringLiteral("Failed to add zip archive for garage: ") + path, Log::Warning);
    }
}

void Garage::loadMeshes(const QDomElement& garage, const Matrix& garageMatrix)
{
    const QDomNodeList entries = garage.elementsByTagName(QStringLiteral("Mesh"));
    for (int i = 0; i < entries.size(); ++i) {
        const QDomElement entry = entries.at(i).toElement();
        const QString file = childText(entry, "File");
        if (file.isEmpty())
            continue;
        Matrix placement = garageMatrix;
        multiplyMatrix(placement, garagePlacement(entry));
        auto* mesh = new StaticMesh;
        if (!mesh->load(file, placement)) {
            Log::log(QStringLiteral("Failed to load hangar mesh: ") + file, Log::Warning);
            delete mesh;
            continue;
        }
        meshes.append(mesh);
    }
}

// The hangar's walls are seen from inside and outside as the camera orbits.
void Garage::makeMaterialsDoubleSided()
{
    for (StaticMesh* mesh : std::as_const(meshes)) {
        if (!mesh->visual)
            continue;
        for (RenderSet* set : std::as_const(mesh->visual->renderSets))
            for (RenderGeometry* geometry : std::as_const(set->geometries))
                for (GroupMaterials* group : std::as_const(geometry->groups))
                    for (Material* material : std::as_const(group->materials))
                        if (material)
                            material->doubleSided = true;
    }
}

void Garage::reload()
{
    // A new game path arrives in a slot, between frames; the meshes' GL
    // objects belong to the program's context.
    GlContextScope scope;
    clear();
    load();
}

void Garage::clear()
{
    qDeleteAll(meshes);
    meshes.clear();
}

void Garage::draw()
{
    for (StaticMesh* mesh : std::as_const(meshes))
        mesh->draw(false, 1, nullptr, nullptr);
}

int Garage::triangleCount() const
{
    int count = 0;
    for (const StaticMesh* mesh : meshes)
        if (mesh->visual)
            count += mesh->visual->triangleCount();
    return count;
}

BasicGarage::BasicGarage(QObject* parent) : Garage(QStringLiteral("Basic"), parent) {}

void BasicGarage::load()
{
    Garage::load();
}

PremiumGarage::PremiumGarage(QObject* parent) : Garage(QStringLiteral("Premium"), parent) {}

void PremiumGarage::load()
{
    Garage::load();
}
