#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QIODevice;

class TankLoader;

// Copies a vehicle's textures out of the game's archives into the mod
// folder, under the same relative paths. The bytes are the archive
// member's, so a texture the mod folder already holds is replaced by the
// game's own file only when the user agrees. Questions and progress go
// through the two callbacks, which the window answers with its boxes and
// its progress dialog; without them nothing is overwritten and nothing
// cancels.
class TextureExtractor
{
public:
    enum class Outcome
    {
        Completed,
        Cancelled,
        Failed
    };

    explicit TextureExtractor(const QString& modPath);

    // Asked, with prompting on, before an existing file is replaced, with
    // the text of the question and the file; true replaces it, false skips
    // this one texture.
    std::function<bool(const QString& question, const QString& file)> confirmOverwrite;
    // Called before each texture with its position and the count; false
    // ends the run as cancelled.
    std::function<bool(int index, int count)> progress;

    // The textures of the vehicle in view (Failed when none is loaded);
    // prompting is on unless the OverwriteTextures setting is.
    Outcome extractTank(const TankLoader& loader);
    Outcome extract(const QStringList& textures, bool prompt);

    // "WARNING! <file> already exists. ..." as the program asks it.
    static QString overwriteQuestion(const QString& file);

    // What the last run did, by resource path.
    QStringList written;
    QStringList skipped;
    // Listed for the vehicle but in no archive: logged and passed over.
    QStringList missing;

private:
    enum class Step
    {
        Next,
        Stop
    };
    Step extractOne(const QString& texture, bool prompt);
    Step writeOne(const QString& texture, QIODevice& source, bool prompt);

    QString base;
};
