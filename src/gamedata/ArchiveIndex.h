#pragma once

#include <QByteArray>
#include <QHash>

// Member names of all archives, folded to ASCII lower case, each mapped to
// the first archive (in search order) that holds it. Folding matches the
// archive reader's case-insensitive name comparison, so the index answers
// exactly as a walk over the archives would.
class ArchiveIndex
{
public:
    static QByteArray fold(const QByteArray& name);

    void clear() { firstArchive.clear(); }

    // Archives must be added in search order.
    void add(const QByteArray& memberName, int archiveNumber);

    // The first archive holding the name, or -1.
    int find(const QByteArray& memberName) const;

    qsizetype size() const { return firstArchive.size(); }

private:
    QHash<QByteArray, int> firstArchive;
};
