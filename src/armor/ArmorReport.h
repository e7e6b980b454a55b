#pragma once

#include "RayResult.h"

#include <QCoreApplication>
#include <QString>
#include <QVector>

// What the "Armor Inspector" dock prints for one shot: per plate, nearest
// first, a block of paragraphs in the colour of its category with the
// material, the angles, the thicknesses, a ricochet and the free travel to
// the next plate; with a penetration value also the penetration before and
// after each plate, its verdict, and at the end the chance to penetrate the
// first regular plate. The dock puts it into armorResultsText with one
// appendHtml after clearing the field.
class ArmorReport
{
    Q_DECLARE_TR_FUNCTIONS(ArmorWidget)
public:
    // One paragraph: its background colour and its text.
    struct Paragraph
    {
        QString background;
        QString text;
    };

    static QVector<Paragraph> paragraphs(const RayResultsList& results);
    static QString html(const RayResultsList& results);
    // The same paragraphs as lines of plain text, for the command line.
    static QString plainText(const RayResultsList& results);
    // "Penetrated", "Not penetrated" or "Ricochet", translated.
    static QString verdictText(int verdict);
};
