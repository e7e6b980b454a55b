// ferrox-tool check: every readable file of the installation through the
// program's readers, mod folder first.

#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

namespace {
const QString talonLod = QStringLiteral("vehicles/Ardenia/A01_Talon/normal/lod0/");

QByteArray sampleMember(const QString& name)
{
    return runTool({QStringLiteral("cat"), SampleGame, name}).out;
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
    const ToolResult result = runTool({QStringLiteral("check"), SampleGame});
    EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
    EXPECT_TRUE(result.out.isEmpty());
    EXPECT_TRUE(result.err.contains(" files checked, 0 failed")) << result.err.toStdString();
}

// The hostile installation's broken files, and only those: the missing
// ones are not there to be checked.
TEST(CheckCommandTest, HostileInstallationListsExactlyItsBrokenFiles)
{
    const ToolResult result =
        runTool(QStringList{QStringLiteral("check"), HostileGame} + hostileLists());
    EXPECT_EQ(result.exitCode, 1);
    QStringList listed;
    for (const QString& line : QString::fromUtf8(result.out).split('\n', Qt::SkipEmptyParts))
        listed.append(line.section('\t', 0, 0));
    listed.sort();
    const QString hostile = QStringLiteral("vehicles/Hostile/");
    EXPECT_EQ(listed, (QStringList{"scripts/item_defs/vehicles/hostile/H04_Empty_Document.xml",
                                   hostile + "H06_Truncated_Member/normal/lod0/Hull.primitives",
                                   hostile + "H06_Truncated_Member/normal/lod0/Hull.visual",
                                   hostile + "H07_Broken_DDS/Hull_AM.dds"}));
}

TEST(CheckCommandTest, BrokenModFilesAreListedWithTheirReason)
{
    GameTree mod(false);
    // A texture cut short, a visual naming a chunk its primitives lack, and text
    // that is no XML: each shadows the game's good file of that name.
    const QString hullDds = QStringLiteral("vehicles/Ardenia/A01_Talon/Hull_AM.dds");
    const QByteArray hullBytes = sampleMember(hullDds);
    ASSERT_GT(hullBytes.size(), 200);
    mod.writeFile(hullDds, hullBytes.left(200));
    QByteArray gunVisual = sampleMember(talonLod + QStringLiteral("Gun_01.visual"));
    ASSERT_TRUE(gunVisual.contains("Gun_01.vertices"));
    mod.writeFile(talonLod + QStringLiteral("Gun_01.visual"),
                  gunVisual.replace("Gun_01.vertices", "Gun_02.vertices"));
    // A processed visual is checked against its processed primitives.
    const QString kestrelGun =
        QStringLiteral("vehicles/Borvia/B01_Kestrel/normal/lod0/Gun_01.visual_processed");
    QByteArray processedVisual = sampleMember(kestrelGun);
    ASSERT_TRUE(processedVisual.contains("Gun_01.vertices"));
    mod.writeFile(kestrelGun, processedVisual.replace("Gun_01.vertices", "Gun_09.vertices"));
    mod.writeFile(QStringLiteral("scripts/item_defs/item_types.xml"), "not < xml");
    const QString talonXml = QStringLiteral("scripts/item_defs/vehicles/ardenia/a01_talon.xml");
    mod.writeFile(talonXml, sampleMember(talonXml).chopped(3)); // packed, cut short
    // Textures that parse: one the upload refuses (shared exponents), one
    // it takes (BC7).
    auto dx10Texture = [](quint32 dxgi, int dataBytes) {
        QByteArray file(148 + dataBytes, '\0');
        const quint32 fields[][2] = {{4, 124}, {12, 4}, {16, 4}, {28, 1}, {128, dxgi}, {132, 3}};
        std::memcpy(file.data(), "DDS ", 4);
        std::memcpy(file.data() + 84, "DX10", 4);
        for (const auto& [offset, value] : fields)
            for (int i = 0; i < 4; ++i)
                file[int(offset) + i] = char(value >> (8 * i));
        return file;
    };
    const QString sharedExponent = QStringLiteral("vehicles/Ardenia/A01_Talon/Shared_AM.dds");
    const QString bc7 = QStringLiteral("vehicles/Ardenia/A01_Talon/Bc7_AM.dds");
    mod.writeFile(sharedExponent, dx10Texture(67, 64));
    mod.writeFile(bc7, dx10Texture(98, 16));

    const ToolResult result =
        runTool({QStringLiteral("check"), SampleGame, QStringLiteral("--mod"), mod.path()});
    EXPECT_EQ(result.exitCode, 1);
    const std::tuple<QString, QString, Qt::CaseSensitivity> reasons[] = {
        {hullDds, QStringLiteral("DDS"), Qt::CaseInsensitive},
        {talonLod + QStringLiteral("Gun_01.visual"), QStringLiteral("Gun_02.vertices"),
         Qt::CaseSensitive},
        {kestrelGun, QStringLiteral("Gun_09.vertices"), Qt::CaseSensitive},
        {QStringLiteral("scripts/item_defs/item_types.xml"), QString(), Qt::CaseSensitive},
        {talonXml, QStringLiteral("Error reading data: "), Qt::CaseSensitive},
        {sharedExponent, QStringLiteral("no OpenGL upload for DDS texture format RGB9E5"),
         Qt::CaseSensitive},
    };
    for (const auto& [file, reason, sensitivity] : reasons) {
        const QString line = reportFor(result, file);
        EXPECT_FALSE(line.isEmpty()) << file.toStdString() << "\n" << result.out.toStdString();
        EXPECT_TRUE(line.contains(reason, sensitivity)) << line.toStdString();
    }
    for (const QString& good : {talonLod + QStringLiteral("Hull.visual"), bc7})
        EXPECT_TRUE(reportFor(result, good).isEmpty())
            << good.toStdString() << ": good files stay out of the report";
    EXPECT_TRUE(result.err.contains(" failed")) << result.err.toStdString();
}
