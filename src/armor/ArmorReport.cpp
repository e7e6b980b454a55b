#include "ArmorReport.h"

namespace {

const QString paragraphStart = QStringLiteral("<p style=\"color: black;background-color: ");

QString opening(int category)
{
    switch (category) {
    case SpacedArmor:
        return paragraphStart + QStringLiteral("#FF99FF\">");
    case SurveyArmor:
        return paragraphStart + QStringLiteral("#66CCFF;\">");
    case TrackArmor:
    case GunArmor:
        return paragraphStart + QStringLiteral("#66FF99;\">");
    default:
        return paragraphStart + QStringLiteral("#FF6666;\">");
    }
}

QString number(float value)
{
    return QString::number(value, 'g', 6);
}

QString paragraph(const QString& open, const QString& text)
{
    return open + text + QStringLiteral("</p>");
}

} // namespace

QString ArmorReport::html(const RayResultsList& results)
{
    const QString degree(QChar(0x00B0));
    QString text;
    for (int i = 0; i < results.size(); ++i) {
        const RayResult& result = results[i];
        const QString open = opening(result.category);
        text += paragraph(open, tr("Material: ") + result.name);
        text += paragraph(open, tr("Angle: ") + number(result.angle) + degree + " (" +
                                    number(result.normalizedAngle) + degree + ' ' +
                                    tr("normalized") + ')');
        text += paragraph(open, tr("Armor: ") + number(result.armor) + tr("mm") + " (" +
                                    number(result.effective) + tr("mm ") + tr("effective") + ')');
        if (result.ricochet)
            text += paragraph(paragraphStart + QStringLiteral("#008080;\">"), tr("Ricochet"));
        if (i + 1 < results.size()) {
            const float centimetres = result.freeTravel * 100.0f;
            text += paragraph(paragraphStart + QStringLiteral("white;\">"),
                              tr("Free Travel: ") + number(centimetres) + tr("cm"));
        }
    }
    return text;
}
