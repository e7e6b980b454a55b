#pragma once

#include <QDomElement>
#include <QString>
#include <QVector>

// One shell a gun fires: the numbers of its shot (the gun's "shots" entry)
// and its description in the nation's shell file, joined by the element
// name they share.
struct Shell
{
    QString tag;                // element name in shots and in the shell file
    QString userString;         // catalogue key
    QString name;               // translated userString; the tag when there is none
    QString kind;               // ARMOR_PIERCING, ARMOR_PIERCING_CR, ... as the file has it
    float calibre = 0;          // mm
    float piercingPower100 = 0; // mm at 100 m
    float piercingPower500 = 0; // mm at 500 m
    float speed = 0;
    float maxDistance = 0; // m; 0 when the file gives none
    float defaultPortion = 0;
    // HOLLOW_CHARGE: the fraction of its remaining penetration lost per
    // 10 cm of free travel after the first plate.
    float lossFactorByDistance = 0;

    // The armour inspector's shell type (AP, APCR, HE, HEAT as 0 to 3);
    // an armour-piercing high-explosive shell flies like AP, an unknown
    // kind counts as HE.
    int shellType() const;
    // Degrees: 0 for HE and HEAT, 2 for the others.
    float normalization() const;
    // The 100 m value up to 100 m, linear to the 500 m value, and that
    // line continued beyond, up to maxDistance; never below 0.
    float penetrationAt(float distance) const;
};

// The shells of a "shots" element, in document order, with their shot
// numbers; owner names the gun in log lines. A null element gives none.
QVector<Shell> readShots(const QDomElement& shots, const QString& owner);

// Fills kind, calibre, name and loss from the shell file's root element;
// a shell the file lacks keeps its tag as its name and no kind.
void describeShells(QVector<Shell>& shells, const QDomElement& shellFileRoot);
