#pragma once

#include "Singleton.h"

#include <QDomElement>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class QSqlQuery;

// One row of Tanks_Tbl, before it gets its id.
struct TankRow
{
    QString nation;
    QString translatedNation;
    QString model;
    QString translatedName;
    QString path;
    QString category;
    QString translatedCategory;
    int tier = 0;
    QString xmlFile;
    QString description;
};

// The catalogue of every vehicle of the installation: an in-memory SQLite
// table built from the program's tank_list.cfg, each nation's list.xml and
// the game's text catalogues. Vehicles are looked up by display name.
class Database : public QObject, public Singleton<Database>
{
    Q_OBJECT
public:
    // Column numbers of Tanks_Tbl.
    enum Column
    {
        IdColumn = 0,
        NationColumn,
        TranslatedNationColumn,
        ModelColumn,
        TranslatedNameColumn,
        PathColumn,
        CategoryColumn,
        TranslatedCategoryColumn,
        TierColumn,
        XmlFileColumn,
        DescriptionColumn
    };

    Database();
    ~Database() override;

    QString translateNation(const QString& nation) const;
    QString translateCategory(const QString& key) const;

    // Lookups by display name; the first matching row answers, and a name
    // that isn't in the table gives "".
    QString xmlFile(const QString& name) const;
    QString translatedCategory(const QString& name) const;
    QString translatedNation(const QString& name) const;
    QString tier(const QString& name) const;
    QString modelName(const QString& name) const;
    QString tankDirectory(const QString& name) const;

    // Executed queries owned by the caller; the "all" word of a box matches
    // every value.
    QSqlQuery* query(const QString& nation, const QString& category, const QString& tier) const;
    QSqlQuery* filter(const QString& nation, const QString& category, const QString& tier,
                      const QString& pattern) const;

    bool loadNationList(const QString& listPath, const QString& dataPath);
    bool addTank(const TankRow& row);

    // Contents of the three filter boxes, each starting with the "all" word.
    QStringList nations;
    QStringList categories;
    QStringList tiers;

    // "../data/tank_list.cfg" unless a tool names another.
    QString tankListPath;

    // The camouflage catalogues live above this library: their owner sets
    // these while it exists. cleared runs at the start of a rebuild,
    // nationRead once for each nation whose list was read, with the
    // customization.xml path relative to res (native separators) and the
    // nation's translated name.
    struct CamouflageHooks
    {
        std::function<void()> cleared;
        std::function<void(const QString& relativePath, const QString& nation)> nationRead;
    } camouflageHooks;
    // After each rebuild: the window reloads the scene's items (garages and
    // vehicle) from the new data, once its viewport has started.
    std::function<void()> sceneReloadRequested;

public slots:
    void rebuildDatabase();

signals:
    void databaseRebuilt();

private:
    QString allWord() const;
    QString columnByName(const QString& name, int column) const;
    QSqlQuery* runListQuery(const QString& nation, const QString& category, const QString& tier,
                            const QString* pattern) const;
    bool createTable();
    bool loadItemTypes();
    // The nations of tank_list.cfg; gives their folder names.
    QStringList loadNations(const QDomElement& root);
    void loadFoundNations(const QStringList& named);
    TankRow readTank(const QDomElement& element, const QString& nation, const QString& nationFolder,
                     const QString& dataPath) const;
    QString modelFolder(const QString& xmlFile) const;

    // The camouflage catalogues go through camouflageHooks; the scene's
    // reload lives in a class of its own and does nothing until it exists.
    void clearCamouflageCatalogues();
    void addCamouflageCatalogue(const QString& camoPath, const QString& translatedNation);
    void reloadScene();

    int nextId = 1;
    int highestTier = 1;
    QDomElement itemTypes;
};
