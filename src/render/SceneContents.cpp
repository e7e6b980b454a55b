#include "SceneContents.h"

#include "Garage.h"

#include <QColor>

void SceneContents::createBackdrop(int gridSize, QObject* garageParent)
{
    premiumGarage = new PremiumGarage(garageParent);
    basicGarage = new BasicGarage(garageParent);
    gridMesh.create(gridSize);
    premiumGarage->load();
    basicGarage->load();
}

void SceneContents::createOverlays()
{
    overlay.init();
    imageLayer.init();
    rayLines.init();
    hitMarker.init(QColor(QStringLiteral("royalblue")));
    // Out of sight until a shell hits something.
    hitMarker.setPosition({999, 999, 999});
}

void SceneContents::release()
{
    delete premiumGarage;
    premiumGarage = nullptr;
    delete basicGarage;
    basicGarage = nullptr;
    gridMesh.release();
    overlay.release();
    imageLayer.release();
    rayLines.release();
    hitMarker.release();
}

void SceneContents::reloadGarages()
{
    for (Garage* each : {premiumGarage, basicGarage}) {
        if (!each)
            continue;
        each->clear();
        each->load();
    }
}

int SceneContents::add(SceneDrawable drawable)
{
    const int id = nextDrawableId++;
    drawables.emplace(id, std::move(drawable));
    return id;
}

void SceneContents::remove(int id)
{
    drawables.erase(id);
}

void SceneContents::draw(ScenePass pass) const
{
    for (const auto& [id, drawable] : drawables)
        drawable(pass);
}
