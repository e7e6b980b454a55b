#include "Database.h"

#include "BinaryReader.h"
#include "Constants.h"
#include "FileManager.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "MoReaderCached.h"
#include "NationSurvey.h"
#include "PackedXmlReader.h"
#include "Settings.h"
#include "StartupError.h"
#include "StatusMessages.h"

#include <QDebug>
#include <QDir>
#include <QDomDocument>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <memory>

namespace {
const char CreateStatement[] =
    "CREATE TABLE Tanks_Tbl(id INTERGER PRIMARY KEY NOT NULL, Nation TEXT,TranslatedNation "
    "TEXT, Model TEXT,TranslatedName TEXT,Path TEXT,Catergory TEXT,TranslatedCatergory "
    "TEXT,Tier int,XmlFile TEXT,Description TEXT)";

const char InsertStatement[] =
    "INSERT into "
    "Tanks_Tbl(id,Nation,TranslatedNation,Model,TranslatedName,Path,Catergory,"
    "TranslatedCatergory,Tier,XmlFile,Description) "
    "VALUES(:id,:Nation,:TranslatedNation,:Model,:TranslatedName,:Path,:Catergory,"
    ":TranslatedCatergory,:Tier,:XmlFile,:Description)";

QString native(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

QString gamePath()
{
    const Settings* settings = Settings::instance();
    return settings ? settings->gavrelPath : QString();
}

// Without a MoReaderCached (tools that never made one) keys stay keys.
QString translate(const QString& text)
{
    MoReaderCached* reader = MoReaderCached::instance();
    return reader ? reader->translate(text) : text;
}

// A null text would be stored as NULL, which the "all" choice of a box
// (IS NOT NULL) hides; a vehicle without a translation stays listed.
QString nonNull(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

QIODevice* openResource(const QString& name)
{
    FileManager* files = FileManager::instance();
    return files ? files->getFile(name) : FileManager::openPlainFile(name);
}

QDomDocument readDocument(QIODevice* device, const QString& fileName)
{
    BinaryReader reader(device);
    PackedXmlReader xml(&reader);
    return xml.read(fileName);
}
} // namespace

Database::Database()
    : tankListPath(QLatin1String(Ferrox::DataDirectory) + QStringLiteral("tank_list.cfg"))
{
    Log::log(QStringLiteral("Creating connection to database."), Log::Info);
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    database.setDatabaseName(QStringLiteral(":memory:"));
    if (!database.open()) {
        const QString message =
            QStringLiteral("Could not open database. Application will now close.");
        Log::log(message, Log::Error);
        reportStartupError(message);
    }
    if (Settings* settings = Settings::instance())
        connect(settings, SIGNAL(gavrelPathChanged()), this, SLOT(rebuildDatabase()));
}

Database::~Database()
{
    {
        // Every handle on the connection must be gone before it is removed.
        QSqlDatabase database = QSqlDatabase::database(QSqlDatabase::defaultConnection, false);
        if (database.isOpen())
            database.close();
    }
    QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
    Log::log(QStringLiteral("Database shutdown."), Log::Info);
}

QString Database::allWord() const
{
    return translate(QStringLiteral("#menu:carousel_tank_filter/all"));
}

QString Database::translateNation(const QString& nation) const
{
    return translate(QStringLiteral("#menu:nations/") + nation);
}

QString Database::translateCategory(const QString& key) const
{
    // An empty tag name would match the first category of any name.
    if (key.isEmpty())
        return QString();
    const QString userString = itemTypes.firstChildElement(QStringLiteral("vehicle"))
                                   .firstChildElement(QStringLiteral("tags"))
                                   .firstChildElement(key)
                                   .firstChildElement(QStringLiteral("userString"))
                                   .text()
                                   .trimmed();
    return translate(userString);
}

QString Database::columnByName(const QString& name, int column) const
{
    QSqlQuery lookup;
    lookup.prepare(QStringLiteral("SELECT * FROM Tanks_Tbl WHERE TranslatedName = :name"));
    lookup.bindValue(QStringLiteral(":name"), name);
    if (!lookup.exec() || !lookup.next())
        return QString();
    return lookup.value(column).toString();
}

QString Database::xmlFile(const QString& name) const
{
    return columnByName(name, XmlFileColumn);
}

QString Database::translatedCategory(const QString& name) const
{
    return columnByName(name, TranslatedCategoryColumn);
}

QString Database::translatedNation(const QString& name) const
{
    return columnByName(name, TranslatedNationColumn);
}

QString Database::tier(const QString& name) const
{
    return columnByName(name, TierColumn);
}

QString Database::modelName(const QString& name) const
{
    const QString file = xmlFile(name);
    const QString last = file.section(QDir::separator(), -1);
    return last.section(QLatin1Char('.'), 0, 0);
}

QString Database::modelFolder(const QString& xml) const
{
    std::unique_ptr<QIODevice> device(openResource(native(xml)));
    if (!device) {
        device.reset(FileManager::openPlainFile(native(
            gamePath() + QDir::separator() + QStringLiteral("res") + QDir::separator() + xml)));
    }
    if (!device)
        return QString();
    const QDomDocument document = readDocument(device.get(), xml);
    const QString undamaged = native(document.documentElement()
                                         .firstChildElement(QStringLiteral("hull"))
                                         .firstChildElement(QStringLiteral("models"))
                                         .firstChildElement(QStringLiteral("undamaged"))
                                         .text()
                                         .trimmed());
    const QStringList parts = undamaged.split(QDir::separator());
    return parts.size() > 2 ? parts[2] : QString();
}

QString Database::tankDirectory(const QString& name) const
{
    const QString xml = xmlFile(name);
    if (xml.isEmpty())
        return QString();
    const QStringList path = columnByName(name, PathColumn).split(QDir::separator());
    const QString folder = modelFolder(xml);
    // The model folder need not be named like the vehicle's element.
    if (folder.isEmpty() || path.size() < 2) {
        Log::log(QStringLiteral("Could not find the model folder of: ") + name, Log::Warning);
        return QString();
    }
    return path[0] + QLatin1Char('/') + path[1] + QLatin1Char('/') + folder;
}

QSqlQuery* Database::runListQuery(const QString& nation, const QString& category,
                                  const QString& tierText, const QString* pattern) const
{
    const QString all = allWord();
    QString statement = QStringLiteral("SELECT * FROM Tanks_Tbl ");
    statement += nation == all ? QStringLiteral("WHERE TranslatedNation IS NOT NULL ")
                               : QStringLiteral("WHERE TranslatedNation = :nation ");
    statement += category == all ? QStringLiteral("AND TranslatedCatergory IS NOT NULL ")
                                 : QStringLiteral("AND TranslatedCatergory = :category ");
    statement += tierText == all ? QStringLiteral("AND Tier IS NOT NULL ")
                                 : QStringLiteral("AND Tier = :tier ");
    if (pattern)
        statement += QStringLiteral("AND TranslatedName LIKE :pattern");
    statement += QStringLiteral(" ORDER BY nation, tier");

    auto* result = new QSqlQuery;
    if (!result->prepare(statement)) {
        if (pattern)
            qDebug().noquote() << QStringLiteral("SQL ERROR: ") + result->lastError().text();
        return result;
    }
    if (nation != all)
        result->bindValue(QStringLiteral(":nation"), nation);
    if (category != all)
        result->bindValue(QStringLiteral(":category"), category);
    if (tierText != all)
        result->bindValue(QStringLiteral(":tier"), tierText);
    if (pattern)
        result->bindValue(QStringLiteral(":pattern"), *pattern);
    result->exec();
    return result;
}

QSqlQuery* Database::query(const QString& nation, const QString& category,
                           const QString& tierText) const
{
    return runListQuery(nation, category, tierText, nullptr);
}

QSqlQuery* Database::filter(const QString& nation, const QString& category, const QString& tierText,
                            const QString& pattern) const
{
    return runListQuery(nation, category, tierText, &pattern);
}

bool Database::addTank(const TankRow& row)
{
    QSqlQuery insert;
    insert.prepare(QLatin1String(InsertStatement));
    insert.bindValue(QStringLiteral(":id"), nextId++);
    insert.bindValue(QStringLiteral(":Nation"), nonNull(row.nation));
    insert.bindValue(QStringLiteral(":TranslatedNation"), nonNull(row.translatedNation));
    insert.bindValue(QStringLiteral(":Model"), nonNull(row.model));
    insert.bindValue(QStringLiteral(":TranslatedName"), nonNull(row.translatedName));
    insert.bindValue(QStringLiteral(":Path"), nonNull(row.path));
    insert.bindValue(QStringLiteral(":Catergory"), nonNull(row.category));
    insert.bindValue(QStringLiteral(":TranslatedCatergory"), nonNull(row.translatedCategory));
    insert.bindValue(QStringLiteral(":Tier"), row.tier);
    insert.bindValue(QStringLiteral(":XmlFile"), nonNull(row.xmlFile));
    insert.bindValue(QStringLiteral(":Description"), nonNull(row.description));
    if (!insert.exec()) {
        Log::log(QStringLiteral("Database error: ") + insert.lastError().driverText(), Log::Error);
        return false;
    }
    return true;
}

TankRow Database::readTank(const QDomElement& element, const QString& nation,
                           const QString& nationFolder, const QString& dataPath) const
{
    TankRow row;
    row.nation = nation;
    row.translatedNation = translateNation(nation);
    row.model = element.nodeName();
    row.translatedName =
        translate(element.firstChildElement(QStringLiteral("userString")).text().trimmed());
    row.path = native(dataPath + QDir::separator() + row.model);
    const QString tags = element.firstChildElement(QStringLiteral("tags")).text().trimmed();
    row.category = tags.section(QRegularExpression(QStringLiteral("\\s+")), 0, 0);
    row.translatedCategory = translateCategory(row.category);
    // A missing or unreadable level reads as tier 0.
    row.tier = element.firstChildElement(QStringLiteral("level")).text().trimmed().toInt();
    row.xmlFile =
        native(nationFolder + QDir::separator() + row.model + QStringLiteral(".xml")).toLower();
    row.description =
        translate(element.firstChildElement(QStringLiteral("description")).text().trimmed());
    return row;
}

bool Database::loadNationList(const QString& listPath, const QString& dataPath)
{
    Log::log(QStringLiteral("Loading tank list file: ") + listPath, Log::Info);
    // As any resource: a list in the mod folder overrides the loose one,
    // which overrides the archives'.
    std::unique_ptr<QIODevice> device(openResource(listPath));
    if (!device) {
        Log::log(QStringLiteral("Failed to load nation file: ") + listPath, Log::Warning);
        return false;
    }
    const QDomDocument document = readDocument(device.get(), listPath);
    const QDomElement root = document.documentElement();
    if (!root.hasChildNodes()) {
        Log::log(QStringLiteral("Nation list empty."), Log::Error);
        return false;
    }

    QString nationFolder = listPath;
    nationFolder.remove(QDir::separator() + QStringLiteral("list.xml"));
    const QString nation = nationFolder.section(QDir::separator(), -1);
    const QString translatedNation = translateNation(nation);
    if (!nations.contains(translatedNation))
        nations.append(translatedNation);

    const QDomNodeList children = root.childNodes();
    for (int i = 0; i < children.size(); ++i) {
        const QDomNode child = children.at(i);
        const QString model = child.nodeName();
        // Only elements are vehicles; "#text" is the packed reader's text of
        // the root, and "Observer" and training vehicles are no real ones.
        if (!child.isElement() || model == QLatin1String("Observer") ||
            model.contains(QLatin1String("training")) || model == QLatin1String("#text"))
            continue;

        const TankRow row = readTank(child.toElement(), nation, nationFolder, dataPath);
        if (!categories.contains(row.translatedCategory))
            categories.append(row.translatedCategory);
        highestTier = qMax(highestTier, row.tier);
        if (!addTank(row))
            Log::log(QStringLiteral("Failed to add tank: ") + row.translatedName, Log::Info);
    }
    return true;
}

bool Database::createTable()
{
    QSqlQuery drop;
    drop.exec(QStringLiteral("DROP TABLE Tanks_Tbl"));
    QSqlQuery create;
    if (!create.exec(QLatin1String(CreateStatement))) {
        Log::log(QStringLiteral("Failed to create database table."), Log::Error);
        return false;
    }
    return true;
}

bool Database::loadItemTypes()
{
    const QString path =
        native(gamePath() + QStringLiteral("/res/scripts/item_defs/item_types.xml"));
    if (!QFile::exists(path)) {
        Log::log(QStringLiteral("Could not locate: ") + path, Log::Warning);
        MessageBoxRequest request;
        request.icon = QMessageBox::Warning;
        request.title = QLatin1String(Ferrox::ApplicationName);
        request.text =
            tr("Could not build the database.\nPlease check that your Gavrel path is correct.");
        request.buttons = QMessageBox::Ok;
        showMessageBox(nullptr, request);
        return false;
    }
    std::unique_ptr<QIODevice> device(openResource(path));
    // The root element, whatever comes before it in a plain text file.
    itemTypes = device ? readDocument(device.get(), path).documentElement() : QDomElement();
    return true;
}

QStringList Database::loadNations(const QDomElement& root)
{
    QStringList named;
    for (QDomElement entry = root.firstChildElement(); !entry.isNull();
         entry = entry.nextSiblingElement()) {
        const QString resPath =
            native(entry.firstChildElement(QStringLiteral("ResPath")).text().trimmed());
        named.append(resPath.section(QDir::separator(), -1));
        const QString listPath = native(resPath + QStringLiteral("/list.xml"));
        const QString camoPath = native(resPath + QStringLiteral("/customization.xml"));
        const QString dataPath =
            native(entry.firstChildElement(QStringLiteral("DataPath")).text().trimmed());
        if (!loadNationList(listPath, dataPath))
            continue;
        const QString nation = resPath.section(QDir::separator(), -1);
        addCamouflageCatalogue(camoPath, translateNation(nation));
    }
    return named;
}

// Nations the installation has beyond the list follow the listed ones;
// their model folder is the one their vehicles' models name.
void Database::loadFoundNations(const QStringList& named)
{
    const QStringList found = NationSurvey::unlistedNations(named);
    if (found.isEmpty())
        return;
    Log::log(QStringLiteral("Found %1 nations not in tank_list.cfg: %2")
                 .arg(found.size())
                 .arg(found.join(QStringLiteral(", "))),
             Log::Info);
    for (const QString& nation : found) {
        const QString listPath = NationSurvey::listPath(nation);
        std::unique_ptr<QIODevice> device(openResource(listPath));
        const QDomElement root =
            device ? readDocument(device.get(), listPath).documentElement() : QDomElement();
        QString dataPath = NationSurvey::dataPathFromVehicles(nation, root);
        if (dataPath.isEmpty()) {
            Log::log(QStringLiteral("No vehicle of nation ") + nation +
                         QStringLiteral(" names its model folder"),
                     Log::Warning);
            continue;
        }
        if (!loadNationList(native(listPath), native(dataPath)))
            continue;
        addCamouflageCatalogue(native(QStringLiteral("scripts/item_defs/vehicles/") + nation +
                                      QStringLiteral("/customization.xml")),
                               translateNation(nation));
    }
}

void Database::rebuildDatabase()
{
    QElapsedTimer timer;
    timer.start();
    if (hasStatusMessageSink())
        showStatusMessage(tr("Rebuilding database."), 0);
    clearCamouflageCatalogues();

    nextId = 1;
    highestTier = 1;
    nations.clear();
    categories.clear();
    tiers.clear();
    itemTypes = QDomElement();

    Log::log(QStringLiteral("Building database."), Log::Info);
    createTable();

    QFile file(tankListPath);
    if (!file.open(QIODevice::ReadOnly)) {
        const QString message = QStringLiteral("Could not open tank list file.");
        Log::log(message, Log::Error);
        reportStartupError(message);
        return;
    }
    QDomDocument tankList(QStringLiteral("tank_list.cfg"));
    if (!tankList.setContent(&file)) {
        const QString message = QStringLiteral("Could not set XML content.");
        Log::log(message, Log::Error);
        reportStartupError(message);
        file.close();
        return;
    }

    const QString all = allWord();
    nations.append(all);
    categories.append(all);
    if (!loadItemTypes())
        return;
    loadFoundNations(loadNations(tankList.documentElement()));

    tiers.append(all);
    for (int tier = 1; tier <= highestTier; ++tier)
        tiers.append(QString::number(tier));

    emit databaseRebuilt();
    Log::log(QStringLiteral("Database rebuilt in: ") +
                 QString::number((timer.elapsed() + 500) * 0.001, 'g', 6) +
                 QStringLiteral(" seconds"),
             Log::Info);
    if (hasStatusMessageSink()) {
        showStatusMessage(tr("Database rebuilt."), 4000);
        reloadScene();
    }
}

void Database::clearCamouflageCatalogues()
{
    if (camouflageHooks.cleared)
        camouflageHooks.cleared();
}

void Database::addCamouflageCatalogue(const QString& camoPath, const QString& translatedNation)
{
    if (camouflageHooks.nationRead)
        camouflageHooks.nationRead(camoPath, translatedNation);
}

void Database::reloadScene()
{
    if (sceneReloadRequested)
        sceneReloadRequested();
}
