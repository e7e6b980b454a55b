#pragma once

#include "GridMesh.h"
#include "ImageLayer.h"
#include "LineBuffer.h"
#include "MarkerSphere.h"
#include "TextOverlay.h"

#include <functional>
#include <map>

class Garage;
class QObject;

// The two passes a scene drawable is called for. The numbers are the ones
// the vehicle's render(int) takes.
enum ScenePass
{
    ShadowPass = 0,
    ColourPass = 1
};

// Draws into whatever framebuffer is bound, with the matrices of
// MatrixStack. Called in the shadow pass (only casters need to draw there)
// and in the colour pass where the vehicle is drawn.
using SceneDrawable = std::function<void(ScenePass pass)>;

// What a frame draws besides the clear: the two backdrops, the floor grid,
// the armour ray with its hit marker, the text overlay, and the drawables
// added from outside (the vehicle). All of it holds GL objects, made and
// freed with the frame's context current.
class SceneContents
{
public:
    SceneContents() = default;
    SceneContents(const SceneContents&) = delete;
    SceneContents& operator=(const SceneContents&) = delete;

    // The grid of gridSize cells a side and both garages, loaded. A garage
    // that reloads on its own (a new game path) makes the context of a
    // QOpenGLWidget parent current first.
    void createBackdrop(int gridSize, QObject* garageParent);
    // The overlay's texture, the ray's buffer and the marker, out of sight.
    void createOverlays();
    void release();
    // Both garages' meshes anew from the garage list.
    void reloadGarages();
    Garage* garage(bool premium) const { return premium ? premiumGarage : basicGarage; }

    // Adds a drawable; the answer removes it again.
    int add(SceneDrawable drawable);
    void remove(int id);
    // Every added drawable, in the order added.
    void draw(ScenePass pass) const;

    Garage* premiumGarage = nullptr;
    Garage* basicGarage = nullptr;
    GridMesh gridMesh;
    TextOverlay overlay;
    // A picture over the frame, under the text (the armour's weak spots).
    ImageLayer imageLayer;
    LineBuffer rayLines;
    MarkerSphere hitMarker;
    // The armour ray's ends. Physics will own them; until then the ray
    // stays a point at the origin.
    Vector3 rayStart{0, 0, 0};
    Vector3 rayEnd{0, 0, 0};

private:
    std::map<int, SceneDrawable> drawables;
    int nextDrawableId = 1;
};
