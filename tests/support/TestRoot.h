#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A private application tree in a temporary folder: <root>/bin_x64 as the
// executable's folder and <root>/data as data and user directory, with the
// program's shipped data files copied in. Entering it makes it the working
// directory, as start-up does with the real executable's folder; leaving
// (or destroying it) restores the previous one.
class TestRoot
{
public:
    TestRoot();
    ~TestRoot();

    QString root() const { return directory.path(); }
    QString binDirectory() const { return root() + QStringLiteral("/bin_x64"); }
    QString dataDirectory() const { return root() + QStringLiteral("/data"); }
    QString filePath(const QString& relative) const { return root() + QLatin1Char('/') + relative; }

    void enter();
    void leave();

    // Writes data/resources.cfg listing these archive names.
    void writeResources(const QStringList& archives) const;
    // Writes a file below the root, creating its folders.
    void writeFile(const QString& relative, const QByteArray& content) const;

private:
    QTemporaryDir directory;
    QString previousDirectory;
};

// A fake game folder with the marker executable, in a temporary folder.
class GameTree
{
public:
    explicit GameTree(bool withExecutable = true);

    QString path() const { return directory.path(); }
    QString packagePath(const QString& archive) const;
    void writeFile(const QString& relative, const QByteArray& content) const;

private:
    QTemporaryDir directory;
};
