// Arbitrary bytes as a game archive: open it, list it, read every member.
// Nothing may crash, hang or read outside the data.

#include "ArchiveIndex.h"
#include "ZipArchive.h"

#include <QString>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const int descriptor = memfd_create("fuzz.pkg", 0);
    if (descriptor < 0)
        return 0;
    if (size > 0 && write(descriptor, data, size) != ssize_t(size)) {
        close(descriptor);
        return 0;
    }

    const QString path = QStringLiteral("/proc/self/fd/") + QString::number(descriptor);
    if (std::unique_ptr<ZipArchive> archive = ZipArchive::open(path)) {
        ArchiveIndex index;
        int read = 0;
        for (const ZipArchive::Member& member : archive->members()) {
            index.add(member.name, 0);
            if (read++ < 32) {
                QByteArray content;
                archive->read(member.name, content);
                archive->contains(ArchiveIndex::fold(member.name));
            }
        }
    }
    close(descriptor);
    return 0;
}
