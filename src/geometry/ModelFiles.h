#pragma once

#include <QString>

class FileManager;
class QIODevice;
class ReadFailure;

// Current clients of the game ship a model's .visual and .primitives as
// "<name>.visual_processed" and "<name>.primitives_processed".
inline const QString processedSuffix = QStringLiteral("_processed");

// A model file by its name, or, where the usual search finds none, by the
// same name with "_processed" appended; pathInUse receives the name found.
// path is a copy: callers may pass the same string as pathInUse.
// Null when neither exists: the miss is logged for the plain name, as any
// failed lookup is.
QIODevice* openModelFile(FileManager* files, const QString path, QString& pathInUse,
                         ReadFailure& failure);
