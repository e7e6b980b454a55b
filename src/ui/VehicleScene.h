#pragma once

class RenderWidget;

// Puts the vehicle into the viewport: when the viewport's GL starts, a
// TankLoader is made in the program's order (after MaterialLoader, before
// TextureLoader) and owned by the widget, its render(pass) joins the scene
// for the shadow and colour passes, and the overlay's vehicle block reads
// its facts. The loader gets the armour inspection, and the viewport's
// Ctrl + click, hit marker and ray line are tied to the ray world. The
// render library knows nothing of the tank assembly; this is where the
// two meet.
void installVehicleLoader(RenderWidget& widget);
