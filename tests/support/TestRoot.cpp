#include "TestRoot.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace {
void writeFileAt(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(content);
}

void copyTree(const QString& from, const QString& to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + QLatin1Char('/') + QDir(from).relativeFilePath(source);
        QDir().mkpath(QFileInfo(target).absolutePath());
        QFile::copy(source, target);
    }
}
} // namespace

TestRoot::TestRoot()
{
    QDir(root()).mkpath(QStringLiteral("bin_x64"));
    QDir(root()).mkpath(QStringLiteral("data"));
    copyTree(QStringLiteral(FERROX_SOURCE_DIR "/data"), dataDirectory());
}

TestRoot::~TestRoot()
{
    leave();
}

void TestRoot::enter()
{
    if (previousDirectory.isEmpty())
        previousDirectory = QDir::currentPath();
    QDir::setCurrent(binDirectory());
}

void TestRoot::leave()
{
    if (!previousDirectory.isEmpty())
        QDir::setCurrent(previousDirectory);
    previousDirectory.clear();
}

void TestRoot::writeResources(const QStringList& archives) const
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<resources>\n";
    for (const QString& archive : archives)
        xml += " <Zip>" + archive.toUtf8() + "</Zip>\n";
    xml += "</resources>\n";
    writeFileAt(dataDirectory() + QStringLiteral("/resources.cfg"), xml);
}

void TestRoot::writeFile(const QString& relative, const QByteArray& content) const
{
    writeFileAt(filePath(relative), content);
}

GameTree::GameTree(bool withExecutable)
{
    QDir(path()).mkpath(QStringLiteral("res/packages"));
    if (withExecutable)
        writeFile(QStringLiteral("Gavrel.exe"), "MZ");
}

QString GameTree::packagePath(const QString& archive) const
{
    return path() + QStringLiteral("/res/packages/") + archive;
}

void GameTree::writeFile(const QString& relative, const QByteArray& content) const
{
    writeFileAt(path() + QLatin1Char('/') + relative, content);
}
