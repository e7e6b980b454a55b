#pragma once

#include "AppliedCamouflage.h"
#include "CamoOption.h"
#include "Singleton.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

// Every nation's camouflage catalogue and the one pattern applied to the
// loaded vehicle (the AppliedCamouflage fields, which the vehicle's meshes
// read on each draw). The catalogues are read during the vehicle table's
// rebuild; every pattern gets its GL texture and its preview then, so
// choosing one touches no file. Needs the viewport's context current
// wherever GL names are made or freed. Works without a window: what the
// window shows follows the signals.
class CamoLoader : public QObject, public Singleton<CamoLoader>, public AppliedCamouflage
{
    Q_OBJECT
public:
    // Hooks itself into the Database's rebuild and the TankLoader's loads
    // when those exist.
    explicit CamoLoader(QObject* parent = nullptr);
    ~CamoLoader() override;

    // One nation's customization.xml, path relative to res.
    bool loadNation(const QString& relativePath, const QString& nationName);
    void clear();
    void loadForTank(const QString& tankName, const QString& tankExclusionMask,
                     const QString& chassisExclusionMask, const QString& hullExclusionMask);
    // Applies the option at row index among current's options of season.
    void select(int index, const QString& season);

    QStringList descriptions(const QString& season) const;
    QList<QImage> previews(const QString& season) const;

    QString tilingKey;
    QString nation;
    QString tankName;
    QString texture;
    QList<CamoNation> nations;
    CamoNation current;
    int selectedIndex = 0;
    QString selectedSeason = QStringLiteral("summer");

signals:
    // A vehicle of another nation came: the window checks "Summer".
    void summerChosen();
    // The season lists must be shown anew; reset: the first row is current.
    void optionsChanged(bool reset);

private:
    void applyOption(const CamoOption* option);
    void tankLoaded();
};
