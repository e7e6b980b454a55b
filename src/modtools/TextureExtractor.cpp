#include "TextureExtractor.h"

#include "FileManager.h"
#include "Log.h"
#include "Settings.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TextureLoader.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <memory>

TextureExtractor::TextureExtractor(const QString& modPath)
    : base(QDir::toNativeSeparators(modPath + QLatin1Char('/')))
{
}

QString TextureExtractor::overwriteQuestion(const QString& file)
{
    return QStringLiteral("WARNING! ") + file +
           QStringLiteral(" already exists.\nAre you sure you want to overwrite this file?");
}

TextureExtractor::Outcome TextureExtractor::extractTank(const TankLoader& loader)
{
    if (!loader.loaded || !loader.info)
        return Outcome::Failed;
    const Settings* settings = Settings::instance();
    return extract(loader.info->allTextureFiles, !(settings && settings->overwriteTextures));
}

TextureExtractor::Outcome TextureExtractor::extract(const QStringList& textures, bool prompt)
{
    written.clear();
    skipped.clear();
    missing.clear();
    for (int i = 0; i < textures.size(); ++i) {
        if (progress && !progress(i, textures.size()))
            return Outcome::Cancelled;
        if (extractOne(textures[i], prompt) == Step::Stop)
            return Outcome::Failed;
    }
    return Outcome::Completed;
}

TextureExtractor::Step TextureExtractor::extractOne(const QString& texture, bool prompt)
{
    FileManager* files = FileManager::instance();
    // Only the archives: the mod folder's copy is never the source.
    std::unique_ptr<QIODevice> source(files ? files->openArchiveFile(texture) : nullptr);
    QString member = texture;
    if (!source && files) {
        // Visuals may name "x.tga" where the game ships and loads "x.dds":
        // the copy a mod can replace is the file the game really reads.
        member = TextureLoader::normalisedName(texture);
        if (member != texture)
            source.reset(files->openArchiveFile(member));
    }
    if (!source) {
        Log::log(QStringLiteral("Texture not in any archive: ") + texture, Log::Warning);
        missing.append(texture);
        return Step::Next;
    }
    return writeOne(member, *source, prompt);
}

TextureExtractor::Step TextureExtractor::writeOne(const QString& texture, QIODevice& source,
                                                  bool prompt)
{
    const QString output = QDir::toNativeSeparators(base + texture);
    if (QFileInfo::exists(output)) {
        if (prompt && !(confirmOverwrite && confirmOverwrite(overwriteQuestion(output), output))) {
            skipped.append(texture);
            return Step::Next;
        }
    } else {
        const QString directory = QFileInfo(output).absolutePath();
        if (!QDir().mkpath(directory)) {
            Log::log(QStringLiteral("Failed to create directory: ") + directory, Log::Info);
            return Step::Stop;
        }
    }
    QSaveFile file(output);
    if (!file.open(QIODevice::WriteOnly)) {
        Log::log(QStringLiteral("Failed to open file for writing: ") + output, Log::Warning);
        return Step::Stop;
    }
    Log::log(QStringLiteral("Extracting texture: ") + QDir::toNativeSeparators(texture) +
                 QStringLiteral(" to: ") + base,
             Log::Info);
    file.write(source.readAll());
    if (!file.commit()) {
        Log::log(QStringLiteral("Failed to write file: ") + output, Log::Warning);
        return Step::Stop;
    }
    written.append(texture);
    return Step::Next;
}
