#include "TankInfo.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "MessageBoxRecorder.h"
#include "PackedXmlReader.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

// The texture lists of the sample's vehicles, packed and plain, read from
// the vehicle file and every visual it names in both states.
TEST(TankInfo, TextureListsOfTheSampleVehicles)
{
    const QString game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
    Settings settings{QString()};
    settings.gavrelPath = game;
    FileManager files;
    files.resourcesConfigPath = game + QStringLiteral("/ferrox-resources.cfg");
    files.loadZipFiles();
    MessageBoxRecorder boxes;

    // Names below the vehicle's folder.
    const struct
    {
        QString file, folder;
        QStringList diffuse, texformat, exclusion;
    } cases[] = {
        // The hull's .texformat names a second diffuse map in the archive;
        // the guns' masks come with the loaded gun, not from here.
        {"ardenia/a01_talon.xml",
         "vehicles/Ardenia/A01_Talon/",
         {"Hull_AM.dds", "Hull_AM_hd.dds", "Chassis_AM.dds", "Track_AM.tga", "Turret_01_AM.tga",
          "Gun_01_AM.dds"},
         {"Hull_AM.texformat", "Hull_AM_hd.dds"},
         {"Tank_CM.dds", "Turret_01_CM.dds", "Turret_CM.dds"}},
        // The turret's "hull_am.dds" is the hull's texture in other letters.
        {"caldera/c03_wyvern_v2.xml",
         "vehicles/Caldera/C03_Wyvern/",
         {"Hull_AM.dds", "Chassis_AM.dds", "Track_AM.tga", "Gun_01_AM.dds"},
         {},
         {"Tank_CM.dds", "Turret_CM.dds"}},
        // The gun's map named without extension gains ".dds".
        {"caldera/c02_basilisk.xml",
         "vehicles/Caldera/C02_Basilisk/",
         {"Hull_AM.dds", "Chassis_AM.dds", "Track_AM.tga", "Turret_01_AM.tga", "Gun_01_AM.dds"},
         {},
         {"Tank_CM.dds", "Turret_CM.dds", "Turret_02_CM.dds"}},
        // Visuals only in the processed form of current clients.
        // No mask for the whole vehicle; the turrets bring their own.
        {"borvia/b01_kestrel.xml",
         "vehicles/Borvia/B01_Kestrel/",
         {"Hull_AM.dds", "Chassis_AM.dds", "Track_AM.tga", "Turret_01_AM.tga", "Gun_01_AM.dds"},
         {},
         {"Turret_CM.dds", "Turret_02_CM.dds"}},
        // Plain text.
        {"drevnia/d02_ironmoth.xml",
         "vehicles/Drevnia/D02_Ironmoth/",
         {"Hull_AM.dds", "Chassis_AM.dds", "Track_AM.tga", "Turret_01_AM.tga", "Gun_01_AM.dds"},
         {},
         {"Tank_CM.dds", "Turret_CM.dds", "Turret_02_CM.dds"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file.toStdString());
        std::unique_ptr<QIODevice> device(files.getFile("scripts/item_defs/vehicles/" + c.file));
        ASSERT_TRUE(device);
        BinaryReader binary(device.get());
        PackedXmlReader reader(&binary);
        const QDomDocument document = reader.read(c.file);
        TankInfo info;
        info.parse(document, reader.plainText ? 0 : 1);
        const QString& folder = c.folder;
        auto in = [&folder](QStringList names) {
            for (QString& name : names)
                name.prepend(folder);
            return names;
        };
        EXPECT_EQ(info.diffuseTextures, in(c.diffuse));
        EXPECT_EQ(info.texformatFiles, in(c.texformat));
        EXPECT_EQ(info.exclusionTextures, in(c.exclusion));
        // The destroyed state names its burnt maps and the intact normal maps.
        EXPECT_EQ(info.destroyedDiffuseTextures,
                  in({"Hull_crash_AM.dds", "Chassis_crash_AM.dds", "Track_AM.tga",
                      "Turret_crash_AM.dds", "Gun_crash_AM.dds"}));
        EXPECT_EQ(info.normalTextures,
                  in({"Hull_ANM.dds", "Chassis_ANM.dds", "Turret_01_ANM.dds"}));
        EXPECT_EQ(info.specularTextures, in({"Turret_01_GMM.dds"}));
        const QStringList all = info.allTextures();
        for (const QString& path : in(c.diffuse + c.texformat + c.exclusion))
            EXPECT_TRUE(all.contains(path)) << path.toStdString();
    }
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST(TankInfoPaintable, LeavesOutTracksBottomsAndEquipment)
{
    TankInfo info;
    for (const char* path :
         {"a/Hull.dds", "a/TRACK_AM.dds", "a/Bottoms.dds", "a/equipment_x.dds", "a/Turret.dds"})
        info.addTexture(TankInfo::Diffuse, path);
    EXPECT_EQ(info.paintableTextures(), (QStringList{"a/Hull.dds", "a/Turret.dds"}));
}

} // namespace
