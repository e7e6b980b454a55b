#include "CamoCatalogue.h"
#include "CamoList.h"
#include "CamoLoader.h"
#include "CamoPreview.h"
#include "Database.h"
#include "FileManager.h"
#include "LogCapture.h"
#include "MoReaderCached.h"
#include "Settings.h"
#include "TankLoader.h"
#include "TestRoot.h"

#include <QDomDocument>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

QDomElement rootOf(QDomDocument& document, const QString& camouflages)
{
    document.setContent(QStringLiteral("<customization.xml><armorColor>10 20 30 255</armorColor>"
                                       "<camouflages>%1</camouflages></customization.xml>")
                            .arg(camouflages));
    return document.documentElement();
}

QStringList names(const CamoNation& catalogue)
{
    QStringList list;
    for (const CamoOption& option : catalogue.options)
        list.append(option.name);
    return list;
}

TEST(CamoCatalogue, PatternsCountFromTheSecondChildAndSkipAnyNotInShopText)
{
    // A packed section's first child is its own text; a plain file has none
    // and loses its first pattern.
    const struct
    {
        const char* camouflages;
        QStringList kept;
    } cases[] = {
        {"section text<a/><b/>", {"a", "b"}},
        {"<a/><b/><c/>", {"b", "c"}},
        {"<!-- c --><a/><!-- d --><b/>", {"a", "b"}},
        {"t<a><notInShop>false</notInShop></a><b><notInShop>true</notInShop></b>"
         "<c><notInShop></notInShop></c><d><notInShop>0</notInShop></d>",
         {"c"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.camouflages);
        QDomDocument document;
        EXPECT_EQ(names(readCamoCatalogue(rootOf(document, c.camouflages), "N")), c.kept);
    }
}

TEST(CamoCatalogue, ValuesColoursAndTilingsAreReadAsTheFileHasThem)
{
    QDomDocument document;
    const CamoNation catalogue = readCamoCatalogue(
        rootOf(document, "t<my_camo><texture> a/b c.dds </texture><group> winter </group>"
                         "<description>#k:camo/x</description>"
                         "<colors><c0>1 2 3 4</c0><c1>5 6 7 8</c1><c2>bad</c2><c3>9 9 9 9</c3>"
                         "<c4>7 7 7 7</c4></colors>"
                         "<tiling><!-- note --><A01_Talon>1.5 2 0.25 0</A01_Talon>"
                         "<b02>3</b02></tiling></my_camo>"),
        "Nation");
    ASSERT_EQ(catalogue.options.size(), 1);
    const CamoOption& option = catalogue.options[0];
    EXPECT_EQ(option.name, "my_camo");
    EXPECT_EQ(option.texture, "a/bc.dds");
    EXPECT_EQ(option.group, "winter");
    EXPECT_EQ(option.description, "#k:camo/x"); // no catalogues: the key stays
    EXPECT_EQ(option.armorColor, (Vector4{10, 20, 30, 255}));
    EXPECT_EQ(option.colors[0], (Vector4{1, 2, 3, 4}));
    EXPECT_EQ(option.colors[2], (Vector4{0, 0, 0, 0}));
    EXPECT_EQ(option.colors[3], (Vector4{9, 9, 9, 9}));
    // Keys are stored in lower case; the vehicle's key is lower case too.
    QStringList keys = option.tiling.keys();
    keys.sort();
    EXPECT_EQ(keys, (QStringList{"a01_talon", "b02"}));
    EXPECT_EQ(option.tilingFor("a01_talon"), (Vector4{1.5f, 2, 0.25f, 0}));
    EXPECT_EQ(option.tilingFor("A01_Talon"), (Vector4{0, 0, 0, 0}));
    EXPECT_EQ(option.tilingFor("b02"), (Vector4{0, 0, 0, 0}));
    EXPECT_EQ(option.tilingFor("missing"), (Vector4{0, 0, 0, 0}));
}

TEST(CamoPreview, ChannelsMixOverTheBaseColourInTurn)
{
    const Vector4 base{100, 50, 0, 255};
    const std::array<Vector4, 4> colours{Vector4{200, 0, 0, 255}, Vector4{0, 250, 0, 51},
                                         Vector4{0, 0, 255, 255}, Vector4{10, 10, 10, 0}};
    // Worked by hand: w = p / 255 * alpha / 255, col += (c - col) * w.
    const struct
    {
        uchar texel[4];
        Vector3 expected;
    } cases[] = {
        {{0, 0, 0, 255}, {100, 50, 0}},   // c3 has no strength
        {{255, 0, 0, 0}, {200, 0, 0}},    // c0 whole
        {{51, 0, 0, 0}, {120, 40, 0}},    // c0 a fifth
        {{0, 255, 0, 0}, {80, 90, 0}},    // c1 at strength 0.2
        {{255, 255, 0, 0}, {160, 50, 0}}, // c0, then c1 over it
        {{0, 0, 255, 0}, {0, 0, 255}},
    };
    for (const auto& c : cases) {
        const Vector3 got = camoTexelColour(c.texel, base, colours);
        for (size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(got[i], c.expected[i], 0.01) << int(c.texel[0]) << " " << int(c.texel[1]);
    }

    // One column of two texels: the preview is 128 square and upside down.
    const QByteArray pixels("\0\0\0\0\xff\0\0\0", 8);
    const QImage preview = camoPreview(pixels, 1, 2, base, colours);
    EXPECT_EQ(preview.size(), QSize(128, 128));
    EXPECT_EQ(preview.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(preview.pixel(5, 0), qRgb(200, 0, 0));
    EXPECT_EQ(preview.pixel(5, 127), qRgb(100, 50, 0));
    EXPECT_TRUE(camoPreview(pixels, 2, 2, base, colours).isNull()); // too few bytes
}

// The sample installation's catalogues, read through the table's rebuild
// without GL (patterns get no texture, but values and previews).
class SampleCamoTest : public testing::Test
{
protected:
    explicit SampleCamoTest(const QString& game = QStringLiteral(FERROX_SAMPLE_GAME_DIR))
    {
        root.enter();
        settings.gavrelPath = game;
        settings.validateGavrelPath(game);
        files.resourcesConfigPath = game + "/ferrox-resources.cfg";
        files.loadZipFiles();
        database.tankListPath = game + "/ferrox-tank_list.cfg";
        database.rebuildDatabase();
    }
    const CamoNation* catalogue(const QString& nation) const
    {
        for (const CamoNation& candidate : camo.nations)
            if (candidate.nation == nation)
                return &candidate;
        return nullptr;
    }
    void expectApplied(const QString& texture, const Vector4& tiling)
    {
        EXPECT_EQ(camo.texture, texture);
        EXPECT_EQ(camo.tiling, tiling);
    }

    TestRoot root;
    Settings settings{QString()};
    FileManager files;
    MoReaderCached messages;
    Database database;
    LogCapture log;
    CamoLoader camo;
};

TEST_F(SampleCamoTest, EveryNationWithACatalogueIsReadWithPreviewsAndTexts)
{
    // Drevnia's plain text loses its first pattern: the camo command's test
    // (test_CamoBake.cpp) reads the same list.
    ASSERT_EQ(camo.nations.size(), 4);
    EXPECT_EQ(catalogue("Ardenia")->options.size(), 6); // two patterns a season
    const CamoOption& first = catalogue("Borvia")->options[0];
    EXPECT_EQ(first.description, "Borvia summer pattern");
    EXPECT_EQ(first.preview.size(), QSize(128, 128));
    EXPECT_EQ(camo.previews("winter").size(), 0); // nothing before a vehicle
}

TEST_F(SampleCamoTest, AVehicleOfTheSameNationKeepsSeasonAndRowAnotherReturnsToSummer)
{
    QSignalSpy summer(&camo, &CamoLoader::summerChosen);
    QSignalSpy options(&camo, &CamoLoader::optionsChanged);
    camo.loadForTank("Talon", "", "chassis\\mask.dds", "hull/mask.dds");
    EXPECT_EQ(camo.nation, "Ardenia");
    EXPECT_EQ(camo.tilingKey, "a01_talon");
    EXPECT_EQ(camo.hullExclusionMask, QDir::toNativeSeparators("hull/mask.dds"));
    EXPECT_EQ(summer.count(), 1);
    expectApplied("vehicles/camouflage/ardenia/Summer_01.dds", {1, 1, 0, 0});

    // Rows count within the season: row 1 of winter is the fourth pattern.
    camo.select(1, "winter");
    expectApplied("vehicles/camouflage/ardenia/Winter_02.dds", {1, 2, 0, 0});
    EXPECT_EQ(camo.colors, catalogue("Ardenia")->options[3].colors);
    EXPECT_EQ(camo.descriptions("winter").size(), 2);

    const struct
    {
        const char* tank;
        const char* texture;
        Vector4 tiling;
        bool reset;
    } loads[] = {
        {"Kestrel's Wrath", "vehicles/camouflage/ardenia/Winter_02.dds", {1.25f, 2, 0, 0}, false},
        {"Bastion", "vehicles/camouflage/ardenia/Winter_02.dds", {0, 0, 0, 0}, false}, // no tiling
        {"Kestrel", "vehicles/camouflage/borvia/Summer_01.dds", {1, 1, 0, 0}, true},
        {"Basilisk", "vehicles/camouflage/caldera/Summer_01.dds", {1, 1, 0, 0}, true},
        {"Ironmoth", "vehicles/camouflage/drevnia/Summer_02.dds", {1, 2, 0, 0}, true},
    };
    for (const auto& load : loads) {
        SCOPED_TRACE(load.tank);
        options.clear();
        camo.loadForTank(load.tank, "", "", "");
        expectApplied(load.texture, load.tiling);
        ASSERT_EQ(options.count(), 1);
        EXPECT_EQ(options[0][0].toBool(), load.reset);
        EXPECT_EQ(camo.selectedSeason, load.reset ? "summer" : "winter");
    }
    EXPECT_EQ(summer.count(), 4);
    camo.select(5, "summer"); // no such row: nothing applied
    expectApplied("", {0, 0, 0, 0});
}

// A nation of the hostile installation has no catalogue: its vehicle loads
// with nothing to apply.
class HostileCamoTest : public SampleCamoTest
{
protected:
    HostileCamoTest() : SampleCamoTest(QStringLiteral(FERROX_SAMPLE_HOSTILE_DIR)) {}
};

TEST_F(HostileCamoTest, ANationWithoutCatalogueOffersNothing)
{
    EXPECT_EQ(catalogue("No Catalogue"), nullptr);
    EXPECT_NE(catalogue("Hostile"), nullptr);
    EXPECT_TRUE(log.lines.join('\n').contains("Could not load camo xml file: No Catalogue"));
    camo.loadForTank("Sound Vehicle", "", "", "");
    EXPECT_FALSE(camo.texture.isEmpty());
    camo.loadForTank("No Camouflage Catalogue", "", "", "");
    expectApplied("", {0, 0, 0, 0});
    EXPECT_TRUE(camo.previews("summer").isEmpty());
}

TEST_F(SampleCamoTest, TheListShowsTheSeasonAndItsClicksAndSwatchesChangeTheAppliedPattern)
{
    TankLoader tanks;
    CamoList list;
    QSignalSpy swatches(&list, &CamoList::swatchChanged);
    QSignalSpy refreshed(&list, &CamoList::refreshed);
    // No vehicle yet: the season changes, the list stays empty.
    list.setSeason("winter");
    EXPECT_EQ(list.season, "winter");
    EXPECT_EQ(list.model.rowCount(), 0);
    EXPECT_EQ(refreshed.count(), 0);

    tanks.nation = "Borvia";
    camo.loadForTank("Kestrel", "", "", ""); // another nation: back to summer
    EXPECT_EQ(list.season, "summer");
    ASSERT_EQ(list.model.rowCount(), 2);
    EXPECT_EQ(list.model.item(1)->toolTip(), "Borvia summer pattern");
    EXPECT_FALSE(list.model.item(0)->icon().isNull());
    ASSERT_EQ(refreshed.count(), 1);
    EXPECT_TRUE(refreshed[0][0].toBool());

    // A new season shows its rows; the vehicle keeps its pattern until a click.
    list.setSeason("desert");
    EXPECT_EQ(camo.texture, "vehicles/camouflage/borvia/Summer_01.dds");
    list.clickRow(1);
    EXPECT_EQ(camo.texture, "vehicles/camouflage/borvia/Desert_02.dds");
    EXPECT_EQ(list.color(3), QColor(20, 50, 20, 128));

    // An edited colour goes to the applied colours and the swatch, with its
    // alpha, not into the catalogue: the next click brings the file's back.
    swatches.clear();
    list.setColor(2, QColor(1, 2, 3, 4));
    EXPECT_EQ(camo.colors[2], (Vector4{1, 2, 3, 4}));
    ASSERT_EQ(swatches.count(), 1);
    EXPECT_EQ(swatches[0][1].value<QColor>(), QColor(1, 2, 3, 4));
    list.clickRow(1);
    EXPECT_EQ(list.color(2), QColor(60, 40, 110, 200));
}

} // namespace
