// The mod-folder tools, the screenshots and the user guide from the window:
// the boxes of the tools' checks, the vehicle's folder, extraction, the
// image editor, the screenshot dialog, the UV templates and Help. Nothing
// lands in the game folder.

#include "WindowFixture.h"

#include "CommonMessages.h"
#include "EditTextureUI.h"
#include "ImageCheck.h"
#include "RenderWidget.h"
#include "ScreenShotUI.h"
#include "Settings.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TestFiles.h"
#include "TextureLoader.h"
#include "ToolRunner.h"
#include "UvGenerateUI.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImageReader>
#include <QProgressDialog>
#include <QRegularExpression>
#include <QUrl>

namespace {

// Takes the URLs the program opens, so that nothing real opens.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    UrlRecorder() { QDesktopServices::setUrlHandler("file", this, "openUrl"); }
    ~UrlRecorder() override { QDesktopServices::unsetUrlHandler("file"); }
    QList<QUrl> urls;

public slots:
    void openUrl(const QUrl& url) { urls.append(url); }
};

// Runs action on the modal dialog of type T once its loop runs.
template <typename T> void onModal(std::function<void(T&)> action)
{
    QTimer::singleShot(0, [action] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        action(*dialog);
        dialog->close();
    });
}

} // namespace

class ModToolsTest : public WindowTest
{
protected:
    ModToolsTest() : gameBefore(folderDigest(Game)) {}
    ~ModToolsTest() override { EXPECT_EQ(folderDigest(Game), gameBefore) << "game folder changed"; }

    // From here on boxes are answered by answer(request) and recorded.
    void answerWith(std::function<int(const MessageBoxRequest&)> answer)
    {
        setMessageBoxHandler([this, answer](const MessageBoxRequest& request) {
            boxes.boxes.append(request);
            return answer(request);
        });
    }

    QString lastBox() const { return boxes.boxes.isEmpty() ? QString() : boxes.boxes.last().text; }

    // A blank in the path: folders open and the editor gets the file as one
    // argument all the same.
    QString mods() const { return root.filePath(QStringLiteral("mod folder")); }
    static Settings& settings() { return *Settings::instance(); }

    const QByteArray gameBefore;
};

TEST_F(ModToolsTest, ToolsCheckTheModFolderThenTheSelection)
{
    runWindow([this](MainWindow& window) {
        const std::tuple<const char*, QPushButton*, QAction*, bool> tools[] = {
            {"open", window.ui.OpenTankDirButton, window.ui.actionOpen_tank_directory, true},
            {"create", window.ui.CreateTankDirButton, window.ui.actionCreate_tank_directory, true},
            {"extract", window.ui.ExtractTankButton, window.ui.actionExtract_tank_textures, true},
            {"edit", window.ui.EditDiffuseTextureBtn, window.ui.actionEdit_diffuse_textures, true},
            {"uv", window.ui.GenerateUvBtn, window.ui.actionGenerate_UV_map, false},
            {"export", window.ui.exportTankMeshBtn, nullptr, true},
        };
        window.ui.mTankListView->setCurrentIndex(QModelIndex());
        for (const auto& [tool, button, action, needsModFolder] : tools) {
            SCOPED_TRACE(tool);
            for (const bool withModFolder : {false, true}) {
                settings().modPath = withModFolder ? mods() : QString();
                const QString expected = withModFolder || !needsModFolder
                                             ? commonMessages->selectTank
                                             : commonMessages->selectModFolder;
                boxes.boxes.clear();
                button->click();
                if (action)
                    action->trigger();
                ASSERT_EQ(boxes.boxes.size(), action ? 2 : 1);
                for (const MessageBoxRequest& box : boxes.boxes) {
                    EXPECT_EQ(box.text, expected);
                    EXPECT_EQ(box.icon, QMessageBox::Warning);
                }
            }
        }
        EXPECT_FALSE(QFileInfo::exists(mods()));
    });
}

