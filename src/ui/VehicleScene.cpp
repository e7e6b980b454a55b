#include "VehicleScene.h"

#include "RenderWidget.h"
#include "TankLoader.h"

namespace {

void vehicleFacts(const TankLoader& loader, OverlayFacts& facts)
{
    facts.nation = loader.nation;
    facts.name = loader.name;
    facts.category = loader.category;
    facts.tier = loader.tier;
    facts.hitPoints = loader.hullHealth + loader.turretHealth;
    facts.tankTriangles = loader.loaded ? loader.triangleCount() : 0;
}

TankLoader* makeTankLoader(RenderWidget& widget)
{
    auto* loader = new TankLoader(&widget);
    loader->window.renewOverlay = [&widget] { widget.overlay.dirty = true; };
    // Through the singleton: the drawable outlives the loader, which goes
    // with the widget's GL.
    widget.addSceneDrawable([](ScenePass pass) {
        if (TankLoader* current = TankLoader::instance())
            current->render(pass);
    });
    widget.frame.vehicleFacts = [](OverlayFacts& facts) {
        if (const TankLoader* current = TankLoader::instance())
            vehicleFacts(*current, facts);
    };
    return loader;
}

} // namespace

void installVehicleLoader(RenderWidget& widget)
{
    widget.addSceneLoaderMaker([](RenderWidget& owner) { return makeTankLoader(owner); });
}
