#include "ArmorReport.h"

#include "Penetration.h"

namespace {

const QString paragraphStart = QStringLiteral("<p style=\"color: black;background-color: ");

// The colour part of a paragraph's opening, as the dock has always written
// it (the spaced one without its semicolon).
QString background(int category)
{
    switch (category) {
    case SpacedArmor:
        return QStringLiteral("#FF99FF\">");
    case SurveyArmor:
        return QStringLiteral("#66CCFF;\">");
    case TrackArmor:
    case GunArmor:
        return QStringLiteral("#66FF99;\">");
    default:
        return QStringLiteral("#FF6666;\">");
    }
}

QString number(float value)
{
    return QString::number(value, 'g', 6);
}

} // namespace

QVector<ArmorReport::Paragraph> ArmorReport::paragraphs(const RayResultsList& results)
{
    const QString degree(QChar(0x00B0));
    QVector<Paragraph> list;
    for (int i = 0; i < results.size(); ++i) {
        const RayResult& result = results[i];
        const QString colour = background(result.category);
        list.append({colour, tr("Material: ") + result.name});
        list.append({colour, tr("Angle: ") + number(result.angle) + degree + " (" +
                                 number(result.normalizedAngle) + degree + ' ' + tr("normalized") +
                                 ')'});
        list.append({colour, tr("Armor: ") + number(result.armor) + tr("mm") + " (" +
                                 number(result.effective) + tr("mm ") + tr("effective") + ')'});
        if (result.hasPenetration)
            list.append({colour, tr("Penetration: ") + number(result.penetrationBefore) + tr("mm") +
                                     " -> " + number(result.penetrationAfter) + tr("mm")});
        if (result.ricochet)
            list.append({QStringLiteral("#008080;\">"), tr("Ricochet")});
        else if (result.verdict != NoVerdict)
            list.append({colour, verdictText(result.verdict)});
        if (i + 1 < results.size()) {
            const float centimetres = result.freeTravel * 100.0f;
            list.append({QStringLiteral("white;\">"),
                         tr("Free Travel: ") + number(centimetres) + tr("cm")});
        }
    }
    if (const RayResult* plate = firstRegularPlate(results))
        list.append({QStringLiteral("white;\">"), tr("Chance to penetrate: ") +
                                                      QString::number(plate->chance * 100, 'f', 1) +
                                                      QLatin1Char('%')});
    return list;
}

QString ArmorReport::verdictText(int verdict)
{
    switch (verdict) {
    case Penetrated:
        return tr("Penetrated");
    case NotPenetrated:
        return tr("Not penetrated");
    case RicochetVerdict:
        return tr("Ricochet");
    default:
        return QString();
    }
}

QString ArmorReport::html(const RayResultsList& results)
{
    QString text;
    for (const Paragraph& paragraph : paragraphs(results))
        text += paragraphStart + paragraph.background + paragraph.text + QStringLiteral("</p>");
    return text;
}

QString ArmorReport::plainText(const RayResultsList& results)
{
    QString text;
    for (const Paragraph& paragraph : paragraphs(results))
        text += paragraph.text + QLatin1Char('\n');
    return text;
}
