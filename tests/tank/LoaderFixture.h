#pragma once

// The loader over a game folder with its vehicle table, as the window has
// it, with the window's calls recorded; and the sample installation's
// version with its mod folder and catalogues. Shared by the tank and
// camouflage suites.

#include "Database.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "MoReaderCached.h"
#include "SceneFixture.h"
#include "TankLoader.h"
#include "TurretGunChooser.h"

#include <gtest/gtest.h>

#include <memory>

class LoaderFixture : public testing::Test
{
protected:
    LoaderFixture(const QString& game, const QString& resources, const QString& tankList)
        : scene(game, resources)
    {
        database.tankListPath = tankList;
    }
    void SetUp() override
    {
        if (!scene.ready())
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        database.rebuildDatabase();
        loader = std::make_unique<TankLoader>();
        loader->window.turretRange = [this](float a, float b) { turretRange = {a, b}; };
        loader->window.gunRange = [this](float a, float b) { gunRange = {a, b}; };
        loader->window.addRecent = [this](const QString& name) { recent.append(name); };
        loader->window.visualText = [this](int part, const QString& text) {
            visualTexts[part] = text;
        };
    }
    void TearDown() override
    {
        if (scene.ready())
            scene.gl.context.makeCurrent(&scene.gl.surface);
        loader.reset();
    }
    // Draws nothing but walks the chain, as a frame does.
    void walkChain()
    {
        loader->hideChassis = loader->hideHull = loader->hideTurret = loader->hideGun = true;
        loader->render(1);
    }
    TankMesh* part(int which) { return loader->mesh(which, loader->damageMode); }

    // A load after a good one that fails leaves nothing to draw; it logs
    // `logged` and shows `box` unless that is empty.
    void expectFailedLoad(const QString& name, const QString& logged, const QString& box)
    {
        LogCapture log;
        boxes.boxes.clear();
        EXPECT_FALSE(loader->load(name));
        EXPECT_FALSE(loader->loaded);
        EXPECT_TRUE(loader->chooser->turrets.isEmpty());
        EXPECT_TRUE(loader->chooser->currentGunName.isEmpty());
        EXPECT_EQ(loader->triangleCount(), 0);
        EXPECT_TRUE(log.lines.join('\n').contains(logged)) << log.lines.join('\n').toStdString();
        ASSERT_EQ(boxes.boxes.size(), box.isEmpty() ? 0 : 1);
        if (!box.isEmpty()) { // braces: EXPECT_EQ ends in an else
            EXPECT_EQ(boxes.boxes[0].text, box);
        }
        walkChain(); // nothing loaded: nothing to walk, nothing breaks
    }

    SceneFixture scene;
    Database database;
    MessageBoxRecorder boxes;
    std::unique_ptr<TankLoader> loader;
    Vector2 turretRange{99, 99};
    Vector2 gunRange{99, 99};
    QStringList recent;
    QString visualTexts[TankLoader::PartCount];
};

// The sample installation with its mod folder and catalogues.
class SampleTankLoaderTest : public LoaderFixture
{
protected:
    SampleTankLoaderTest()
        : LoaderFixture(Game, Game + "/ferrox-resources.cfg", Game + "/ferrox-tank_list.cfg")
    {
        if (scene.settings)
            scene.settings->modPath = Game + "-mod";
    }

    static inline const QString Game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
    MoReaderCached catalogues;
};

// The hostile installation: a sound vehicle and one broken vehicle per case.
class HostileTankLoaderTest : public LoaderFixture
{
protected:
    HostileTankLoaderTest()
        : LoaderFixture(Game, Game + "/ferrox-resources.cfg", Game + "/ferrox-tank_list.cfg")
    {
    }

    static inline const QString Game = QStringLiteral(FERROX_SAMPLE_HOSTILE_DIR);
    MoReaderCached catalogues;
};
