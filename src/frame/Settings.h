#pragma once

#include "Singleton.h"

#include <QColor>
#include <QObject>
#include <QString>

// Every preference of the user, kept in settings.cfg in the user directory.
// Other classes read the members directly and change them through the slots.
class Settings : public QObject, public Singleton<Settings>
{
    Q_OBJECT
public:
    static QString defaultFilePath();

    // Holds the first-run values until loadOrCreate() reads the file. An
    // empty path keeps the settings in memory only (command-line tools).
    explicit Settings(const QString& filePath = defaultFilePath());
    ~Settings() override;

    // Reads the file; creates it with the first-run values when it is missing.
    void loadOrCreate();
    void writeDefaults();
    void load();
    void save();

    bool validateGavrelPath(const QString& path);
    QString filePath() const { return settingsFilePath; }

    // Paths
    QString gavrelPath;
    QString modPath;
    QString imageEditor;
    QString screenshotPath;
    // RendererSystems / Renderer
    QString rendererName;
    QString shaderDir;
    // RendererCommon
    QString textureFilter;
    QString msaa;
    int shadowMap = 0;
    float shadowMapSamples = 0;
    int vsync = 0;
    // SceneSettings
    bool mouseInvertX = false;
    bool mouseInvertY = false;
    QColor viewportColor;
    int ambientLight = 0;
    bool showHangar = false;
    bool showGrid = false;
    bool showTankInfo = false;
    bool showShadows = false;
    QString sceneSet;
    QString lighting;
    bool screenshotAlpha = false;
    bool screenshotTimeStamp = false;
    bool showRenderInfo = false;
    bool overwriteTextures = false;
    bool verticalTabs = false;
    bool nativeFileDialog = false;
    bool disableTranslate = false;

    // Not stored: defaults were written in this run.
    bool firstRun = false;
    // Not stored: the last validation found the game's executable.
    bool gavrelPathValid = false;
    // Not stored: a valid new game path waits for the next save.
    bool gavrelPathDirty = false;

signals:
    void gavrelPathChanged();
    void modPathChanged();
    void textureFilterChanged();
    void msaaChanged();
    void shadowMapSizeChanged();
    void mouseInvertChanged();

public slots:
    void setGavrelPath(QString path);
    void setModPath(QString path);
    void setScreenshotPath(QString path);
    void setImageEditorPath(QString path);
    void setShadowMapSize(int size);
    void setShadowMapSamples(float size);
    void setShadowEnabled(bool val);
    void setTextureFilter(QString filter);
    void setMsaa(QString value);
    void setShowTankInfo(bool val);
    void setShowHangar(bool val);
    void setShowGrid(bool val);
    void setAmbientLight(int val);
    void setSceneSet(QString str);
    void setLighting(QString str);
    void setViewportColor(QColor color);
    void setScreenshotTimeStamp(bool val);
    void setScreenshotAlpha(bool val);
    void setVsync(int val);
    void setMouseInvert(bool mouseX, bool mouseY);
    void setShowRenderInfo(bool val);
    void setOverwriteTexture(bool val);
    void setVerticalTabs(bool val);
    void setNativeFileDialog(bool val);
    void setTranslateDisable(bool val);

private:
    void applyFirstRunValues();
    bool writeFile();

    QString settingsFilePath;
};

// The game and mod folders of the present settings; empty where there are
// none (tools and tests that run without them).
QString currentGamePath();
QString currentModPath();
