#include "ZipArchive.h"

#include <zzip/zzip.h>

#include <unistd.h>

namespace {
constexpr qint64 ReadChunk = 64 * 1024;
// Deflate cannot expand data by more than about 1032:1.
constexpr qint64 MaxDeflateRatio = 1032;

struct MemberHandle
{
    explicit MemberHandle(ZZIP_FILE* opened) : file(opened) {}
    ~MemberHandle()
    {
        if (file)
            zzip_file_close(file);
    }
    ZZIP_FILE* file;
};
} // namespace

std::unique_ptr<ZipArchive> ZipArchive::open(const QString& path)
{
    std::unique_ptr<ZipArchive> archive(new ZipArchive);
    archive->file.setFileName(path);
    if (!archive->file.open(QIODevice::ReadOnly))
        return nullptr;

    // zziplib closes the descriptor it is given, so it gets its own copy and
    // the QFile keeps the original.
    const int descriptor = ::dup(archive->file.handle());
    if (descriptor < 0)
        return nullptr;
    zzip_error_t error = ZZIP_NO_ERROR;
    archive->directory = zzip_dir_fdopen(descriptor, &error);
    if (!archive->directory)
        return nullptr;
    return archive;
}

ZipArchive::~ZipArchive()
{
    if (directory)
        zzip_dir_close(directory);
}

QList<ZipArchive::Member> ZipArchive::members() const
{
    QList<Member> result;
    zzip_rewinddir(directory);
    while (const ZZIP_DIRENT* entry = zzip_readdir(directory)) {
        Member member;
        member.name = QByteArray(entry->d_name ? entry->d_name : "");
        member.size = entry->st_size;
        member.compressedSize = entry->d_csize;
        member.method = entry->d_compr;
        result.append(member);
    }
    return result;
}

bool ZipArchive::contains(const QByteArray& name) const
{
    MemberHandle member(zzip_file_open(directory, name.constData(), ZZIP_CASELESS));
    return member.file != nullptr;
}

qint64 ZipArchive::plausibleSizeLimit() const
{
    return file.size() * MaxDeflateRatio + ReadChunk;
}

ZipArchive::ReadResult ZipArchive::read(const QByteArray& name, QByteArray& content) const
{
    content.clear();
    MemberHandle member(zzip_file_open(directory, name.constData(), ZZIP_CASELESS));
    if (!member.file)
        return ReadResult::Missing;

    ZZIP_STAT stat{};
    if (zzip_file_stat(member.file, &stat) != 0 || stat.st_size < 0)
        return ReadResult::Short;

    // The recorded size comes from the archive and may lie: memory is
    // reserved only up to what the archive could hold, and grows with the
    // bytes that really arrive.
    const qint64 size = stat.st_size;
    content.reserve(qsizetype(qMin(size, plausibleSizeLimit())));
    char buffer[ReadChunk];
    while (content.size() < size) {
        const qint64 wanted = qMin(ReadChunk, size - content.size());
        const zzip_ssize_t got = zzip_read(member.file, buffer, zzip_size_t(wanted));
        if (got <= 0)
            break;
        content.append(buffer, qsizetype(got));
    }
    return content.size() == size ? ReadResult::Complete : ReadResult::Short;
}
