#pragma once

#include "RayResult.h"

#include <QCoreApplication>
#include <QString>
#include <QVector>

// What the "Armor Inspector" dock prints for one shot: per plate, nearest
// first, a block of paragraphs in the colour of its category with the
// material, the angles, the thicknesses, a ricochet and the free travel to
// the next plate. The dock puts it into armorResultsText with one
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
};
