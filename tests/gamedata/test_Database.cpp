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

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {
using Entries = CatalogueEntries;
using Rows = QList<QStringList>;

// Every row of an executed query, all columns as text; takes ownership.
Rows readRows(QSqlQuery* query)
{
    std::unique_ptr<QSqlQuery> owned(query);
    Rows rows;
    while (owned && owned->next()) {
        QStringList row;
        for (int column = 0; column < owned->record().count(); ++column)
            row.append(owned->value(column).toString());
        rows.append(row);
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

// One vehicle element of a list.xml.
QByteArray vehicle(const QByteArray& tag, const QByteArray& catalogue, const QByteArray& level,
                   const QByteArray& tags)
{
    QByteArray xml = " <" + tag + "><userString>#" + catalogue + ":" + tag + "</userString>" +
                     "<description>#" + catalogue + ":" + tag + "_descr</description>";
    if (!level.isEmpty())
        xml += "<level>" + level + "</level>";
    return xml + "<tags>" + tags + "</tags></" + tag + ">\n";
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
    }

    void TearDown() override { resetStartupState(); }

    // Two nations, Borvia listed before Ardenia so that the order of the
    // table is the query's own.
    void writeStandardGame()
    {
        writeTankList({{"borvia", "Borvia"}, {"ardenia", "Ardenia"}});
        game.writeFile(QStringLiteral("res/scripts/item_defs/item_types.xml"), ItemTypes);
        writeList("ardenia",
                  vehicle("A04_Harrow", "ardenia_vehicles", "4", "heavyTank role") +
                      vehicle("A01_Talon", "ardenia_vehicles", "1", "\n  lightTank\tscout") +
                      vehicle("Observer", "ardenia_vehicles", "1", "lightTank") +
                      vehicle("A00_training_dummy", "ardenia_vehicles", "1", "lightTank") +
                      vehicle("A02_Training_Hauler", "ardenia_vehicles", "2", "lightTank") +
                      "<!-- no vehicle -->\n");
        writeList("borvia", vehicle("B09_Hornet", "borvia_vehicles", "9", "AT-SPG") +
                                vehicle("B05_Prototype", "borvia_vehicles", "", "heavyTank") +
                                vehicle("B03_Kestrel", "borvia_vehicles", "3", "lightTank"));
        writeCatalogue("menu", {{"carousel_tank_filter/all", "All"},
                                {"nations/ardenia", "Ardenia"},
                                {"nations/borvia", "O'Borvia"}});
        writeCatalogue("item_types", {{"lightTank", "Light Tanks"},
                                      {"heavyTank", "Heavy Tanks"},
                                      {"AT-SPG", "Tank Destroyers"}});
        writeCatalogue("ardenia_vehicles", {{"A04_Harrow", "Harrow"},
                                            {"A04_Harrow_descr", "A heavy one"},
                                            {"A01_Talon", "Talon"},
                                            {"A01_Talon_descr", "A light one"},
                                            {"A02_Training_Hauler", "Training Hauler"}});
        writeCatalogue("borvia_vehicles", {{"B09_Hornet", "Kestrel's Wrath"},
                                           {"B05_Prototype", "Prototype"},
                                           {"B03_Kestrel", "Kestrel"}});
    }

    void writeTankList(const QList<std::pair<QByteArray, QByteArray>>& nations)
    {
        QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tank_list.cfg>\n";
        for (const auto& [folder, data] : nations)
            xml += " <" + folder + "><ResPath>scripts/item_defs/vehicles/" + folder +
                   "</ResPath><DataPath>vehicles/" + data + "</DataPath></" + folder + ">\n";
        root.writeFile(QStringLiteral("data/tank_list.cfg"), xml + "</tank_list.cfg>\n");
    }

    void writeList(const QByteArray& nation, const QByteArray& children)
    {
        game.writeFile(QStringLiteral("res/scripts/item_defs/vehicles/") + nation +
                           QStringLiteral("/list.xml"),
                       "<list.xml>\n" + children + "</list.xml>\n");
    }

    void writeCatalogue(const char* name, const QList<std::pair<const char*, const char*>>& pairs)
    {
        Entries entries;
        for (const auto& [key, text] : pairs)
            entries.append({QString::fromUtf8(key), QString::fromUtf8(text)});
        game.writeFile(QStringLiteral("res/text/LC_MESSAGES/%1.mo").arg(QLatin1String(name)),
                       compileCatalogue(entries));
    }

    Rows everything() const
    {
        return readRows(
            database->query(QStringLiteral("All"), QStringLiteral("All"), QStringLiteral("All")));
    }

    QString native(const char* path) const
    {
        return QDir::toNativeSeparators(QString::fromUtf8(path));
    }

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

TEST_F(DatabaseTest, BuildsOneRowPerVehicleWithEveryColumn)
{
    writeStandardGame();
    QSignalSpy rebuilt(database.get(), SIGNAL(databaseRebuilt()));
    database->rebuildDatabase();
    EXPECT_EQ(rebuilt.count(), 1);

    const Rows rows = everything();
    ASSERT_EQ(rows.size(), 6);
    const QStringList talon = {
        QStringLiteral("5"),          QStringLiteral("ardenia"),
        QStringLiteral("Ardenia"),    QStringLiteral("A01_Talon"),
        QStringLiteral("Talon"),      native("vehicles/Ardenia/A01_Talon"),
        QStringLiteral("lightTank"),  QStringLiteral("Light Tanks"),
        QStringLiteral("1"),          native("scripts/item_defs/vehicles/ardenia/a01_talon.xml"),
        QStringLiteral("A light one")};
    EXPECT_TRUE(rows.contains(talon)) << column(rows, 4).join('|').toStdString();
    // ids run in the order of tank_list.cfg and of each list.xml; rows come
    // ordered by nation folder, then tier.
    EXPECT_EQ(column(rows, 3),
              (QStringList{QStringLiteral("A01_Talon"), QStringLiteral("A02_Training_Hauler"),
                           QStringLiteral("A04_Harrow"), QStringLiteral("B05_Prototype"),
                           QStringLiteral("B03_Kestrel"), QStringLiteral("B09_Hornet")}));
    EXPECT_EQ(column(rows, 0),
              (QStringList{QStringLiteral("5"), QStringLiteral("6"), QStringLiteral("4"),
                           QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("1")}));

    ASSERT_FALSE(log.lines.filter(QStringLiteral("Database rebuilt in: ")).isEmpty());
    const QString timing = log.lines.filter(QStringLiteral("Database rebuilt in: ")).first();
    EXPECT_TRUE(timing.endsWith(QStringLiteral(" seconds"))) << timing.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Building database.")));
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Loading tank list file: ") +
                             native("scripts/item_defs/vehicles/borvia/list.xml")));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(DatabaseTest, SkipsObserversLowerCaseTrainingAndNonElements)
{
    writeStandardGame();
    writeList("ardenia",
              "stray text\n" + vehicle("A01_Talon", "ardenia_vehicles", "1", "lightTank") +
                  vehicle("Observer", "ardenia_vehicles", "1", "lightTank") +
                  vehicle("Observer2", "ardenia_vehicles", "1", "lightTank") +
                  vehicle("X_training", "ardenia_vehicles", "1", "lightTank") +
                  vehicle("X_Training", "ardenia_vehicles", "1", "lightTank") +
                  vehicle("X_Untagged", "ardenia_vehicles", "1", "") + "<!-- comment -->\n");
    database->rebuildDatabase();
    const Rows rows = everything();
    const QStringList models = column(rows, 3);
    EXPECT_TRUE(models.contains(QStringLiteral("A01_Talon")));
    EXPECT_TRUE(models.contains(QStringLiteral("Observer2")));
    EXPECT_TRUE(models.contains(QStringLiteral("X_Training")));
    EXPECT_FALSE(models.contains(QStringLiteral("Observer")));
    EXPECT_FALSE(models.contains(QStringLiteral("X_training")));
    EXPECT_FALSE(models.contains(QStringLiteral("#text")));
    EXPECT_FALSE(models.contains(QStringLiteral("#comment")));
    EXPECT_EQ(models.size(), 7) << models.join(QLatin1Char('|')).toStdString();

    // Without tags the category is empty, not the first one item_types lists.
    const QStringList untagged = rows.value(int(models.indexOf(QStringLiteral("X_Untagged"))));
    EXPECT_EQ(untagged.value(6), QString());
    EXPECT_EQ(untagged.value(7), QString());
}

TEST_F(DatabaseTest, VehiclesWithoutTranslationsStayListed)
{
    writeStandardGame();
    QFile::remove(game.path() + QStringLiteral("/res/text/LC_MESSAGES/ardenia_vehicles.mo"));
    database->rebuildDatabase();
    const Rows rows = everything();
    ASSERT_EQ(rows.size(), 6);
    EXPECT_EQ(column(rows, 4).mid(0, 3), QStringList(3, QString()));
    EXPECT_EQ(column(rows, 10).mid(0, 3), QStringList(3, QString()));
    EXPECT_EQ(column(rows, 3).mid(0, 3),
              (QStringList{QStringLiteral("A01_Talon"), QStringLiteral("A02_Training_Hauler"),
                           QStringLiteral("A04_Harrow")}));
}

TEST_F(DatabaseTest, FilterListsStartWithTheAllWordAndTiersCoverGaps)
{
    writeStandardGame();
    database->rebuildDatabase();
    EXPECT_EQ(database->nations, (QStringList{QStringLiteral("All"), QStringLiteral("O'Borvia"),
                                              QStringLiteral("Ardenia")}));
    // Categories in the order met, each once.
    EXPECT_EQ(database->categories,
              (QStringList{QStringLiteral("All"), QStringLiteral("Tank Destroyers"),
                           QStringLiteral("Heavy Tanks"), QStringLiteral("Light Tanks")}));
    QStringList tiers{QStringLiteral("All")};
    for (int tier = 1; tier <= 9; ++tier)
        tiers.append(QString::number(tier));
    EXPECT_EQ(database->tiers, tiers);

    // A vehicle without a level has tier 0, which no box offers.
    EXPECT_EQ(database->tier(QStringLiteral("Prototype")), QStringLiteral("0"));

    // A rebuild starts the lists afresh; the highest tier starts at 1.
    writeList("ardenia", vehicle("A01_Talon", "ardenia_vehicles", "", "lightTank"));
    writeList("borvia", vehicle("B05_Prototype", "borvia_vehicles", "", "heavyTank"));
    database->rebuildDatabase();
    EXPECT_EQ(database->tiers, (QStringList{QStringLiteral("All"), QStringLiteral("1")}));
    EXPECT_EQ(everything().size(), 2);
}

TEST_F(DatabaseTest, QueriesSelectByBoxesAndOrderByNationThenTier)
{
    writeStandardGame();
    database->rebuildDatabase();
    const QString all = QStringLiteral("All");

    const Rows rows = everything();
    EXPECT_EQ(column(rows, 1), (QStringList{QStringLiteral("ardenia"), QStringLiteral("ardenia"),
                                            QStringLiteral("ardenia"), QStringLiteral("borvia"),
                                            QStringLiteral("borvia"), QStringLiteral("borvia")}));
    EXPECT_EQ(column(rows, 8),
              (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"),
                           QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("9")}));

    // A nation whose display name holds a quote.
    EXPECT_EQ(column(readRows(database->query(QStringLiteral("O'Borvia"), all, all)), 4),
              (QStringList{QStringLiteral("Prototype"), QStringLiteral("Kestrel"),
                           QStringLiteral("Kestrel's Wrath")}));
    EXPECT_EQ(column(readRows(database->query(all, QStringLiteral("Light Tanks"), all)), 3),
              (QStringList{QStringLiteral("A01_Talon"), QStringLiteral("A02_Training_Hauler"),
                           QStringLiteral("B03_Kestrel")}));
    EXPECT_EQ(column(readRows(database->query(all, all, QStringLiteral("4"))), 3),
              QStringList{QStringLiteral("A04_Harrow")});
    EXPECT_TRUE(readRows(database->query(QStringLiteral("Ardenia"), QStringLiteral("Light Tanks"),
                                         QStringLiteral("4")))
                    .isEmpty());
    EXPECT_TRUE(readRows(database->query(QStringLiteral("all"), all, all)).isEmpty());

    // Name patterns, as the window builds them around the typed text.
    EXPECT_EQ(column(readRows(database->filter(all, all, all, QStringLiteral("%kestrel%"))), 4),
              (QStringList{QStringLiteral("Kestrel"), QStringLiteral("Kestrel's Wrath")}));
    EXPECT_EQ(column(readRows(database->filter(all, all, all, QStringLiteral("%l's W%"))), 4),
              QStringList{QStringLiteral("Kestrel's Wrath")});
    EXPECT_EQ(column(readRows(database->filter(QStringLiteral("O'Borvia"),
                                               QStringLiteral("Tank Destroyers"),
                                               QStringLiteral("9"), QStringLiteral("%"))),
                     4),
              QStringList{QStringLiteral("Kestrel's Wrath")});
    EXPECT_TRUE(
        readRows(database->filter(all, all, all, QStringLiteral("%' OR '1'='1"))).isEmpty());
}

TEST_F(DatabaseTest, LookupsByDisplayNameFindTheFirstMatch)
{
    writeStandardGame();
    // A second "Talon" in the later nation: both listed, lookups give the first.
    writeCatalogue("borvia_vehicles", {{"B09_Hornet", "Kestrel's Wrath"},
                                       {"B05_Prototype", "Prototype"},
                                       {"B03_Kestrel", "Talon"}});
    writeTankList({{"ardenia", "Ardenia"}, {"borvia", "Borvia"}});
    database->rebuildDatabase();

    EXPECT_EQ(readRows(database->filter(QStringLiteral("All"), QStringLiteral("All"),
                                        QStringLiteral("All"), QStringLiteral("Talon")))
                  .size(),
              2);
    const QString talon = QStringLiteral("Talon");
    EXPECT_EQ(database->xmlFile(talon), native("scripts/item_defs/vehicles/ardenia/a01_talon.xml"));
    EXPECT_EQ(database->modelName(talon), QStringLiteral("a01_talon"));
    EXPECT_EQ(database->translatedNation(talon), QStringLiteral("Ardenia"));
    EXPECT_EQ(database->translatedCategory(talon), QStringLiteral("Light Tanks"));
    EXPECT_EQ(database->tier(talon), QStringLiteral("1"));

    const QString wrath = QStringLiteral("Kestrel's Wrath");
    EXPECT_EQ(database->translatedNation(wrath), QStringLiteral("O'Borvia"));
    EXPECT_EQ(database->translatedCategory(wrath), QStringLiteral("Tank Destroyers"));
    EXPECT_EQ(database->modelName(wrath), QStringLiteral("b09_hornet"));

    for (const QString& unknown : {QStringLiteral("Nobody"), QStringLiteral("'"), QString()}) {
        EXPECT_EQ(database->xmlFile(unknown), QString());
        EXPECT_EQ(database->tier(unknown), QString());
        EXPECT_EQ(database->modelName(unknown), QString());
        EXPECT_EQ(database->tankDirectory(unknown), QString());
    }
}

TEST_F(DatabaseTest, TankDirectoryFollowsTheModelPathOfTheVehicleFile)
{
    writeStandardGame();
    database->rebuildDatabase();
    // The model folder is named unlike the element.
    game.writeFile(QStringLiteral("res/scripts/item_defs/vehicles/ardenia/a01_talon.xml"),
                   "<a01_talon.xml><hull><models><undamaged>"
                   "vehicles/ardenia/A01_Talon_Folder/normal/lod0/hull.model"
                   "</undamaged></models></hull></a01_talon.xml>");
    EXPECT_EQ(database->tankDirectory(QStringLiteral("Talon")),
              QStringLiteral("vehicles/Ardenia/A01_Talon_Folder"));

    // A vehicle file in the mod folder comes first, as every resource does.
    QTemporaryDir mods;
    settings.modPath = mods.path();
    QDir().mkpath(mods.filePath(QStringLiteral("scripts/item_defs/vehicles/ardenia")));
    QFile modded(mods.filePath(QStringLiteral("scripts/item_defs/vehicles/ardenia/a01_talon.xml")));
    ASSERT_TRUE(modded.open(QIODevice::WriteOnly));
    modded.write("<a01_talon.xml><hull><models><undamaged>"
                 "vehicles/ardenia/Modded/normal/lod0/hull.model"
                 "</undamaged></models></hull></a01_talon.xml>");
    modded.close();
    EXPECT_EQ(database->tankDirectory(QStringLiteral("Talon")),
              QStringLiteral("vehicles/Ardenia/Modded"));

    // Without its file, or with a model path too short for a folder, there
    // is no directory.
    EXPECT_EQ(database->tankDirectory(QStringLiteral("Harrow")), QString());
    game.writeFile(QStringLiteral("res/scripts/item_defs/vehicles/ardenia/a04_harrow.xml"),
                   "<a04_harrow.xml><hull><models><undamaged>hull.model</undamaged>"
                   "</models></hull></a04_harrow.xml>");
    EXPECT_EQ(database->tankDirectory(QStringLiteral("Harrow")), QString());
}

TEST_F(DatabaseTest, MissingItemTypesWarnsAndLeavesTheTableEmpty)
{
    writeStandardGame();
    database->rebuildDatabase();
    ASSERT_EQ(everything().size(), 6);

    QFile::remove(game.path() + QStringLiteral("/res/scripts/item_defs/item_types.xml"));
    QSignalSpy rebuilt(database.get(), SIGNAL(databaseRebuilt()));
    database->rebuildDatabase();
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].title, QStringLiteral("Ferrox"));
    EXPECT_EQ(boxes.boxes[0].text,
              QStringLiteral(
                  "Could not build the database.\nPlease check that your Gavrel path is correct."));
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Warning);
    EXPECT_EQ(boxes.boxes[0].buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    EXPECT_TRUE(
        log.contains(QStringLiteral("[Warning] Could not locate: ") +
                     QDir::toNativeSeparators(
                         game.path() + QStringLiteral("/res/scripts/item_defs/item_types.xml"))));
    EXPECT_EQ(rebuilt.count(), 0);
    EXPECT_TRUE(everything().isEmpty());
    EXPECT_EQ(database->xmlFile(QStringLiteral("Talon")), QString());
    EXPECT_TRUE(database->tiers.isEmpty());
}

