#pragma once

#include "TurretGunChooser.h"
#include "XmlHelpers.h"

#include <QDomDocument>
#include <QString>
#include <QVector>

// Model paths and hit points of the hull or the chassis.
struct VehicleBody
{
    QString undamagedModel;
    QString destroyedModel;
    QString collisionModel;
    int maxHealth = 0;
};

// What the assembly takes from a vehicle file and the shared gun file beside
// it. Reading needs no GL, no window and no file lookup: the documents come
// in already read.
struct VehicleFile
{
    // Index of the first element in any childNodes() list of the vehicle
    // document: a packed document gives each element its own value as a
    // text node in front of its children, plain text does not.
    int startIndex = 0;
    QString vehicleMask;
    QString chassisMask;
    QString hullMask;
    VehicleBody hull;
    VehicleBody chassis;
    Vector3 turretPosition{0, 0, 0};
    Vector3 hullPosition{0, 0, 0};
    // In file order; turrets of one translated name merged into the first.
    QVector<Turret> turrets;
    // Whether the last gun read took its data from the gun file.
    bool lastGunShared = false;

    // Empty when the vehicle can be assembled; otherwise why not.
    QString assemblyProblem() const;
};

// The resource path of the shared gun file of a vehicle file.
QString gunFilePath(const QString& vehicleFilePath);
// The resource path of the nation's shell file beside it.
QString shellFilePath(const QString& vehicleFilePath);

// The child elements of a list element, from the document's start index on.
QVector<QDomElement> listedElements(const QDomElement& list, int startIndex);

// Reads the vehicle document. gunFile may be an empty document: shared guns
// then have no limits or names of their own beyond the vehicle file's. So
// may shellFile: the guns' shells then have no kind, calibre or name.
VehicleFile readVehicleFile(const QDomDocument& vehicle, bool plainText,
                            const QDomDocument& gunFile,
                            const QDomDocument& shellFile = QDomDocument());
