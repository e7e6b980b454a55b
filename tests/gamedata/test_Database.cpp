// The vehicle table, built from small game trees with plain-text lists and
// catalogues compiled by GNU msgfmt, and once from the sample installation.

#include "Database.h"
#include "FileManager.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "MoReaderCached.h"
#include "Msgfmt.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "StartupError.h"
#include "StatusMessages.h"
#include "TestRoot.h"

#include <QFile>
#include <QSignalSpy>
#include <QSqlQuery>
#include <QSqlRecord>

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <utility>

namespace {
using Rows = QList<QStringList>;

// Rows of the window's query, or of its name filter when a pattern is given,
// all columns as text.
Rows select(const Database& database, const char* nation, const char* category, const char* tier,
            const char* pattern = nullptr)
{
    std::unique_ptr<QSqlQuery> query(pattern ? database.filter(nation, category, tier, pattern)
                                             : database.query(nation, category, tier));
    Rows rows;
    while (query->next()) {
        rows.append(QStringList());
        for (int column = 0; column < query->record().count(); ++column)
            rows.last().append(query->value(column).toString());
    }
    return rows;
}

QStringList column(const Rows& rows, int number)
{
    QStringList values;
    for (const QStringList& row : rows)
        values.append(row.value(number));
    return values;
}

// One vehicle element of a list.xml; "B" vehicles are Borvia's.
QByteArray vehicle(const QByteArray& tag, const QByteArray& level, const QByteArray& tags)
{
    const QByteArray key = (tag.startsWith('B') ? "#borvia_vehicles:" : "#ardenia_vehicles:") + tag;
    QByteArray xml = " <" + tag + "><userString>" + key + "</userString><description>" + key +
                     "_descr</description>";
    if (!level.isEmpty())
        xml += "<level>" + level + "</level>";
    return xml + "<tags>" + tags + "</tags></" + tag + ">\n";
}

QByteArray vehicleFile(const QByteArray& model)
{
    return "<a01_talon.xml><hull><models><undamaged>" + model +
           "</undamaged></models></hull></a01_talon.xml>";
}

const QByteArray ItemTypes = "<item_types.xml><vehicle><tags>"
                             "<lightTank><userString>#item_types:lightTank</userString></lightTank>"
                             "<heavyTank><userString>#item_types:heavyTank</userString></heavyTank>"
                             "<AT-SPG><userString>#item_types:AT-SPG</userString></AT-SPG>"
                             "</tags></vehicle></item_types.xml>";

class DatabaseTest : public testing::Test
{
protected:
    void SetUp() override
    {
        resetStartupState();
        root.enter();
        root.writeResources({});
        settings.gavrelPath = game.path();
        settings.validateGavrelPath(game.path());
        files.loadZipFiles();
        log.lines.clear();
        // Two nations, Borvia listed before Ardenia so that the order of the
        // table is the query's own.
        writeTankList({{"borvia", "Borvia"}, {"ardenia", "Ardenia"}});
        game.writeFile("res/scripts/item_defs/item_types.xml", ItemTypes);
        // clang-format off
        writeList("ardenia", "stray text\n" + vehicle("A04_Harrow", "4", "heavyTank role") +
            vehicle("A01_Talon", "1", "\n lightTank\tscout") + vehicle("Observer", "1", "lightTank")
            + vehicle("A00_training_dummy", "1", "lightTank")
            + vehicle("A02_Training_Hauler", "2", "lightTank") + "<!-- no vehicle -->\n");
        writeList("borvia", vehicle("B09_Hornet", "9", "AT-SPG") +
            vehicle("B05_Prototype", "", "heavyTank") + vehicle("B03_Kestrel", "3", "lightTank"));
        writeCatalogue(game, "menu", {{"carousel_tank_filter/all", "All"},
            {"nations/ardenia", "Ardenia"}, {"nations/borvia", "O'Borvia"}});
        writeCatalogue(game, "item_types", {{"lightTank", "Light Tanks"},
            {"heavyTank", "Heavy Tanks"}, {"AT-SPG", "Tank Destroyers"}});
        writeCatalogue(game, "ardenia_vehicles", {{"A04_Harrow", "Harrow"},
            {"A04_Harrow_descr", "A heavy one"}, {"A01_Talon", "Talon"},
            {"A01_Talon_descr", "A light one"}, {"A02_Training_Hauler", "Training Hauler"}});
        writeCatalogue(game, "borvia_vehicles", {{"B09_Hornet", "Kestrel's Wrath"},
            {"B05_Prototype", "Prototype"}, {"B03_Kestrel", "Kestrel"}});
        // clang-format on
    }

    void TearDown() override { resetStartupState(); }

    void writeTankList(const QList<std::pair<QByteArray, QByteArray>>& nations)
    {
        QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tank_list.cfg>\n";
        for (const auto& [folder, data] : nations)
            xml += " <" + folder + "><ResPath>scripts/item_defs/vehicles/" + folder +
                   "</ResPath><DataPath>vehicles/" + data + "</DataPath></" + folder + ">\n";
        root.writeFile("data/tank_list.cfg", xml + "</tank_list.cfg>\n");
    }

