#pragma once

#include "ArchiveIndex.h"
#include "Singleton.h"
#include "ZipArchive.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QIODevice;
class ReadFailure;

// The program's view of the game's read-only resource tree. A resource is
// named by its path below the game's "res" folder and is looked up, in this
// order, as a path of its own, in the mod folder, loose in the game's "res"
// folder, and in the archives listed by resources.cfg (first listed wins,
// case ignored). Every hit is handed out as a QBuffer owned by the caller.
class FileManager : public QObject, public Singleton<FileManager>
{
    Q_OBJECT
public:
    // Index answers archive lookups from a table of member names built when
    // the archives open; Walk asks every archive in turn. Both give the same
    // results; Walk is kept for comparison.
    enum class LookupStrategy
    {
        Index,
        Walk
    };

    FileManager();
    ~FileManager() override;

    void clearArchives();
    bool addArchive(const QString& path, bool quiet);

    // A member whose data ends before its recorded size is handed out with
    // what could be read; these forms then show the closing box.
    QIODevice* getFile(const QString& name);
    QIODevice* openArchiveFile(const QString& name);
    // The same lookups, but that failure goes to failure and no box shows.
    QIODevice* getFile(const QString& name, ReadFailure& failure);
    QIODevice* openArchiveFile(const QString& name, ReadFailure& failure);
    // getFile's search without its warning on a miss, for callers that try
    // another name next.
    QIODevice* findFile(const QString& name, ReadFailure& failure);
    static QIODevice* openPlainFile(const QString& path);
    bool existsInArchives(const QString& name);

    // The archive list read by loadZipFiles(); "../data/resources.cfg"
    // unless a tool names another.
    QString resourcesConfigPath;
    // Archives below res/packages/ that the list does not name, opened after
    // the listed ones in name order.
    QStringList unlistedArchives;

    void setLookupStrategy(LookupStrategy strategy) { lookupStrategy = strategy; }

    int archiveCount() const { return int(archives.size()); }
    const ZipArchive& archive(int number) const { return *archives[size_t(number)]; }

public slots:
    void loadZipFiles();

private:
    // The first archive to ask for a member name, or -1 when none holds it.
    int firstCandidate(const QByteArray& memberName) const;
    void addUnlistedArchives(const QString& packageFolder, const QSet<QString>& listed);
    static QByteArray memberName(const QString& name);

    std::vector<std::unique_ptr<ZipArchive>> archives;
    ArchiveIndex index;
    LookupStrategy lookupStrategy = LookupStrategy::Index;
};
