// ferrox-tool check: every readable file of the installation through the
// program's readers, mod folder first.

#include "QtPrinters.h"
#include "ToolRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
const QString talonLod = QStringLiteral("vehicles/Ardenia/A01_Talon/normal/lod0/");

void writeModFile(const QTemporaryDir& mod, const QString& name, const QByteArray& bytes)
{
    const QString path = mod.filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray sampleMember(const QString& name)
{
    const ToolResult cat = runTool({QStringLiteral("cat"), sampleGame, name});
    return cat.out;
}

// The report line of a file, empty if it is not listed.
QString reportFor(const ToolResult& result, const QString& name)
{
    for (const QString& line : QString::fromUtf8(result.out).split(QLatin1Char('\n')))
        if (line.startsWith(name + QLatin1Char('\t')))
            return line;
    return QString();
}
} // namespace

TEST(CheckCommandTest, SampleInstallationReadsCleanly)
{
    const ToolResult result = runTool({QStringLiteral("check"), sampleGame});
    EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
    EXPECT_TRUE(result.out.isEmpty());
    EXPECT_TRUE(result.err.contains(" files checked, 0 failed")) << result.err.toStdString();
}

TEST(CheckCommandTest, BrokenModFilesAreListedWithTheirReason)
{
    QTemporaryDir mod;
    // A texture cut short, a visual naming a chunk its primitives lack, and text
    // that is no XML: each shadows the game's good file of that name.
    const QByteArray hullDds =
        sampleMember(QStringLiteral("vehicles/Ardenia/A01_Talon/Hull_AM.dds"));
    ASSERT_GT(hullDds.size(), 200);
    writeModFile(mod, QStringLiteral("vehicles/Ardenia/A01_Talon/Hull_AM.dds"), hullDds.left(200));
    QByteArray gunVisual = sampleMember(talonLod + QStringLiteral("Gun_01.visual"));
    ASSERT_TRUE(gunVisual.contains("Gun_01.vertices"));
    gunVisual.replace("Gun_01.vertices", "Gun_02.vertices");
    writeModFile(mod, talonLod + QStringLiteral("Gun_01.visual"), gunVisual);
    // A processed visual is checked against its processed primitives.
    const QString kestrelGun =
        QStringLiteral("vehicles/Borvia/B01_Kestrel/normal/lod0/Gun_01.visual_processed");
    QByteArray processedVisual = sampleMember(kestrelGun);
    ASSERT_TRUE(processedVisual.contains("Gun_01.vertices"));
    processedVisual.replace("Gun_01.vertices", "Gun_09.vertices");
    writeModFile(mod, kestrelGun, processedVisual);
    writeModFile(mod, QStringLiteral("scripts/item_defs/item_types.xml"), "not < xml");
    const QString talonXml = QStringLiteral("scripts/item_defs/vehicles/ardenia/a01_talon.xml");
    writeModFile(mod, talonXml, sampleMember(talonXml).chopped(3)); // packed, cut short

    const ToolResult result =
        runTool({QStringLiteral("check"), sampleGame, QStringLiteral("--mod"), mod.path()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(reportFor(result, QStringLiteral("vehicles/Ardenia/A01_Talon/Hull_AM.dds"))
                    .contains(QLatin1String("DDS"), Qt::CaseInsensitive))
        << result.out.toStdString();
    EXPECT_TRUE(reportFor(result, talonLod + QStringLiteral("Gun_01.visual"))
                    .contains(QLatin1String("Gun_02.vertices")))
        << result.out.toStdString();
    EXPECT_TRUE(reportFor(result, kestrelGun).contains(QLatin1String("Gun_09.vertices")))
        << result.out.toStdString();
    EXPECT_FALSE(reportFor(result, QStringLiteral("scripts/item_defs/item_types.xml")).isEmpty());
    EXPECT_TRUE(reportFor(result, talonXml).contains("Error reading data: "))
        << result.out.toStdString();
    EXPECT_TRUE(reportFor(result, talonLod + QStringLiteral("Hull.visual")).isEmpty())
        << "good files stay out of the report";
    EXPECT_TRUE(result.err.contains(" failed")) << result.err.toStdString();
}
