#include "GlFunctions.h"
#include "ImageCheck.h"
#include "LoaderFixture.h"
#include "MeshGeometry.h"
#include "TankMesh.h"

#include <QOpenGLFunctions_3_2_Core>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace {

constexpr int Width = 320, Height = 240;

// Where the sample's files put the Talon's parts: the hull on the chassis
// at the vehicle file's hull position, the turret on the hull's
// HP_turretJoint, the gun on the turret's HP_gunJoint. Written out here,
// not taken from the loader, so that a wrong placement shows.
const Vector3 HullAt{0, 0.38f, 0};
const Vector3 TurretAt{0, 0.38f + 1.2f, -0.3f};
const Vector3 GunAt{0, 0.38f + 1.2f + 0.3f, -0.3f + 0.95f};

// The rectangle of pixels a model's points can cover, drawn by
// projection x view x placement.
QRect projectedBounds(const TankMesh& mesh, const Matrix& placement, const Matrix& projectionView)
{
    const Matrix m = matrixProduct(projectionView, placement);
    float left = Width, right = 0, top = Height, bottom = 0;
    for (const MeshGeometry* geometry : mesh.geometries) {
        for (const Vector3& p : geometry->positions) {
            float clip[4];
            for (int row = 0; row < 4; ++row)
                clip[row] = m[row] * p[0] + m[4 + row] * p[1] + m[8 + row] * p[2] + m[12 + row];
            const float x = (clip[0] / clip[3] * 0.5f + 0.5f) * Width;
            const float y = (0.5f - clip[1] / clip[3] * 0.5f) * Height;
            left = std::min(left, x), right = std::max(right, x);
            top = std::min(top, y), bottom = std::max(bottom, y);
        }
    }
    // One pixel of slack for rasterisation.
    return QRect(QPoint(int(left) - 1, int(top) - 1), QPoint(int(right) + 1, int(bottom) + 1));
}

// The pixels that differ between two pictures.
QVector<QPoint> changedPixels(const QImage& a, const QImage& b)
{
    QVector<QPoint> changed;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            if (!sameColour(a.pixel(x, y), QColor(b.pixel(x, y)), 0))
                changed.append(QPoint(x, y));
    return changed;
}

// The Talon seen from the front left, above: the parts overlap as in the
// viewport.
class TankPictureTest : public SampleTankLoaderTest
{
protected:
    void SetUp() override
    {
        SampleTankLoaderTest::SetUp();
        if (IsSkipped())
            return;
        ASSERT_TRUE(loader->load(QStringLiteral("Talon")));
        scene.gl.makeTarget(Width, Height);
        glFunctions()->glViewport(0, 0, Width, Height);
        scene.matrices->projection = perspectiveMatrix(40, float(Width) / Height, 1, 50);
        scene.matrices->setView(lookAt({-6, 5, 7}, {0, 1, 0}, {0, 1, 0}));
        projectionView = matrixProduct(scene.matrices->projection, scene.matrices->view);
    }

    QImage picture()
    {
        QOpenGLFunctions_3_2_Core* gl = glFunctions();
        gl->glClearColor(0, 0, 0, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        loader->render(1);
        return scene.gl.target->toImage();
    }
    // The pixels that a part covers in front of everything else: those that
    // change when it alone is hidden.
    QVector<QPoint> partPixels(bool TankLoader::*hideFlag)
    {
        const QImage whole = picture();
        loader.get()->*hideFlag = true;
        const QImage without = picture();
        loader.get()->*hideFlag = false;
        lastPicture = whole;
        return changedPixels(whole, without);
    }
    void expectWithin(const QVector<QPoint>& pixels, const QRect& bounds, const char* label)
    {
        ASSERT_GT(pixels.size(), 100) << label << " is not in the picture";
        const auto outside = std::count_if(pixels.begin(), pixels.end(),
                                           [&](const QPoint& p) { return !bounds.contains(p); });
        EXPECT_EQ(outside, 0) << label << ": " << outside << " of " << pixels.size()
                              << " pixels lie outside its place; image "
                              << saveFailedImage(lastPicture, label).toStdString();
    }
    TankMesh& part(int which) { return *loader->mesh(which, Intact); }

    Matrix projectionView;
    QImage lastPicture;
};

TEST_F(TankPictureTest, HullTurretAndGunAreDrawnWhereTheirJointsPutThem)
{
    const std::tuple<const char*, bool TankLoader::*, int, Vector3> parts[] = {
        {"hull", &TankLoader::hideHull, TankLoader::HullPart, HullAt},
        {"turret", &TankLoader::hideTurret, TankLoader::TurretPart, TurretAt},
        {"gun", &TankLoader::hideGun, TankLoader::GunPart, GunAt}};
    for (const auto& [label, hide, which, at] : parts)
        expectWithin(partPixels(hide),
                     projectedBounds(part(which), translationMatrix(at), projectionView), label);
}

TEST_F(TankPictureTest, TurningTheTurretCarriesTheGunAboutTheTurretRing)
{
    const QVector<QPoint> ahead = partPixels(&TankLoader::hideGun);
    loader->setTurretRotation(90);
    const QVector<QPoint> turned = partPixels(&TankLoader::hideGun);
    // The gun turns with the turret about the turret's place on the hull.
    const Matrix aboutRing = matrixProduct(
        matrixProduct(translationMatrix(TurretAt), rotate(identityMatrix(), 90, {0, 1, 0})),
        translationMatrix({-TurretAt[0], -TurretAt[1], -TurretAt[2]}));
    const QRect turnedPlace =
        projectedBounds(part(TankLoader::GunPart),
                        matrixProduct(aboutRing, translationMatrix(GunAt)), projectionView);
    expectWithin(turned, turnedPlace, "turned-gun");
    const auto stillAhead = std::count_if(turned.begin(), turned.end(),
                                          [&](const QPoint& p) { return ahead.contains(p); });
    EXPECT_LT(stillAhead, turned.size() / 10) << "the gun did not move";
}

} // namespace
