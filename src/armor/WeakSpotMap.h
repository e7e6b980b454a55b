#pragma once

#include "Maths.h"
#include "RayResult.h"
#include "ShellParamaters.h"

#include <QImage>
#include <QSize>
#include <QVector>

#include <atomic>
#include <functional>

class btCollisionWorld;

// What the camera sees: the rays of a weak-spot map go through the centre
// of each pixel, from the near plane on (perspective or orthographic).
struct WeakSpotView
{
    Matrix view{};
    Matrix projection{};
    QSize size;
};

// What one pixel's ray met: the chance to penetrate the first regular
// plate and that plate's verdict; NoVerdict and no chance where the ray
// meets no regular plate.
struct WeakSpotPixel
{
    float chance = 0;
    int verdict = NoVerdict;
    bool hit = false; // the ray met the vehicle at all
};

// The share of the vehicle's silhouette (pixels whose ray meets it) at
// each verdict of its first regular plate; what meets only spaced armour
// counts as NoVerdict.
struct WeakSpotShares
{
    int silhouette = 0;
    int penetrated = 0;
    int notPenetrated = 0;
    int ricochet = 0;
    int noRegularPlate = 0;
};

// A weak-spot map: one armour walk per pixel through a ray world that
// nobody changes meanwhile, split by rows over threads. Reads the world
// only; touches no GL.
class WeakSpotMap
{
public:
    // progress, if set, is called from the worker threads with the number
    // of rows done so far; cancel, if set and raised, ends the work early
    // (the map is then incomplete and should be dropped).
    static QVector<WeakSpotPixel> compute(const btCollisionWorld& world,
                                          const ShellParamaters& shell, const WeakSpotView& view,
                                          int threads,
                                          const std::function<void(int rows)>& progress = {},
                                          const std::atomic<bool>* cancel = nullptr);

    // The ray of pixel (x, y), y downward: through the pixel's centre from
    // the near plane to the far plane.
    static void pixelRay(const WeakSpotView& view, const Matrix& inverseViewProjection, int x,
                         int y, Vector3* from, Vector3* to);
    static Matrix inverseViewProjection(const WeakSpotView& view);

    // Red for 0 through yellow to green for 1; transparent where the ray
    // missed the vehicle, and grey where it met no regular plate.
    static QRgb colourOf(const WeakSpotPixel& pixel);
    static QImage image(const QVector<WeakSpotPixel>& pixels, const QSize& size);
    static WeakSpotShares shares(const QVector<WeakSpotPixel>& pixels);
};