TEST_F(ModToolsTest, TankDirectoryIsCreatedOpenedAndTakesTheExport)
{
    UrlRecorder urls;
    runWindow([&](MainWindow& window) {
        settings().modPath = mods();
        ASSERT_TRUE(selectTank(window, QStringLiteral("Talon")));
        TankListView* list = window.ui.mTankListView;
        const QString directory = mods() + QStringLiteral("/vehicles/Ardenia/A01_Talon");

        int answer = QMessageBox::Cancel;
        answerWith([&answer](const MessageBoxRequest&) { return answer; });
        list->openDirectory();
        // The preamble loaded the selected vehicle.
        EXPECT_EQ(TankLoader::instance()->name, QStringLiteral("Talon"));
        ASSERT_EQ(boxes.boxes.size(), 1);
        EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("Talon directory does not exist in the mod "
                                                      "folder.\nWould you like to create it?"));
        EXPECT_EQ(boxes.boxes[0].defaultButton, QMessageBox::Cancel);
        EXPECT_TRUE(urls.urls.isEmpty());
        EXPECT_FALSE(QFileInfo::exists(directory));

        answer = QMessageBox::Ok;
        list->openDirectory();
        EXPECT_TRUE(QFileInfo(directory).isDir());
        EXPECT_EQ(lastBox(), QStringLiteral("Create directory completed."));
        ASSERT_EQ(urls.urls.size(), 1);
        EXPECT_EQ(urls.urls[0].toLocalFile(), directory);

        list->createDirectory();
        EXPECT_EQ(lastBox(), commonMessages->directoryExists);
        EXPECT_EQ(boxes.boxes.last().icon, QMessageBox::Information);

        window.ui.exportTankMeshBtn->click();
        EXPECT_EQ(lastBox(), QStringLiteral("Export tank completed."));
        const QStringList objs =
            QDir(directory + QStringLiteral("/normal/lod0")).entryList({QStringLiteral("*.obj")});
        EXPECT_GE(objs.size(), 4) << objs.join(' ').toStdString();
    });
}

TEST_F(ModToolsTest, ExtractionAsksBeforeOverwritingAndStopsWhenCancelled)
{
    runWindow([&](MainWindow& window) {
        settings().modPath = mods();
        loadByName(window, QStringLiteral("Talon"));
        const QStringList textures = TankLoader::instance()->info->allTextureFiles;
        ASSERT_GE(textures.size(), 2);
        const QString first = mods() + QLatin1Char('/') + textures[0];
        TankListView* list = window.ui.mTankListView;

        int answer = QMessageBox::Ok;
        bool cancelProgress = false;
        answerWith([&](const MessageBoxRequest& request) {
            if (cancelProgress && request.buttons.testFlag(QMessageBox::Cancel))
                window.findChild<QProgressDialog*>()->cancel();
            return answer;
        });
        list->extractTextures();
        EXPECT_EQ(boxes.boxes.size(), 1);
        EXPECT_EQ(lastBox(), QStringLiteral("Extraction completed."));
        const QByteArray original = readFile(first);
        ASSERT_NE(original, "<missing>");
        // Textures listed twice or held by no archive ask nothing.
        const int extracted = int(filesBelow(mods()).size());

        struct Case
        {
            const char* what;
            bool overwriteSetting;
            int answer;
            bool cancel;
            int prompts;
            bool restored;
            QString result;
        };
        const QString done = QStringLiteral("Extraction completed.");
        const Case cases[] = {
            {"kept", false, QMessageBox::Cancel, false, extracted, false, done},
            {"overwritten", false, QMessageBox::Ok, false, extracted, true, done},
            {"silently", true, QMessageBox::Cancel, false, 0, true, done},
            {"cancelled", false, QMessageBox::Cancel, true, 1, false,
             commonMessages->extractTexturesFailed},
        };
        for (const Case& test : cases) {
            SCOPED_TRACE(test.what);
            QFile changed(first);
            ASSERT_TRUE(changed.open(QIODevice::WriteOnly));
            changed.write("modder's work");
            changed.close();
            settings().overwriteTextures = test.overwriteSetting;
            answer = test.answer;
            cancelProgress = test.cancel;
            boxes.boxes.clear();
            list->extractTextures();
            ASSERT_EQ(boxes.boxes.size(), test.prompts + 1);
            for (int i = 0; i < test.prompts; ++i) {
                EXPECT_TRUE(boxes.boxes[i].text.startsWith(QStringLiteral("WARNING! ")));
                EXPECT_EQ(boxes.boxes[i].defaultButton, QMessageBox::Cancel);
            }
            EXPECT_EQ(lastBox(), test.result);
            EXPECT_EQ(readFile(first), test.restored ? original : QByteArray("modder's work"));
        }
    });
    EXPECT_TRUE(
        logLines().contains(QStringLiteral("[ Warning ] Failed to extract textures: Talon")));
}

