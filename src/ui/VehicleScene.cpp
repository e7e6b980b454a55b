#include "VehicleScene.h"

#include "ArmorCollisionState.h"
#include "Physics.h"
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

// The ray world outlives the viewport: its marks and drawer point into the
// widget only while the widget's GL, and with it the loader, exists.
void connectViewportToRays(RenderWidget& widget, const TankLoader& loader)
{
    Physics* physics = Physics::instance();
    if (!physics)
        return;
    connectArmorViewport(widget, *physics);
    QObject::connect(&loader, &QObject::destroyed, [] {
        if (Physics* current = Physics::instance()) {
            current->marks = ShotMarks{};
            current->debugDrawer.lines = nullptr;
        }
    });
}

TankLoader* makeTankLoader(RenderWidget& widget)
{
    auto* loader = new TankLoader(&widget);
    loader->window.renewOverlay = [&widget] { widget.overlay.dirty = true; };
    installArmorCollisionState(*loader);
    connectViewportToRays(widget, *loader);
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
    widget.addSceneReloader([] {
        if (TankLoader* loader = TankLoader::instance())
            loader->reload();
    });
}
