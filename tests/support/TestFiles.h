#pragma once

// Reading back what a test's subject wrote: a file's bytes, the files below
// a folder, and a digest that changes with any file's name, size, time or
// bytes.

#include <QByteArray>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Paths relative to folder, sorted.
inline QStringList filesBelow(const QString& folder, const QString& pattern = QStringLiteral("*"))
{
    QStringList files;
    QDirIterator it(folder, {pattern}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(QDir(folder).relativeFilePath(it.next()));
    files.sort();
    return files;
}

inline QByteArray folderDigest(const QString& folder)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QString& file : filesBelow(folder)) {
        const QFileInfo info(folder + QLatin1Char('/') + file);
        hash.addData(file.toUtf8() + '\0' + QByteArray::number(info.size()) + '\0' +
                     QByteArray::number(info.lastModified().toMSecsSinceEpoch()) + '\0');
        hash.addData(readFile(info.filePath()));
    }
    hash.addData(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden).join('/').toUtf8());
    return hash.result().toHex();
}
