#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>

class FileManager;
class Settings;

// Parsed command line of one ferrox-tool command: its positional arguments
// and its "--name VALUE" options.
struct ToolArguments
{
    QStringList positional;
    QString resourcesFile; // --resources FILE
    QString modDirectory;  // --mod DIR

    // Options that take a value; any other "--name" is an error.
    static const QStringList valueOptions;
    // Options without a value ("--json"); hasOption tells whether given.
    static const QStringList flagOptions;

    static ToolArguments parse(const QStringList& arguments, QString* error);
    // The value of "--name VALUE", empty when not given.
    QString option(const QString& name) const { return options.value(name); }
    bool hasOption(const QString& name) const { return options.contains(name); }

    QHash<QString, QString> options;
};

// The game's files as the program would see them, set up without a settings
// file, log file or window: settings in memory, archives from the program's
// own resources.cfg (or the one given).
class ToolContext
{
public:
    ToolContext(const QString& gameDirectory, const ToolArguments& arguments);
    ~ToolContext();

    bool gameDirectoryValid() const;
    // True for a game folder; otherwise says why on standard error.
    bool requireGameDirectory() const;
    FileManager& files() { return *fileManager; }
    QString gameDirectory() const;

private:
    std::unique_ptr<Settings> settings;
    std::unique_ptr<FileManager> fileManager;
};

void printError(const QString& message);

// The number of option --NAME into *value, left as it is when the option is
// absent; false, with "--NAME wants WHAT: text" printed, when it isn't a
// finite number.
bool readNumberOption(const ToolArguments& arguments, const char* name, const char* what,
                      float* value);

// Warnings and errors of the log, and the text of every message box, go to
// standard error: a tool has no log file and no window. The program's
// readers and loaders show boxes where the program would (a vehicle that
// cannot be assembled, a broken table); here nothing waits for a click.
void reportToStandardError();

// FILE_OR_NAME as the commands take it: the bytes of a file on disk, or
// else the resource of that name in the game folder gameDirectory (empty
// when none was given), found as the program finds it. False when neither
// works or the member is cut short; the reason is already on standard error.
bool readFileOrResource(const QString& name, const QString& gameDirectory,
                        const ToolArguments& arguments, QByteArray& bytes);
