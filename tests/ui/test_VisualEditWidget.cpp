// The visual editor's parts, and saving a part into the mod folder, where
// the next load of the vehicle finds it.

#include "VisualEditWidget.h"

#include "Database.h"
#include "FindReplaceForm.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "MoReaderCached.h"
#include "QtPrinters.h"
#include "SceneFixture.h"
#include "TankLoader.h"
#include "TankMesh.h"
#include "Visual.h"

#include <QTabWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolButton>

#include <gtest/gtest.h>

#include <memory>

namespace {

// Each part's controls are named <part>Tab, <part>TextEdit, <part>FindButton
// and <part>UndoButton.
const std::pair<int, const char*> parts[] = {{TankLoader::ChassisPart, "chassis"},
                                             {TankLoader::HullPart, "hull"},
                                             {TankLoader::TurretPart, "turret"},
                                             {TankLoader::GunPart, "gun"}};

template <typename T> T* child(const QObject& parent, const QString& name)
{
    T* found = parent.findChild<T*>(name);
    EXPECT_NE(found, nullptr) << name.toStdString();
    return found;
}

QColor firstColour(const QTextEdit& edit)
{
    const QList<QTextLayout::FormatRange> formats =
        edit.document()->firstBlock().layout()->formats();
    return formats.isEmpty() ? QColor() : formats.first().format.foreground().color();
}

TEST(VisualEditWidgetTest, EachPartHasItsTabEditorHighlighterAndButtons)
{
    VisualEditWidget editor;
    editor.show();
    for (const auto& [part, name] : parts) {
        SCOPED_TRACE(name);
        const QString prefix = QLatin1String(name);
        auto* edit = child<QTextEdit>(editor, prefix + "TextEdit");
        ASSERT_NE(edit, nullptr);
        EXPECT_EQ(
            child<QTabWidget>(editor, "visualTab")->indexOf(child<QWidget>(editor, prefix + "Tab")),
            part);
        EXPECT_EQ(editor.textEdit(part), edit);

        editor.setVisualText(part, "<visual/>");
        EXPECT_EQ(edit->toPlainText(), "<visual/>");
        EXPECT_EQ(firstColour(*edit), QColor(Qt::blue));
        // New text from the loader cannot be undone.
        EXPECT_FALSE(edit->document()->isUndoAvailable());

        child<QTabWidget>(editor, "visualTab")->setCurrentIndex(part);
        edit->moveCursor(QTextCursor::End);
        QTest::keyClicks(edit, "x");
        EXPECT_EQ(edit->toPlainText(), "<visual/>x");
        QTest::mouseClick(child<QToolButton>(editor, prefix + "UndoButton"), Qt::LeftButton);
        EXPECT_EQ(edit->toPlainText(), "<visual/>");

        QTest::mouseClick(child<QToolButton>(editor, prefix + "FindButton"), Qt::LeftButton);
        EXPECT_EQ(editor.findReplace->textEdit(), edit);
        EXPECT_TRUE(editor.findReplace->isVisible());
    }
    EXPECT_EQ(editor.textEdit(TankLoader::PartCount), nullptr);
}

// The sample installation with a temporary mod folder and the loader's
// visual texts going to the editor.
class VisualSaveTest : public testing::Test
{
protected:
    static inline const QString Game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

    VisualSaveTest() : scene(Game, Game + "/ferrox-resources.cfg")
    {
        database.tankListPath = Game + "/ferrox-tank_list.cfg";
    }
    void SetUp() override
    {
        if (!scene.ready())
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        scene.settings->modPath = mod.path();
        database.rebuildDatabase();
        loader = std::make_unique<TankLoader>();
        editor.connectVisualText(loader->window);
        ASSERT_TRUE(loader->load(Talon));
        child<QTabWidget>(editor, "visualTab")->setCurrentIndex(TankLoader::HullPart);
    }
    void TearDown() override
    {
        if (scene.ready())
            scene.gl.context.makeCurrent(&scene.gl.surface);
        loader.reset();
    }
    const Visual& hullVisual() const { return *loader->mesh(TankLoader::HullPart, Intact)->visual; }
    void clickSave()
    {
        QTest::mouseClick(child<QToolButton>(editor, "hullSaveButton"), Qt::LeftButton);
    }

    const QString Talon = QStringLiteral("Talon");
    // Chassis, hull, Turret_01 and Gun_01 as the generator writes them.
    static constexpr int ChassisTriangles = 724, HullTriangles = 80, TurretTriangles = 132,
                         GunTriangles = 144;

    QTemporaryDir mod;
    SceneFixture scene;
    Database database;
    MoReaderCached catalogues;
    MessageBoxRecorder boxes;
    std::unique_ptr<TankLoader> loader;
    VisualEditWidget editor;
};

TEST_F(VisualSaveTest, ASavedVisualIsWhatTheNextLoadUses)
{
    QTextEdit* hull = child<QTextEdit>(editor, "hullTextEdit");
    ASSERT_EQ(hull->toPlainText(), hullVisual().xmlText);
    ASSERT_EQ(loader->triangleCount(),
              ChassisTriangles + HullTriangles + TurretTriangles + GunTriangles);
    const QString path = hullVisual().path;

    // Without its render sets the hull keeps its joints but draws nothing.
    QString edited = hull->toPlainText();
    edited.replace("renderSet>", "unusedSet>");
    ASSERT_NE(edited, hull->toPlainText());
    hull->setPlainText(edited);
    LogCapture log;
    clickSave();

    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].text, "Visual file saved ok.");
    EXPECT_TRUE(log.contains("[Info] Saving: " + path)) << log.lines.join('\n').toStdString();
    QFile saved(mod.path() + '/' + path);
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(saved.readAll()), edited);

    ASSERT_TRUE(loader->load(Talon));
    EXPECT_EQ(loader->triangleCount(), ChassisTriangles + TurretTriangles + GunTriangles);
    EXPECT_TRUE(hullVisual().xmlText.contains("<unusedSet>"));
    EXPECT_EQ(hull->toPlainText(), hullVisual().xmlText);
}

TEST_F(VisualSaveTest, WithoutAUsableModFolderNothingIsWritten)
{
    const QString blocker = mod.path() + "/file";
    QFile(blocker).open(QIODevice::WriteOnly);
    const QString directory = blocker + '/' + QFileInfo(hullVisual().path).path();
    const struct
    {
        QString modPath;
        QString box;
        QString logged;
    } cases[] = {
        {"", "You must select a mod folder in the application preferences.", ""},
        {blocker, "Failed to create directory: " + directory,
         "[Warning] Failed to create directory: " + directory},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.modPath.toStdString());
        scene.settings->modPath = c.modPath;
        boxes.boxes.clear();
        LogCapture log;
        clickSave();
        ASSERT_EQ(boxes.boxes.size(), 1);
        EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Warning);
        EXPECT_EQ(boxes.boxes[0].text, c.box);
        EXPECT_EQ(log.lines.join('\n'), c.logged);
    }
    EXPECT_EQ(QDir(mod.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
              QStringList{"file"});
}

} // namespace
