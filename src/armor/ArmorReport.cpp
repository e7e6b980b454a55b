#include "ArmorReport.h"

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
        if (result.ricochet)
            list.append({QStringLiteral("#008080;\">"), tr("Ricochet")});
        if (i + 1 < results.size()) {
            const float centimetres = result.freeTravel * 100.0f;
            list.append({QStringLiteral("white;\">"),
                         tr("Free Travel: ") + number(centimetres) + tr("cm")});
        }
    }
    return list;
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
