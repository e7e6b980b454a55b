#include "ModelFiles.h"

#include "FileManager.h"
#include "Log.h"
#include "ReadFailure.h"

QIODevice* openModelFile(FileManager* files, const QString path, QString& pathInUse,
                         ReadFailure& failure)
{
    pathInUse = path;
    if (!files)
        return nullptr;
    if (QIODevice* device = files->findFile(path, failure))
        return device;
    const QString processed = path + processedSuffix;
    if (QIODevice* device = files->findFile(processed, failure)) {
        pathInUse = processed;
        return device;
    }
    Log::log(QStringLiteral("Could not open file: ") + path, Log::Warning);
    return nullptr;
}
