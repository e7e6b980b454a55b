#pragma once

// Runs the whole program on the sample installation in this process, in a
// private tree, with message boxes answered by a recorder. The test's body
// runs once the window stands, before the event loop; the window then
// closes, which ends the run.

#include "FerroxMain.h"
#include "ImageCheck.h"
#include "MainWindow.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "TestRoot.h"

#include <QApplication>
#include <QFile>
#include <QStringListModel>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

// Pixels of the middle third that differ clearly between two frames.
inline int changedPixels(const QImage& before, const QImage& after)
{
    int changed = 0;
    for (int y = before.height() / 3; y < 2 * before.height() / 3; ++y)
        for (int x = before.width() / 3; x < 2 * before.width() / 3; ++x)
            changed += sameColour(before.pixel(x, y), QColor(after.pixel(x, y)), 8) ? 0 : 1;
    return changed;
}

// The names the tank list shows, in its order.
inline QStringList listedTankNames(const MainWindow& window)
{
    const auto* model = qobject_cast<QStringListModel*>(window.ui.mTankListView->model());
    return model ? model->stringList() : QStringList();
}

class WindowTest : public testing::Test
{
protected:
    static inline const QString Game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

    WindowTest() { writeSettings("<ShadowMap>1024</ShadowMap>"); }

    // A settings file on a game folder (the sample installation and its mod
    // folder unless told otherwise) with these renderer values.
    void writeSettings(const QByteArray& rendererCommon, const QString& game = Game,
                       const QString& mod = Game + QStringLiteral("-mod"))
    {
        root.writeFile(QStringLiteral("data/settings.cfg"),
                       "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Settings>\n"
                       " <Paths><GavrelPath>" +
                           game.toUtf8() + "</GavrelPath><ModPath>" + mod.toUtf8() +
                           "</ModPath></Paths>\n"
                           " <RendererSystems><Renderer><ShaderDir>../data/shaders/glsl150"
                           "</ShaderDir></Renderer></RendererSystems>\n <RendererCommon>" +
                           rendererCommon + "</RendererCommon>\n</Settings>\n");
    }

    // Returns the program's exit code.
    int runWindow(const std::function<void(MainWindow&)>& body, const QString& locale = QString())
    {
        int argc = 1;
        char name[] = "ferrox";
        char* argv[] = {name, nullptr};
        StartOptions options;
        options.applicationDirectory = root.binDirectory();
        options.localeName = locale;
        options.onStarted = [&body](MainWindow& window) {
            body(window);
            QTimer::singleShot(0, &window, &QWidget::close);
        };
        const int code = runFerrox(argc, argv, options);
        root.leave();
        return code;
    }

    QString userFile(const QString& name) const { return root.dataDirectory() + '/' + name; }

    static QStringList listedNames(const MainWindow& window) { return listedTankNames(window); }

    // Makes the row of that name current; false when it isn't listed.
    static bool selectTank(MainWindow& window, const QString& name)
    {
        const int row = int(listedNames(window).indexOf(name));
        if (row < 0)
            return false;
        window.ui.mTankListView->setCurrentIndex(window.ui.mTankListView->model()->index(row, 0));
        return true;
    }

    static void loadByName(MainWindow& window, const QString& name)
    {
        ASSERT_TRUE(selectTank(window, name)) << name.toStdString();
        window.loadTank();
    }

    QStringList logLines() const
    {
        QFile file(userFile(QStringLiteral("Ferrox.log")));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QStringList lines;
        for (const QString& line : QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n")))
            if (!line.isEmpty())
                lines.append(line.section(QLatin1Char('['), 1).prepend(QLatin1Char('[')));
        return lines;
    }

    TestRoot root;
    MessageBoxRecorder boxes;
};
