// Installs the build into a temporary prefix, as a user would with
// "cmake --install", and starts the installed program through its launcher
// on the sample installation.

#include "QtPrinters.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

namespace {
struct Finished
{
    int exitCode = -1;
    QString output;
};

Finished runToEnd(const QString& program, const QStringList& arguments,
                  const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(240000))
        return {-1, QStringLiteral("did not finish: ") + program};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromLocal8Bit(process.readAll())};
}

QString readText(const QString& path)
{
    return QString::fromUtf8(readFile(path));
}

// The install writes its list of files into the build tree, where a user's
// own install keeps its list for uninstalling: this puts the user's back.
struct ManifestKeeper
{
    ManifestKeeper()
    {
        if (QFile file(path); file.open(QIODevice::ReadOnly))
            kept = file.readAll();
    }
    ~ManifestKeeper()
    {
        QFile file(path);
        if (!kept)
            file.remove();
        else if (file.open(QIODevice::WriteOnly))
            file.write(*kept);
    }
    const QString path = QStringLiteral(FERROX_BUILD_DIR "/install_manifest.txt");
    std::optional<QByteArray> kept;
};

// The program named by a launcher's Exec line, quotes taken off.
QString launcherProgram(const QString& desktopFile)
{
    for (const QString& line : readText(desktopFile).split(QLatin1Char('\n'))) {
        if (line.startsWith(QStringLiteral("Exec=")))
            return line.mid(5).remove(QLatin1Char('"')).trimmed();
    }
    return QString();
}
} // namespace

TEST(InstallTest, InstalledProgramOpensTheSampleInstallationFromItsLauncher)
{
    QTemporaryDir temporary;
    ASSERT_TRUE(temporary.isValid());
    // A blank in the prefix: the launcher must quote the program's path.
    const QString prefix = temporary.filePath(QStringLiteral("ferrox prefix"));
    const QString dataHome = temporary.filePath(QStringLiteral("share"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome);

    const ManifestKeeper manifest;
    const Finished install =
        runToEnd(QStringLiteral(FERROX_CMAKE_COMMAND),
                 {QStringLiteral("--install"), QStringLiteral(FERROX_BUILD_DIR),
                  QStringLiteral("--prefix"), prefix},
                 environment);
    ASSERT_EQ(install.exitCode, 0) << install.output.toStdString();

    for (const char* file : {"bin_x64/ferrox", "bin_x64/ferrox-tool", "data/resources.cfg",
                             "data/tank_list.cfg", "data/shaders/glsl150", "languages",
                             "docs/user-guide.html", "docs/images/main-window.png"})
        EXPECT_TRUE(QFileInfo::exists(prefix + QLatin1Char('/') + QLatin1String(file))) << file;
    for (int size : {16, 32, 128}) {
        const QImage icon(dataHome +
                          QStringLiteral("/icons/hicolor/%1x%1/apps/ferrox.png").arg(size));
        EXPECT_EQ(icon.size(), QSize(size, size)) << size;
    }
    const QString launcher = dataHome + QStringLiteral("/applications/ferrox.desktop");
    const QString program = launcherProgram(launcher);
    ASSERT_EQ(program, prefix + QStringLiteral("/bin_x64/ferrox"))
        << readText(launcher).toStdString();
    EXPECT_TRUE(readText(launcher).contains(QStringLiteral("\nIcon=ferrox\n")));

    // The installed tool writes the first settings into the installed tree.
    const Finished settings =
        runToEnd(prefix + QStringLiteral("/bin_x64/ferrox-tool"),
                 {QStringLiteral("init-settings"), QStringLiteral(FERROX_SAMPLE_GAME_DIR)});
    ASSERT_EQ(settings.exitCode, 0) << settings.output.toStdString();
    ASSERT_TRUE(QFile::exists(prefix + QStringLiteral("/data/settings.cfg")));

    // The program keeps running in its event loop; once its log says the
    // viewport stands, it has opened the game, and this run has seen enough.
    QProcess ferrox;
    ferrox.setProcessChannelMode(QProcess::ForwardedChannels);
    ferrox.start(program, {});
    ASSERT_TRUE(ferrox.waitForStarted(30000));
    const QString logPath = prefix + QStringLiteral("/data/Ferrox.log");
    const bool started = QTest::qWaitFor(
        [&] {
            return ferrox.state() != QProcess::Running ||
                   readText(logPath).contains(QStringLiteral("OpenGL Initialising complete."));
        },
        120000);
    const bool stillRunning = ferrox.state() == QProcess::Running;
    ferrox.terminate();
    if (!ferrox.waitForFinished(30000))
        ferrox.kill();
    ferrox.waitForFinished(30000);

    const QString log = readText(logPath);
    ASSERT_TRUE(started && stillRunning) << log.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("[ Info ] Gavrel Version: v.0.9.14 #417\r\n")));
    EXPECT_TRUE(log.contains(QStringLiteral("[ Info ] Database rebuilt in: ")));
    EXPECT_FALSE(log.contains(QStringLiteral("[ Error ] "))) << log.toStdString();
    // The showcase gives nothing to warn about.
    EXPECT_EQ(log.count(QStringLiteral("[ Warning ] ")), 0) << log.toStdString();
}