TEST_F(ModToolsTest, EditTextureHandsTheChosenFileToTheEditor)
{
    UrlRecorder urls;
    const QString record = root.filePath(QStringLiteral("arguments.txt"));
    const QString editor = root.filePath(QStringLiteral("editor.sh"));
    root.writeFile(QStringLiteral("editor.sh"),
                   "#!/bin/sh\nprintf '%s|' \"$@\" > \"" + record.toUtf8() + ".part\"\nmv \"" +
                       record.toUtf8() + ".part\" \"" + record.toUtf8() + "\"\n");
    QFile(editor).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    runWindow([&](MainWindow& window) {
        settings().modPath = mods();
        loadByName(window, QStringLiteral("Talon"));
        TankListView* list = window.ui.mTankListView;

        window.ui.CollisionBtn->setChecked(true);
        list->editTexture();
        EXPECT_EQ(lastBox(), QStringLiteral("Edit texture not available in collision mode."));
        window.ui.UndamagedBtn->setChecked(true);

        const QString chosen = TankLoader::instance()->info->diffuseTextures.value(0);
        ASSERT_FALSE(chosen.isEmpty());
        settings().imageEditor = editor;
        boxes.boxes.clear();
        onModal<EditTextureUI>([](EditTextureUI& dialog) {
            const QAbstractItemModel* model = dialog.ui.treeView->model();
            const QModelIndex diffuse = model->index(0, 0);
            EXPECT_EQ(diffuse.data().toString(), QStringLiteral("Diffuse"));
            // A group row is no texture: the dialog stays.
            dialog.ui.treeView->setCurrentIndex(diffuse);
            dialog.accept();
            EXPECT_TRUE(dialog.isVisible());
            dialog.ui.treeView->setCurrentIndex(model->index(0, 0, diffuse));
            dialog.accept();
        });
        list->editTexture();
        ASSERT_EQ(boxes.boxes.size(), 3);
        EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("You must select a texture."));
        EXPECT_EQ(boxes.boxes[1].text, QStringLiteral("Talon textures do not exist in the mod "
                                                      "folder.\nWould you like to extract them?"));
        EXPECT_EQ(boxes.boxes[2].text, QStringLiteral("Extraction completed."));
        const QString file = mods() + QLatin1Char('/') + chosen;
        EXPECT_TRUE(QFileInfo::exists(file));
        EXPECT_TRUE(QTest::qWaitFor([&] { return QFile::exists(record); }, 30000));
        EXPECT_EQ(readFile(record), file.toUtf8() + "|");

        // Without an editor the system's viewer for the type opens it.
        settings().imageEditor.clear();
        onModal<EditTextureUI>([](EditTextureUI& dialog) {
            const QAbstractItemModel* model = dialog.ui.treeView->model();
            dialog.ui.treeView->setCurrentIndex(model->index(0, 0, model->index(0, 0)));
            dialog.accept();
        });
        list->editTexture();
        ASSERT_EQ(urls.urls.size(), 1);
        EXPECT_EQ(urls.urls[0].toLocalFile(), file);
    });
}

