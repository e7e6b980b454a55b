#include "FileManager.h"

#include "Constants.h"
#include "Log.h"
#include "ReadFailure.h"
#include "Settings.h"

#include <QBuffer>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace {
QBuffer* openBuffer(const QByteArray& content)
{
    auto* buffer = new QBuffer;
    buffer->setData(content);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

} // namespace

FileManager::FileManager()
    : resourcesConfigPath(QLatin1String(Ferrox::DataDirectory) + QStringLiteral("resources.cfg"))
{
}

FileManager::~FileManager()
{
    clearArchives();
}

void FileManager::clearArchives()
{
    archives.clear();
    index.clear();
    unlistedArchives.clear();
}

void FileManager::loadZipFiles()
{
    Log::log(QStringLiteral("Loading zip archives."), Log::Info);
    clearArchives();

    QFile file(resourcesConfigPath);
    if (!file.open(QIODevice::ReadOnly)) {
        Log::log(QStringLiteral("Could not open resource file."), Log::Error);
        return;
    }
    QDomDocument document;
    if (!document.setContent(&file)) {
        Log::log(QStringLiteral("Could not set XML content."), Log::Error);
        file.close();
        return;
    }

    const QString base = currentGamePath() + QLatin1String(Ferrox::PackageFolder);
    const QDomNodeList entries = document.elementsByTagName(QLatin1String(Ferrox::ArchiveTag));
    QSet<QString> listed;
    for (int i = 0; i < entries.size(); ++i) {
        const QString name = entries.at(i).toElement().text();
        listed.insert(name.trimmed());
        addArchive(QDir::toNativeSeparators(base + name), false);
    }
    addUnlistedArchives(base, listed);
}

// The list comes first; archives the installation has beyond it follow in
// name order, so a newer game's packages are searched without an edit.
void FileManager::addUnlistedArchives(const QString& packageFolder, const QSet<QString>& listed)
{
    const QStringList names =
        QDir(packageFolder)
            .entryList({QStringLiteral("*.pkg")}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QString& name : names)
        if (!listed.contains(name) &&
            addArchive(QDir::toNativeSeparators(packageFolder + name), false))
            unlistedArchives.append(name);
    if (!unlistedArchives.isEmpty())
        Log::log(QStringLiteral("Found %1 archives not in resources.cfg: %2")
                     .arg(unlistedArchives.size())
                     .arg(unlistedArchives.join(QStringLiteral(", "))),
                 Log::Info);
}

bool FileManager::addArchive(const QString& path, bool quiet)
{
    const QString warning = QStringLiteral("Failed to add archive: ") + path;
    if (!QFile::exists(path)) {
        if (!quiet)
            Log::log(warning, Log::Warning);
        return false;
    }

    std::unique_ptr<ZipArchive> archive = ZipArchive::open(path);
    if (!archive) {
        Log::log(warning, Log::Warning);
        return false;
    }

    const int number = int(archives.size());
    for (const ZipArchive::Member& member : archive->members())
        index.add(member.name, number);
    archives.push_back(std::move(archive));
    Log::log(QStringLiteral("Adding file archive: ") + path, Log::Info);
    return true;
}

QIODevice* FileManager::getFile(const QString& name)
{
    ReadFailure failure;
    QIODevice* device = getFile(name, failure);
    failure.showClosingBox();
    return device;
}

QIODevice* FileManager::getFile(const QString& name, ReadFailure& failure)
{
    if (QIODevice* device = findFile(name, failure))
        return device;
    Log::log(QStringLiteral("Could not open file: ") + name, Log::Warning);
    return nullptr;
}

QIODevice* FileManager::findFile(const QString& name, ReadFailure& failure)
{
    if (QIODevice* device = openPlainFile(name))
        return device;

    const QString nativeModPath = QDir::toNativeSeparators(currentModPath());
    if (QIODevice* device = openPlainFile(nativeModPath + QDir::separator() + name))
        return device;

    const QString nativeGamePath = QDir::toNativeSeparators(currentGamePath());
    if (QIODevice* device =
            openPlainFile(nativeGamePath + QLatin1String(Ferrox::ResourceFolder) + name))
        return device;

    return openArchiveFile(QDir::toNativeSeparators(name), failure);
}

QIODevice* FileManager::openPlainFile(const QString& path)
{
    QFile file(QDir::toNativeSeparators(path));
    // A folder opens as a file on some systems; it is never a resource.
    if (!file.open(QIODevice::ReadOnly) || QFileInfo(file).isDir())
        return nullptr;
    return openBuffer(file.readAll());
}

QByteArray FileManager::memberName(const QString& name)
{
    QString member = name;
    member.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return member.toLocal8Bit();
}

int FileManager::firstCandidate(const QByteArray& member) const
{
    if (lookupStrategy == LookupStrategy::Walk)
        return archives.empty() ? -1 : 0;
    return index.find(member);
}

QIODevice* FileManager::openArchiveFile(const QString& name)
{
    ReadFailure failure;
    QIODevice* device = openArchiveFile(name, failure);
    failure.showClosingBox();
    return device;
}

QIODevice* FileManager::openArchiveFile(const QString& name, ReadFailure& failure)
{
    const QByteArray member = memberName(name);
    const int first = firstCandidate(member);
    if (first < 0)
        return nullptr;

    for (size_t i = size_t(first); i < archives.size(); ++i) {
        QByteArray content;
        const ZipArchive::ReadResult result = archives[i]->read(member, content);
        if (result == ZipArchive::ReadResult::Missing)
            continue;
        if (result == ZipArchive::ReadResult::Short) {
            Log::log(QStringLiteral("Size mismatch: ") + name + QStringLiteral(" in ") +
                         archives[i]->path(),
                     Log::Error);
            failure.record(QStringLiteral("Size mismatch"));
        }
        return openBuffer(content);
    }
    return nullptr;
}

bool FileManager::existsInArchives(const QString& name)
{
    const QByteArray member = memberName(name);
    const int first = firstCandidate(member);
    if (first < 0)
        return false;
    for (size_t i = size_t(first); i < archives.size(); ++i) {
        if (archives[i]->contains(member))
            return true;
    }
    return false;
}
