#include "CamoList.h"

#include "CamoLoader.h"
#include "TankLoader.h"

#include <QPixmap>

namespace {
constexpr int Channels = 4;
}

CamoList::CamoList(QObject* parent) : QObject(parent)
{
    if (CamoLoader* camo = CamoLoader::instance()) {
        connect(camo, &CamoLoader::summerChosen, this, &CamoList::vehicleOfAnotherNation);
        connect(camo, &CamoLoader::optionsChanged, this, &CamoList::refresh);
    }
}

QColor CamoList::color(int channel) const
{
    const CamoLoader* camo = CamoLoader::instance();
    if (!camo || channel < 0 || channel >= Channels)
        return QColor();
    const Vector4& c = camo->colors[size_t(channel)];
    return QColor(int(c[0]), int(c[1]), int(c[2]), int(c[3]));
}

void CamoList::refresh(bool reset)
{
    const TankLoader* loader = TankLoader::instance();
    const CamoLoader* camo = CamoLoader::instance();
    if (!loader || loader->nation.isEmpty() || !camo)
        return;
    const QList<QImage> previews = camo->previews(season);
    const QStringList descriptions = camo->descriptions(season);
    model.clear();
    for (int row = 0; row < previews.size(); ++row) {
        auto* item = new QStandardItem(QIcon(QPixmap::fromImage(previews[row])), QString());
        item->setToolTip(descriptions.value(row));
        item->setEditable(false);
        model.appendRow(item);
    }
    paintSwatches();
    emit refreshed(reset);
}

void CamoList::setSeason(const QString& name)
{
    season = name;
    refresh(true);
}

void CamoList::vehicleOfAnotherNation()
{
    season = QStringLiteral("summer");
}

void CamoList::clickRow(int row)
{
    CamoLoader* camo = CamoLoader::instance();
    if (!camo || row < 0)
        return;
    camo->select(row, season);
    paintSwatches();
}

void CamoList::setColor(int channel, const QColor& colour)
{
    CamoLoader* camo = CamoLoader::instance();
    if (!camo || channel < 0 || channel >= Channels || !colour.isValid())
        return;
    camo->colors[size_t(channel)] = {float(colour.red()), float(colour.green()),
                                     float(colour.blue()), float(colour.alpha())};
    emit swatchChanged(channel, colour);
}

void CamoList::paintSwatches()
{
    for (int channel = 0; channel < Channels; ++channel)
        emit swatchChanged(channel, color(channel));
}
