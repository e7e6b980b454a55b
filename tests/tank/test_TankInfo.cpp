#include "TankInfo.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "MessageBoxRecorder.h"
#include "PackedXmlReader.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TankGame.h"

#include <QBuffer>
#include <QDomDocument>

#include <gtest/gtest.h>

using namespace tankgame;

namespace {

class TankInfoTest : public testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        settings.gavrelPath = game.path();
        files.resourcesConfigPath = game.resourcesPath();
        files.loadZipFiles();
    }

    TankGame game;
    Settings settings{QString()};
    FileManager files;
    MessageBoxRecorder boxes;
    TankInfo info;
};

TEST_P(TankInfoTest, TextureListsOfBothStates)
{
    const bool packed = GetParam();
    QByteArray bytes =
        packed ? packedxml::pack(TankGame::vehicleText()) : TankGame::vehicleText().toUtf8();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    const QDomDocument vehicle = reader.read("t01_box.xml");
    ASSERT_EQ(reader.plainText, !packed);
    info.parse(vehicle, packed ? 1 : 0);

    const QString f = Folder;
    // The turret's "VEHICLES/.../hull_am.DDS" is the hull's texture in
    // other letters; the gun's name without extension gains ".dds"; the
    // chassis's empty metallic gloss texture is skipped.
    EXPECT_EQ(info.diffuseTextures,
              (QStringList{f + "Hull_AM.dds", f + "Hull_AM_hd.dds", f + "Gun_AM.dds"}));
    EXPECT_EQ(info.destroyedDiffuseTextures,
              (QStringList{f + "Hull_crash_AM.dds", "VEHICLES/Testland/T01_Box/hull_am.DDS",
                           f + "Hull_AM_hd.dds", f + "Gun_AM.dds"}));
    EXPECT_EQ(info.normalTextures, QStringList{f + "Chassis_ANM.dds"});
    EXPECT_EQ(info.destroyedNormalTextures, QStringList{f + "Chassis_ANM.dds"});
    EXPECT_TRUE(info.metallicGlossTextures.isEmpty());
    // The destroyed state is walked first: the turret's name finds the
    // .texformat in the archive whatever its letters.
    const QString upper = "VEHICLES/Testland/T01_Box/hull_am";
    EXPECT_EQ(info.texformatFiles, (QStringList{upper + ".texformat", f + "Hull_AM_hd.dds"}));
    EXPECT_EQ(info.exclusionTextures, QStringList{f + "mask.dds"});
    // The .texformat gives three entries: the texture, itself and its mip.
    EXPECT_EQ(
        info.allTextures(),
        (QStringList{f + "mask.dds", f + "Hull_crash_AM.dds", f + "Chassis_ANM.dds", upper + ".DDS",
                     upper + ".texformat", f + "Hull_AM_hd.dds", f + "Gun_AM.dds"}));
    EXPECT_EQ(info.paintableTextures(), info.diffuseTextures);
    EXPECT_TRUE(boxes.boxes.isEmpty());

    info.clear();
    EXPECT_TRUE(info.allTextures().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(PlainAndPacked, TankInfoTest, testing::Bool(),
                         [](const auto& param) { return param.param ? "Packed" : "Plain"; });

TEST(TankInfoPaintable, LeavesOutTracksBottomsAndEquipment)
{
    TankInfo info;
    for (const char* path :
         {"a/Hull.dds", "a/TRACK_AM.dds", "a/Bottoms.dds", "a/equipment_x.dds", "a/Turret.dds"})
        info.addTexture(TankInfo::Diffuse, path);
    EXPECT_EQ(info.paintableTextures(), (QStringList{"a/Hull.dds", "a/Turret.dds"}));
}

} // namespace
