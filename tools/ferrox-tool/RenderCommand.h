#pragma once

#include <QByteArray>
#include <QString>

class QImage;
class QSize;
struct ToolArguments;

// render GAME_DIR NAME --out FILE [--size WxH] [--state intact|destroyed|collision]
// [--turret NAME] [--gun NAME] [--yaw DEG] [--turret-yaw DEG]
// [--gun-pitch DEG] [--camera FILE.Camera] [--no-garage] [--transparent]
// [--mod DIR] [--camo SEASON:ROW]: a picture of the vehicle as the viewport draws it, written
// off-screen to FILE in the format its suffix names.
int renderCommand(const ToolArguments& arguments);

// The checks of render's --out for other picture commands: an absolute
// path outside the game folder, with a format its suffix names.
bool readImageOut(const QString& text, const QString& gameDirectory, QString* path,
                  QByteArray* format);
bool readImageSize(const QString& text, QSize* size);
// Whole or not at all.
bool writeImageOut(const QImage& image, const QString& path, const QByteArray& format);