TEST_F(ModToolsTest, ScreenshotsGoToClipboardFileAndDialog)
{
    UrlRecorder urls;
    const QString shots = root.filePath(QStringLiteral("shots"));
    QDir().mkpath(shots);
    runWindow([&](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        settings().screenshotPath = shots;
        settings().screenshotTimeStamp = false;

        window.takeScreenshot();
        EXPECT_EQ(lastBox(), QStringLiteral("Copied image to clipboard."));
        EXPECT_EQ(QGuiApplication::clipboard()->image().size(),
                  window.renderWidget->size() * window.devicePixelRatio());
        window.takeScreenshotFile();
        EXPECT_EQ(lastBox(), QStringLiteral("Image saved ok."));
        EXPECT_FALSE(QImage(shots + QStringLiteral("/Talon.png")).isNull());
        window.openScreenshotDir();
        ASSERT_EQ(urls.urls.size(), 1);
        EXPECT_EQ(urls.urls[0].toLocalFile(), shots + QLatin1Char('/'));

        // Full-screen, the boxes stay away; a failure is only logged.
        window.ui.actionFullscreen->setChecked(true);
        boxes.boxes.clear();
        window.takeScreenshot();
        settings().screenshotPath = root.filePath(QStringLiteral("missing"));
        window.takeScreenshotFile();
        EXPECT_TRUE(boxes.boxes.isEmpty());
        window.ui.actionFullscreen->setChecked(false);

        // A name without a suffix takes the chosen format's.
        const QString file = root.filePath(QStringLiteral("dialog.tiff"));
        QString answer;
        setFileDialogHandler([&answer](const FileDialogRequest& request) {
            if (request.selectedFilter)
                *request.selectedFilter = QStringLiteral("Tiff (*.tiff)");
            return answer;
        });
        {
            ScreenShotUI dialog(&window, window.renderWidget);
            EXPECT_TRUE(window.renderWidget->paused);
            // The preview is the frame scaled to the preview's size after
            // layout: a smaller picture would repeat across it.
            dialog.show();
            const QWidget* preview = dialog.ui.previewWidget;
            EXPECT_EQ(preview->palette().brush(dialog.backgroundRole()).textureImage().size(),
                      preview->size());
            const int side = std::min(window.renderWidget->maxImageSize(), 8000);
            dialog.loadPresetChanged(7);
            EXPECT_EQ(dialog.ui.widthSpinBox->value(), side);
            EXPECT_EQ(dialog.ui.heightSpinBox->value(), side);
            // Odd sizes the viewport never had.
            dialog.ui.widthSpinBox->setValue(333);
            dialog.ui.heightSpinBox->setValue(187);
            dialog.ui.transparencyCheckBox->setChecked(true);
            boxes.boxes.clear();
            dialog.accept(); // chooser cancelled: nothing happens
            EXPECT_TRUE(boxes.boxes.isEmpty());
            answer = root.filePath(QStringLiteral("dialog"));
            dialog.accept();
            EXPECT_EQ(lastBox(), QStringLiteral("Screenshot save operation complete."));
        }
        setFileDialogHandler({});
        EXPECT_EQ(QImageReader(file).format(), "tiff");
        const QImage image(file);
        ASSERT_EQ(image.size(), QSize(333, 187));
        EXPECT_TRUE(image.hasAlphaChannel());
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
        EXPECT_EQ(qAlpha(image.pixel(332, 186)), 0);
        bool vehicleDrawn = false;
        for (int y = 0; y < image.height() && !vehicleDrawn; ++y)
            for (int x = 0; x < image.width() && !vehicleDrawn; ++x)
                vehicleDrawn = qAlpha(image.pixel(x, y)) == 255;
        EXPECT_TRUE(vehicleDrawn);
        if (!vehicleDrawn || qAlpha(image.pixel(0, 0)) != 0 || qAlpha(image.pixel(332, 186)) != 0)
            saveFailedImage(image, QStringLiteral("screenshot-dialog"));
    });
}