    void writeList(const QString& nation, const QByteArray& children)
    {
        game.writeFile("res/scripts/item_defs/vehicles/" + nation + "/list.xml",
                       "<list.xml>\n" + children + "</list.xml>\n");
    }

    Rows everything() const { return select(*database, "All", "All", "All"); }

    TestRoot root;
    GameTree game;
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    FileManager files;
    MoReaderCached reader;
    std::unique_ptr<Database> database = std::make_unique<Database>();
};
} // namespace

TEST_F(DatabaseTest, BuildsOneRowPerVehicleAndTheFilterLists)
{
    // A new game path rebuilds the table.
    QSignalSpy rebuilt(database.get(), SIGNAL(databaseRebuilt()));
    emit settings.gavrelPathChanged();
    EXPECT_EQ(rebuilt.count(), 1);

    const Rows rows = everything();
    const QString talon =
        "5|ardenia|Ardenia|A01_Talon|Talon|vehicles/Ardenia/A01_Talon|lightTank|"
        "Light Tanks|1|scripts/item_defs/vehicles/ardenia/a01_talon.xml|A light one";
    EXPECT_TRUE(rows.contains(talon.split('|'))) << column(rows, 4).join('|').toStdString();
    // Stray text, comments, "Observer" and lower-case training entries are no
    // vehicles. ids run in the order of tank_list.cfg and of each list.xml;
    // rows come ordered by nation folder, then tier.
    EXPECT_EQ(column(rows, 3), (QStringList{"A01_Talon", "A02_Training_Hauler", "A04_Harrow",
                                            "B05_Prototype", "B03_Kestrel", "B09_Hornet"}));
    EXPECT_EQ(column(rows, 0), (QStringList{"5", "6", "4", "2", "3", "1"}));
    EXPECT_EQ(column(rows, 8), (QStringList{"1", "2", "4", "0", "3", "9"}));

    // The filter boxes start with the "all" word, categories in the order
    // met, each once; tiers cover gaps, and tier 0 is in no box.
    EXPECT_EQ(database->nations, (QStringList{"All", "O'Borvia", "Ardenia"}));
    EXPECT_EQ(database->categories,
              (QStringList{"All", "Tank Destroyers", "Heavy Tanks", "Light Tanks"}));
    EXPECT_EQ(database->tiers, (QStringList{"All", "1", "2", "3", "4", "5", "6", "7", "8", "9"}));

    // A rebuild starts the lists afresh; the highest tier starts at 1.
    // Without tags the category is empty, not the first one item_types
    // lists; a name the catalogue lacks stands as its key.
    writeList("ardenia", vehicle("X_Untagged", "", ""));
    writeList("borvia", vehicle("B05_Prototype", "", "heavyTank"));
    database->rebuildDatabase();
    EXPECT_EQ(database->tiers, (QStringList{"All", "1"}));
    EXPECT_EQ(
        everything().value(0).mid(3, 6),
        (QStringList{"X_Untagged", "X_Untagged", "vehicles/Ardenia/X_Untagged", "", "", "0"}));
}

TEST_F(DatabaseTest, QueriesSelectByBoxesAndNamePatterns)
{
    database->rebuildDatabase();
    // Patterns as the window builds them around the typed text; nations
    // and names hold quotes.
    // Nation, category, tier, the text filter or none, column, expected.
    const std::tuple<const char*, const char*, const char*, const char*, int, QStringList> cases[] =
        {{"O'Borvia", "All", "All", nullptr, 4, {"Prototype", "Kestrel", "Kestrel's Wrath"}},
         {"All", "Light Tanks", "All", nullptr, 4, {"Talon", "Training Hauler", "Kestrel"}},
         {"All", "All", "4", nullptr, 3, {"A04_Harrow"}},
         {"all", "All", "All", nullptr, 3, {}},
         {"All", "All", "All", "%kestrel%", 4, {"Kestrel", "Kestrel's Wrath"}},
         {"All", "All", "All", "%l's W%", 4, {"Kestrel's Wrath"}},
         {"O'Borvia", "Tank Destroyers", "9", "%", 4, {"Kestrel's Wrath"}},
         {"All", "All", "All", "%' OR '1'='1", 4, {}}};
    for (const auto& [nation, category, tier, pattern, number, expected] : cases)
        EXPECT_EQ(column(select(*database, nation, category, tier, pattern), number), expected)
            << nation << "/" << category << "/" << tier << "/" << (pattern ? pattern : "-");

    // The directory follows the model path of the vehicle file: one too short
    // for a folder gives none; a vehicle file in the mod folder comes first,
    // as every resource does.
    const QString talonFile = "scripts/item_defs/vehicles/ardenia/a01_talon.xml";
    game.writeFile("res/" + talonFile, vehicleFile("hull.model"));
    EXPECT_EQ(database->tankDirectory("Talon"), QString());
    GameTree mods(false);
    settings.modPath = mods.path();
    mods.writeFile(talonFile, vehicleFile("vehicles/ardenia/Modded/normal/lod0/hull.model"));
    EXPECT_EQ(database->tankDirectory("Talon"), "vehicles/Ardenia/Modded");
}