TEST_F(DatabaseTest, MissingOrBrokenTankListIsAStartupError)
{
    writeStandardGame();
    QFile::remove(root.filePath(QStringLiteral("data/tank_list.cfg")));
    database->rebuildDatabase();
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Could not open tank list file.")));
    ASSERT_TRUE(startupErrorPending());
    EXPECT_TRUE(takeStartupError().contains(QStringLiteral("Could not open tank list file.")));
    EXPECT_TRUE(everything().isEmpty());

    root.writeFile(QStringLiteral("data/tank_list.cfg"), "<tank_list.cfg><unclosed>");
    database->rebuildDatabase();
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Could not set XML content.")));
    EXPECT_TRUE(takeStartupError().contains(QStringLiteral("Could not set XML content.")));

    // A tool may name its own list.
    QTemporaryDir elsewhere;
    writeTankList({{"ardenia", "Ardenia"}});
    const QString moved = elsewhere.filePath(QStringLiteral("list.cfg"));
    ASSERT_TRUE(QFile::rename(root.filePath(QStringLiteral("data/tank_list.cfg")), moved));
    database->tankListPath = moved;
    database->rebuildDatabase();
    EXPECT_FALSE(startupErrorPending());
    EXPECT_EQ(everything().size(), 3);
}

TEST_F(DatabaseTest, MissingOrEmptyNationListCostsThatNationAlone)
{
    writeStandardGame();
    writeTankList({{"borvia", "Borvia"}, {"nowhere", "Nowhere"}, {"ardenia", "Ardenia"}});
    game.writeFile(QStringLiteral("res/scripts/item_defs/vehicles/borvia/list.xml"),
                   "<list.xml></list.xml>");
    database->rebuildDatabase();
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Failed to load nation file: ") +
                             native("scripts/item_defs/vehicles/nowhere/list.xml")));
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Nation list empty.")));
    EXPECT_EQ(database->nations, (QStringList{QStringLiteral("All"), QStringLiteral("Ardenia")}));
    EXPECT_EQ(column(everything(), 1), QStringList(3, QStringLiteral("ardenia")));
    EXPECT_FALSE(startupErrorPending());
}

