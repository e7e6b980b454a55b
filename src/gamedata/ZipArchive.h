#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <memory>

typedef struct zzip_dir ZZIP_DIR;

// One zip archive of the game, opened with zziplib. Member names are
// matched without regard to ASCII case, as the game does.
class ZipArchive
{
public:
    struct Member
    {
        QByteArray name;
        qint64 size = 0;
        qint64 compressedSize = 0;
        int method = 0;
    };

    enum class ReadResult
    {
        Missing,
        Complete,
        Short
    };

    // Null when the file cannot be opened or holds no readable zip directory.
    static std::unique_ptr<ZipArchive> open(const QString& path);
    ~ZipArchive();

    QString path() const { return file.fileName(); }

    // Every entry of the central directory, in its order.
    QList<Member> members() const;

    bool contains(const QByteArray& name) const;

    // Reads a whole member into content. Short means the member's data ended
    // before its recorded size (or did not inflate); content then holds what
    // could be read. Nothing is read beyond the archive's own data.
    ReadResult read(const QByteArray& name, QByteArray& content) const;

private:
    ZipArchive() = default;
    qint64 plausibleSizeLimit() const;

    QFile file;
    ZZIP_DIR* directory = nullptr;
};
