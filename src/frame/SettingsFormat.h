#pragma once

#include <QColor>
#include <QString>

// How settings.cfg writes and reads each kind of value. Bad texts read as
// 0, false or an invalid colour.
namespace SettingsFormat {
QString boolText(bool value);
bool readBool(const QString& text);
QString intText(int value);
int readInt(const QString& text);
QString floatText(float value);
float readFloat(const QString& text);
QString colorText(const QColor& color);
QColor readColor(const QString& text);
} // namespace SettingsFormat