TEST_F(DatabaseTest, RebuildsOnGamePathChangeAndReportsInTheStatusBar)
{
    writeStandardGame();
    QList<std::pair<QString, int>> status;
    setStatusMessageSink([&status](const QString& text, int timeout) {
        status.append({text, timeout});
    });
    emit settings.gavrelPathChanged();
    setStatusMessageSink({});
    EXPECT_EQ(everything().size(), 6);
    EXPECT_EQ(status,
              (QList<std::pair<QString, int>>{{QStringLiteral("Rebuilding database."), 0},
                                              {QStringLiteral("Database rebuilt."), 4000}}));
}

TEST_F(DatabaseTest, EachNewObjectGetsAFreshConnection)
{
    writeStandardGame();
    database->rebuildDatabase();
    database.reset();
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Database shutdown.")));
    EXPECT_EQ(Database::instance(), nullptr);

    database = std::make_unique<Database>();
    EXPECT_EQ(Database::instance(), database.get());
    EXPECT_FALSE(startupErrorPending());
    // No table before the first rebuild of this object.
    EXPECT_TRUE(everything().isEmpty());
    database->rebuildDatabase();
    EXPECT_EQ(everything().size(), 6);
}

TEST(DatabaseWithoutSettingsTest, StandsAloneWithoutOtherManagers)
{
    TestRoot root;
    root.enter();
    LogCapture log;
    Database database;
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Creating connection to database.")));
    EXPECT_EQ(database.xmlFile(QStringLiteral("Talon")), QString());
    EXPECT_EQ(database.translateNation(QStringLiteral("ardenia")),
              QStringLiteral("#menu:nations/ardenia"));
}