TEST_F(DatabaseTest, MissingOrBrokenListsCostTheTableOrTheNation)
{
    writeTankList({{"borvia", "Borvia"}, {"nowhere", "Nowhere"}, {"ardenia", "Ardenia"}});
    writeList("borvia", "");
    database->rebuildDatabase();
    EXPECT_TRUE(log.contains(
        "[Warning] Failed to load nation file: scripts/item_defs/vehicles/nowhere/list.xml"));
    EXPECT_TRUE(log.contains("[Error] Nation list empty."));
    EXPECT_EQ(database->nations, (QStringList{"All", "Ardenia"}));
    EXPECT_EQ(column(everything(), 1), QStringList(3, "ardenia"));
    EXPECT_FALSE(startupErrorPending());

    // Without item_types.xml there is no table, and the user is told.
    const QString itemTypes = game.path() + "/res/scripts/item_defs/item_types.xml";
    QFile::remove(itemTypes);
    QSignalSpy rebuilt(database.get(), SIGNAL(databaseRebuilt()));
    database->rebuildDatabase();
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].text,
              "Could not build the database.\nPlease check that your Gavrel path is correct.");
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Warning);
    EXPECT_TRUE(log.contains("[Warning] Could not locate: " + itemTypes));
    EXPECT_EQ(rebuilt.count(), 0);
    EXPECT_TRUE(everything().isEmpty());
    EXPECT_TRUE(database->tiers.isEmpty());

    // Without a readable tank list there is no table and the program ends.
    root.writeFile("data/tank_list.cfg", "<tank_list.cfg><unclosed>");
    database->rebuildDatabase();
    EXPECT_TRUE(log.contains("[Error] Could not set XML content."));
    EXPECT_TRUE(takeStartupError().contains("Could not set XML content."));
    EXPECT_TRUE(everything().isEmpty());
    QFile::remove(root.filePath("data/tank_list.cfg"));
    database->rebuildDatabase();
    EXPECT_TRUE(log.contains("[Error] Could not open tank list file."));
    EXPECT_TRUE(takeStartupError().contains("Could not open tank list file."));
}

// The sample installation: packed and plain lists, loose and archived, and
// catalogues compiled by the generator.
TEST_F(DatabaseTest, BuildsTheTableOfTheSampleInstallation)
{
    const QString sample = FERROX_SAMPLE_GAME_DIR;
    settings.gavrelPath = sample;
    files.resourcesConfigPath = sample + "/ferrox-resources.cfg";
    files.loadZipFiles();
    database->tankListPath = sample + "/ferrox-tank_list.cfg";
    database->rebuildDatabase();

    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_EQ(database->nations.mid(0, 5),
              (QStringList{"All", "Ardenia", "Borvia", "Caldera", "Drevnia"}));
    // Caldera's list is archived, Drevnia's plain text.
    const QStringList names = column(everything(), 4);
    for (const QString name : {"Training Hauler", "Škorpion", "Жук", "Halberd", "Anvil"})
        EXPECT_TRUE(names.contains(name)) << name.toStdString();

    EXPECT_EQ(database->translatedCategory("Kestrel's Wrath"), "Tank Destroyers");
    EXPECT_EQ(database->tier("Prototype"), "0");
    EXPECT_EQ(database->xmlFile("Warden"), "scripts/item_defs/vehicles/drevnia/d07_sentinel.xml");
    // The model folder is named unlike the element.
    EXPECT_EQ(database->tankDirectory("Wyvern"), "vehicles/Caldera/C03_Wyvern");
    EXPECT_EQ(database->modelName("Wyvern"), "c03_wyvern_v2");
    for (const QString unknown : {"Nobody", "'", ""})
        EXPECT_EQ(database->xmlFile(unknown) + database->tier(unknown) +
                      database->translatedNation(unknown) + database->tankDirectory(unknown),
                  QString());
}

// The hostile installation lists a second vehicle under the sound vehicle's
// display name: both are rows, lookups by name give the first nation's.
TEST_F(DatabaseTest, ADisplayNameTwoVehiclesShareFindsTheFirst)
{
    const QString hostile = FERROX_SAMPLE_HOSTILE_DIR;
    settings.gavrelPath = hostile;
    files.resourcesConfigPath = hostile + "/ferrox-resources.cfg";
    files.loadZipFiles();
    database->tankListPath = hostile + "/ferrox-tank_list.cfg";
    database->rebuildDatabase();
    EXPECT_EQ(column(select(*database, "All", "All", "All", "Sound Vehicle"), 1),
              (QStringList{"hostile", "no_catalogue"}));
    EXPECT_EQ(database->translatedNation("Sound Vehicle"), "Hostile");
    EXPECT_EQ(database->xmlFile("Sound Vehicle"),
              "scripts/item_defs/vehicles/hostile/h00_sound_vehicle.xml");
}
