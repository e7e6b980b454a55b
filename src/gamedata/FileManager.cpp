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
    for (int i = 0; i < entries.size(); ++i)
        addArchive(QDir::toNativeSeparators(base + entries.at(i).toElement().text()), false);
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