// The sample installation: packed and plain lists, loose and archived, and
// catalogues compiled by the generator.
TEST(DatabaseSampleTest, BuildsTheTableOfTheSampleInstallation)
{
    const QString sample = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
    ASSERT_TRUE(QFile::exists(sample + QStringLiteral("/ferrox-tank_list.cfg")));
    TestRoot root;
    root.enter();
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    settings.gavrelPath = sample;
    FileManager files;
    files.resourcesConfigPath = sample + QStringLiteral("/ferrox-resources.cfg");
    files.loadZipFiles();
    MoReaderCached reader;
    Database database;
    database.tankListPath = sample + QStringLiteral("/ferrox-tank_list.cfg");
    database.rebuildDatabase();

    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_EQ(
        database.nations.mid(0, 5),
        (QStringList{QStringLiteral("All"), QStringLiteral("Ardenia"), QStringLiteral("Borvia"),
                     QStringLiteral("Caldera"), QStringLiteral("Drevnia")}));
    EXPECT_EQ(database.tiers.size(), 11);
    EXPECT_TRUE(database.categories.contains(QStringLiteral("Tank Destroyers")));

    const QString all = QStringLiteral("All");
    const Rows rows = readRows(database.query(all, all, all));
    const QStringList names = column(rows, 4);
    EXPECT_FALSE(names.contains(QStringLiteral("Observer")));
    EXPECT_FALSE(names.contains(QStringLiteral("Training Dummy")));
    EXPECT_TRUE(names.contains(QStringLiteral("Training Hauler")));
    EXPECT_TRUE(names.contains(QStringLiteral("Škorpion")));
    EXPECT_TRUE(names.contains(QStringLiteral("Жук")));
    EXPECT_TRUE(names.contains(QStringLiteral("Halberd"))); // caldera's list is archived
    EXPECT_TRUE(names.contains(QStringLiteral("Anvil")));   // drevnia's list is plain text

    const QString wrath = QStringLiteral("Kestrel's Wrath");
    EXPECT_EQ(database.translatedNation(wrath), QStringLiteral("Ardenia"));
    EXPECT_EQ(database.translatedCategory(wrath), QStringLiteral("Tank Destroyers"));
    EXPECT_EQ(database.tier(wrath), QStringLiteral("3"));
    EXPECT_EQ(database.tier(QStringLiteral("Prototype")), QStringLiteral("0"));
    // Two Sentinels: Borvia's comes first.
    EXPECT_EQ(database.translatedNation(QStringLiteral("Sentinel")), QStringLiteral("Borvia"));
    EXPECT_EQ(column(readRows(database.filter(all, all, all, QStringLiteral("Sentinel"))), 1),
              (QStringList{QStringLiteral("borvia"), QStringLiteral("drevnia")}));
    EXPECT_EQ(database.tankDirectory(QStringLiteral("Wyvern")),
              QStringLiteral("vehicles/Caldera/C03_Wyvern"));
    EXPECT_EQ(database.tankDirectory(QStringLiteral("Talon")),
              QStringLiteral("vehicles/Ardenia/A01_Talon"));
    EXPECT_EQ(database.modelName(QStringLiteral("Wyvern")), QStringLiteral("c03_wyvern_v2"));

    const Rows talon = readRows(database.filter(all, all, all, QStringLiteral("Talon")));
    ASSERT_EQ(talon.size(), 1);
    EXPECT_EQ(talon[0].mid(1),
              (QStringList{QStringLiteral("ardenia"), QStringLiteral("Ardenia"),
                           QStringLiteral("A01_Talon"), QStringLiteral("Talon"),
                           QDir::toNativeSeparators(QStringLiteral("vehicles/Ardenia/A01_Talon")),
                           QStringLiteral("lightTank"), QStringLiteral("Light Tanks"),
                           QStringLiteral("1"),
                           QDir::toNativeSeparators(
                               QStringLiteral("scripts/item_defs/vehicles/ardenia/a01_talon.xml")),
                           QStringLiteral("Talon: a light tank of Ardenia, tier 1.")}));
}
