#pragma once

#include <QString>
#include <QStringList>

class QDomElement;

// Nations that the installation holds but tank_list.cfg does not name: every
// folder below "scripts/item_defs/vehicles/" with a list.xml, in the mod
// folder, loose in the game's res folder or in an archive.
class NationSurvey
{
public:
    // The nation folders found, in name order, less those named (compared
    // without regard to case). Each appears once, in the spelling of the
    // first place it was found in.
    static QStringList unlistedNations(const QStringList& namedNations);

    // The resource path of a nation's list.
    static QString listPath(const QString& nation);

    // The nation's model folder ("vehicles/<Folder>") as its vehicles'
    // hull models name it, the way a vehicle's own folder is found; the
    // first vehicle whose file names one decides. Empty if none does.
    static QString dataPathFromVehicles(const QString& nation, const QDomElement& listRoot);
};