TEST_F(ModToolsTest, UvDialogSavesTemplatesAtTheChosenScale)
{
    runWindow([&](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        const QString file = root.filePath(QStringLiteral("uv.png"));
        setFileDialogHandler([&file](const FileDialogRequest& request) {
            EXPECT_TRUE(request.caption.startsWith(QStringLiteral("Save UV Map: ")));
            return file;
        });
        QString texture;
        onModal<UvGenerateUI>([&](UvGenerateUI& dialog) {
            dialog.saveActive();
            EXPECT_EQ(lastBox(), QStringLiteral("You must generate a UV Map first."));
            dialog.generate();
            ASSERT_GT(dialog.ui.tabWidget->count(), 0);
            EXPECT_EQ(dialog.images.size(), dialog.map.textures.size());
            dialog.ui.resMultCombo->setCurrentIndex(1);
            dialog.ui.tabWidget->setCurrentIndex(0);
            texture = dialog.map.textureForTab(dialog.ui.tabWidget->widget(0)->objectName());
            dialog.saveActive();
            EXPECT_EQ(lastBox(), QStringLiteral("UV Map save operation complete."));
        });
        window.ui.GenerateUvBtn->click();
        setFileDialogHandler({});
        ASSERT_FALSE(texture.isEmpty());
        const QSize size = TextureLoader::instance()->ddsSize(texture);
        ASSERT_FALSE(size.isEmpty());
        EXPECT_EQ(QImage(file).size(), size * 2);
    });
}

// File > "Export glTF..." starts in the vehicle's folder in the mod folder
// and writes, for the state shown, the very file ferrox-tool writes.
TEST_F(ModToolsTest, GltfExportStartsInTheModFolderAndWritesWhatTheToolWrites)
{
    runWindow([&](MainWindow& window) {
        settings().modPath = mods();
        loadByName(window, QStringLiteral("Talon"));
        window.ui.DamagedBtn->click();
        const QString file = root.filePath(QStringLiteral("window.glb"));
        QString start;
        setFileDialogHandler([&](const FileDialogRequest& request) {
            start = request.startDirectory;
            return file;
        });
        window.ui.actionExport_glTF->trigger();
        setFileDialogHandler({});
        EXPECT_EQ(start,
                  QDir::toNativeSeparators(mods() + QStringLiteral("/vehicles/Ardenia/A01_Talon/"
                                                                   "a01_talon_destroyed.glb")));
        const QString toolFile = root.filePath(QStringLiteral("tool.glb"));
        const ToolResult tool =
            runTool({"gltf", Game, "Talon", "--state", "destroyed", "--out", toolFile});
        ASSERT_EQ(tool.exitCode, 0) << tool.err.toStdString();
        const QByteArray written = readFile(file);
        EXPECT_FALSE(written.isEmpty());
        EXPECT_TRUE(written == readFile(toolFile));
    });
}

#include "test_ModTools.moc"

TEST_F(ModToolsTest, HelpOpensTheUserGuideBesideTheProgram)
{
    UrlRecorder urls;
    runWindow([&](MainWindow& window) {
        const QString guide = root.filePath(QStringLiteral("docs/user-guide.html"));
        window.ui.actionFerrox_Help->trigger();
        EXPECT_TRUE(urls.urls.isEmpty());
        EXPECT_EQ(lastBox(), QStringLiteral("Could not locate the user guide: ") +
                                 QDir::toNativeSeparators(guide));

        // The guide as the build renders it for the install.
        ASSERT_TRUE(QFile::link(QStringLiteral(FERROX_BIN_DIR "/../docs"),
                                root.filePath(QStringLiteral("docs"))));
        window.ui.actionFerrox_Help->trigger();
        ASSERT_EQ(urls.urls.size(), 1);
        EXPECT_EQ(urls.urls[0], QUrl::fromLocalFile(guide));
        const QString page = QString::fromUtf8(readFile(guide));
        EXPECT_TRUE(page.contains(QStringLiteral("<h2 id=\"keys\">Keys</h2>")));
        // Every picture it shows stands beside it.
        static const QRegularExpression picture(QStringLiteral("<img [^>]*src=\"([^\"]+)\""));
        int pictures = 0;
        for (auto match = picture.globalMatch(page); match.hasNext(); ++pictures) {
            const QString source = match.next().captured(1);
            EXPECT_FALSE(QImage(QFileInfo(guide).dir().filePath(source)).isNull())
                << source.toStdString();
        }
        EXPECT_GT(pictures, 10);
    });
}
