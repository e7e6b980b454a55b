#include "ModDirectory.h"

#include "Database.h"
#include "Log.h"
#include "Settings.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

ModDirectory::ModDirectory(const QString& mod, const QString& tank)
    : modPath(mod), tankDirectory(tank)
{
}

ModDirectory ModDirectory::forTank(const QString& name)
{
    const Settings* settings = Settings::instance();
    const Database* database = Database::instance();
    return ModDirectory(settings ? settings->modPath : QString(),
                        database ? database->tankDirectory(name) : QString());
}

QString ModDirectory::fileInModFolder(const QString& mod, const QString& resource)
{
    return QDir::toNativeSeparators(mod + QLatin1Char('/') + resource);
}

QString ModDirectory::path() const
{
    return fileInModFolder(modPath, tankDirectory);
}

bool ModDirectory::exists() const
{
    return QFileInfo(path()).isDir();
}

bool ModDirectory::makePath(const QString& directory)
{
    if (QDir().mkpath(directory))
        return true;
    Log::log(QStringLiteral("Failed to create directory: ") + directory, Log::Warning);
    return false;
}

ModDirectory::Creation ModDirectory::create() const
{
    if (exists())
        return Creation::AlreadyExists;
    if (!makePath(path()))
        return Creation::Failed;
    Log::log(QStringLiteral("Created directory: ") + path(), Log::Info);
    return Creation::Created;
}

QString ModDirectory::exportDirectory(int damageMode) const
{
    static const char* const states[] = {"normal/lod0", "crash/lod0", "collision"};
    const int state = damageMode >= 0 && damageMode < 3 ? damageMode : 0;
    return QDir::toNativeSeparators(path() + QLatin1Char('/') + QLatin1String(states[state]));
}

bool ModDirectory::open() const
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path()));
}

bool openInImageEditor(const QString& editor, const QString& file)
{
    if (editor.isEmpty())
        return QDesktopServices::openUrl(QUrl::fromLocalFile(QDir::toNativeSeparators(file)));
    if (QProcess::startDetached(QDir::toNativeSeparators(editor), {QDir::toNativeSeparators(file)}))
        return true;
    Log::log(QStringLiteral("Failed to open external image editor: ") + editor, Log::Warning);
    return false;
}
