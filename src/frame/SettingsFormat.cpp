#include "SettingsFormat.h"

#include <QStringList>

namespace SettingsFormat {

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

bool readBool(const QString& text)
{
    return text.contains(QStringLiteral("true"), Qt::CaseInsensitive);
}

QString intText(int value)
{
    return QString::number(value);
}

int readInt(const QString& text)
{
    return text.toInt();
}

QString floatText(float value)
{
    return QString::number(value, 'g', 6);
}

float readFloat(const QString& text)
{
    return text.toFloat();
}

QString colorText(const QColor& color)
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(color.alpha());
}

QColor readColor(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(' '));
    if (parts.size() != 4)
        return QColor();
    return QColor(int(parts[0].toFloat()), int(parts[1].toFloat()), int(parts[2].toFloat()),
                  int(parts[3].toFloat()));
}

} // namespace SettingsFormat
