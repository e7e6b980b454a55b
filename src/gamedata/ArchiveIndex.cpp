#include "ArchiveIndex.h"

QByteArray ArchiveIndex::fold(const QByteArray& name)
{
    QByteArray folded = name;
    for (char& c : folded) {
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    }
    return folded;
}

void ArchiveIndex::add(const QByteArray& memberName, int archiveNumber)
{
    const QByteArray key = fold(memberName);
    if (!firstArchive.contains(key))
        firstArchive.insert(key, archiveNumber);
}

int ArchiveIndex::find(const QByteArray& memberName) const
{
    return firstArchive.value(fold(memberName), -1);
}
