#pragma once

#include <QString>

// A vehicle's folder in the mod folder: the game's folder of the vehicle's
// models mirrored below ModPath, where the tools put what they make.
class ModDirectory
{
public:
    enum class Creation
    {
        Created,
        AlreadyExists,
        Failed
    };

    // modPath: the mod folder; tankDirectory: the vehicle's folder relative
    // to it, as Database::tankDirectory gives it.
    ModDirectory(const QString& modPath, const QString& tankDirectory);
    // The folder of a vehicle by its display name, from the settings and
    // the vehicle table; empty parts when either is missing.
    static ModDirectory forTank(const QString& name);

    // Native separators.
    QString path() const;
    bool exists() const;
    // Creates the folder with its parents, with a log line either way.
    Creation create() const;
    // The folder the OBJ export of a state (0 intact, 1 destroyed,
    // 2 collision) goes to.
    QString exportDirectory(int damageMode) const;
    // Opens the folder in the system's file browser.
    bool open() const;

    // A game resource's place below the mod folder, native separators.
    static QString fileInModFolder(const QString& modPath, const QString& resource);
    // QDir::mkpath with the log lines of the tools: false, with a warning,
    // when it fails.
    static bool makePath(const QString& directory);

private:
    QString modPath;
    QString tankDirectory;
};

// Hands file to the user's image editor (QProcess::startDetached), or to
// the system's viewer for its type when editor is empty. False, with a
// warning in the log, when the editor cannot be started.
bool openInImageEditor(const QString& editor, const QString& file);
