#include "WeakSpotMap.h"

#include "Penetration.h"
#include "Physics.h"

#include <QMatrix4x4>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

WeakSpotPixel walkPixel(const btCollisionWorld& world, const ShellParamaters& shell,
                        const Vector3& from, const Vector3& to)
{
    WeakSpotPixel pixel;
    const RayWalk walk = Physics::walkRay(world, from, to, shell);
    pixel.hit = !walk.walked.isEmpty();
    const RayResultsList published = walk.published();
    if (const RayResult* plate = firstRegularPlate(published)) {
        pixel.chance = plate->chance;
        pixel.verdict = plate->verdict;
    }
    return pixel;
}

} // namespace

Matrix WeakSpotMap::inverseViewProjection(const WeakSpotView& view)
{
    const Matrix product = matrixProduct(view.projection, view.view);
    QMatrix4x4 matrix;
    std::copy(product.begin(), product.end(), matrix.data());
    const QMatrix4x4 inverse = matrix.inverted();
    Matrix result;
    std::copy(inverse.constData(), inverse.constData() + 16, result.begin());
    return result;
}

namespace {

Vector3 unproject(const Matrix& inverse, float x, float y, float z)
{
    const float device[4] = {x, y, z, 1};
    float point[4] = {0, 0, 0, 0};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            point[row] += inverse[column * 4 + row] * device[column];
    return {point[0] / point[3], point[1] / point[3], point[2] / point[3]};
}

} // namespace

void WeakSpotMap::pixelRay(const WeakSpotView& view, const Matrix& inverse, int x, int y,
                           Vector3* from, Vector3* to)
{
    const float deviceX = (float(x) + 0.5f) / float(view.size.width()) * 2 - 1;
    const float deviceY = 1 - (float(y) + 0.5f) / float(view.size.height()) * 2;
    const Vector3 near = unproject(inverse, deviceX, deviceY, -1);
    const Vector3 far = unproject(inverse, deviceX, deviceY, 1);
    *from = near;
    *to = far;
}

QVector<WeakSpotPixel> WeakSpotMap::compute(const btCollisionWorld& world,
                                            const ShellParamaters& shell, const WeakSpotView& view,
                                            int threads,
                                            const std::function<void(int rows)>& progress,
                                            const std::atomic<bool>* cancel)
{
    const int width = view.size.width();
    const int height = view.size.height();
    QVector<WeakSpotPixel> pixels(qsizetype(width) * height);
    if (width <= 0 || height <= 0)
        return pixels;
    const Matrix inverse = inverseViewProjection(view);
    std::atomic<int> nextRow{0};
    std::atomic<int> rowsDone{0};
    auto work = [&] {
        for (int y = nextRow++; y < height; y = nextRow++) {
            if (cancel && *cancel)
                return;
            for (int x = 0; x < width; ++x) {
                Vector3 from, to;
                pixelRay(view, inverse, x, y, &from, &to);
                pixels[qsizetype(y) * width + x] = walkPixel(world, shell, from, to);
            }
            const int done = ++rowsDone;
            if (progress)
                progress(done);
        }
    };
    std::vector<std::thread> pool;
    for (int i = 1; i < std::max(threads, 1); ++i)
        pool.emplace_back(work);
    work();
    for (std::thread& thread : pool)
        thread.join();
    return pixels;
}

QRgb WeakSpotMap::colourOf(const WeakSpotPixel& pixel)
{
    if (!pixel.hit)
        return qRgba(0, 0, 0, 0);
    if (pixel.verdict == NoVerdict)
        return qRgba(128, 128, 128, 255);
    const float c = std::clamp(pixel.chance, 0.0f, 1.0f);
    const int red = c <= 0.5f ? 255 : int(255 * (1 - c) * 2 + 0.5f);
    const int green = c >= 0.5f ? 255 : int(255 * c * 2 + 0.5f);
    return qRgba(red, green, 0, 255);
}

QImage WeakSpotMap::image(const QVector<WeakSpotPixel>& pixels, const QSize& size)
{
    QImage result(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            line[x] = colourOf(pixels[qsizetype(y) * size.width() + x]);
    }
    return result;
}

WeakSpotShares WeakSpotMap::shares(const QVector<WeakSpotPixel>& pixels)
{
    WeakSpotShares shares;
    for (const WeakSpotPixel& pixel : pixels) {
        if (!pixel.hit)
            continue;
        ++shares.silhouette;
        switch (pixel.verdict) {
        case Penetrated:
            ++shares.penetrated;
            break;
        case NotPenetrated:
            ++shares.notPenetrated;
            break;
        case RicochetVerdict:
            ++shares.ricochet;
            break;
        default:
            ++shares.noRegularPlate;
        }
    }
    return shares;
}
