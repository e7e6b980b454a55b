#include "Settings.h"

#include "Environment.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "SettingsFormat.h"
#include "StartupError.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QTextStream>

#include <variant>

namespace {

using MemberPointer = std::variant<QString Settings::*, int Settings::*, float Settings::*,
                                   bool Settings::*, QColor Settings::*>;

struct Key
{
    const char* group; // "Parent/Child" for nested groups
    const char* name;
    MemberPointer member;
};

// The file's keys, in the order in which they are written.
const Key keys[] = {
    {"Paths", "GavrelPath", &Settings::gavrelPath},
    {"Paths", "ModPath", &Settings::modPath},
    {"Paths", "ImageEditor", &Settings::imageEditor},
    {"Paths", "Screenshots", &Settings::screenshotPath},
    {"RendererSystems/Renderer", "Name", &Settings::rendererName},
    {"RendererSystems/Renderer", "ShaderDir", &Settings::shaderDir},
    {"RendererCommon", "TextureFilter", &Settings::textureFilter},
    {"RendererCommon", "MSAA", &Settings::msaa},
    {"RendererCommon", "ShadowMap", &Settings::shadowMap},
    {"RendererCommon", "ShadowMapSamples", &Settings::shadowMapSamples},
    {"RendererCommon", "VSync", &Settings::vsync},
    {"SceneSettings", "MouseInvertX", &Settings::mouseInvertX},
    {"SceneSettings", "MouseInvertY", &Settings::mouseInvertY},
    {"SceneSettings", "ViewportColor", &Settings::viewportColor},
    {"SceneSettings", "AmbientLight", &Settings::ambientLight},
    {"SceneSettings", "ShowHangar", &Settings::showHangar},
    {"SceneSettings", "ShowGrid", &Settings::showGrid},
    {"SceneSettings", "ShowTankInfo", &Settings::showTankInfo},
    {"SceneSettings", "ShowShadows", &Settings::showShadows},
    {"SceneSettings", "SceneSet", &Settings::sceneSet},
    {"SceneSettings", "Lighting", &Settings::lighting},
    {"SceneSettings", "ScreenshotAlpha", &Settings::screenshotAlpha},
    {"SceneSettings", "ScreenshotTimeStamp", &Settings::screenshotTimeStamp},
    {"SceneSettings", "ShowRenderInfo", &Settings::showRenderInfo},
    {"SceneSettings", "OverwriteTextures", &Settings::overwriteTextures},
    {"SceneSettings", "VerticalTabs", &Settings::verticalTabs},
    {"SceneSettings", "NativeFileDialog", &Settings::nativeFileDialog},
    {"SceneSettings", "DisableTranslate", &Settings::disableTranslate},
};

struct ValueToText
{
    const Settings& settings;
    QString operator()(QString Settings::*member) const { return settings.*member; }
    QString operator()(int Settings::*member) const
    {
        return SettingsFormat::intText(settings.*member);
    }
    QString operator()(float Settings::*member) const
    {
        return SettingsFormat::floatText(settings.*member);
    }
    QString operator()(bool Settings::*member) const
    {
        return SettingsFormat::boolText(settings.*member);
    }
    QString operator()(QColor Settings::*member) const
    {
        return SettingsFormat::colorText(settings.*member);
    }
};

struct TextToValue
{
    Settings& settings;
    const QString& text;
    void operator()(QString Settings::*member) const { settings.*member = text; }
    void operator()(int Settings::*member) const
    {
        settings.*member = SettingsFormat::readInt(text);
    }
    void operator()(float Settings::*member) const
    {
        settings.*member = SettingsFormat::readFloat(text);
    }
    void operator()(bool Settings::*member) const
    {
        settings.*member = SettingsFormat::readBool(text);
    }
    void operator()(QColor Settings::*member) const
    {
        settings.*member = SettingsFormat::readColor(text);
    }
};

// The element of a group path below the root, created on the way if asked.
QDomElement groupElement(QDomDocument& document, QDomElement root, const QString& group,
                         bool create)
{
    QDomElement element = root;
    for (const QString& name : group.split(QLatin1Char('/'))) {
        QDomElement child = element.firstChildElement(name);
        if (child.isNull() && create) {
            child = document.createElement(name);
            element.appendChild(child);
        }
        element = child;
    }
    return element;
}

} // namespace

QString Settings::defaultFilePath()
{
    return QDir::toNativeSeparators(userDirectory() + QStringLiteral("/settings.cfg"));
}

Settings::Settings(const QString& filePath) : settingsFilePath(filePath)
{
    Log::log(QStringLiteral("Loading settings file."), Log::Info);
    applyFirstRunValues();
    firstRun = false;
}

Settings::~Settings() = default;

void Settings::loadOrCreate()
{
    if (!QFile::exists(settingsFilePath)) {
        Log::log(QStringLiteral("Could not locate settings file, creating a new one."),
                 Log::Warning);
        showMessageBox(nullptr,
                       {QMessageBox::Warning, QStringLiteral("Ferrox"),
                        tr("Could not locate settings file, creating a new one.\nThe preferences "
                           "dialog will now be shown, please make sure the Gavrel path is "
                           "correct."),
                        QMessageBox::Ok},
                       QStringLiteral(":/icons/ferrox_ico_32.png"));
        writeDefaults();
    }
    load();
}

void Settings::applyFirstRunValues()
{
    gavrelPath = QStringLiteral("c:\\Games\\Gavrel");
    modPath.clear();
    imageEditor.clear();
    screenshotPath = QDir::toNativeSeparators(userDirectory() + QStringLiteral("/screenshots"));
    rendererName = QStringLiteral("OpenGL 3.2");
    shaderDir = QStringLiteral("../data/shaders/glsl150");
    textureFilter = QStringLiteral("Anisotropic 4x");
    msaa = QStringLiteral("4x");
    shadowMap = 2048;
    shadowMapSamples = 8;
    vsync = 1;
    mouseInvertX = false;
    mouseInvertY = false;
    viewportColor = QColor(Qt::darkGray);
    ambientLight = 127;
    showHangar = true;
    showGrid = false;
    showTankInfo = true;
    showShadows = false;
    sceneSet = QStringLiteral("premium");
    lighting = QStringLiteral("bumpmap");
    screenshotAlpha = false;
    screenshotTimeStamp = true;
    showRenderInfo = false;
    overwriteTextures = false;
    verticalTabs = false;
    nativeFileDialog = true;
    disableTranslate = false;
}

void Settings::writeDefaults()
{
    applyFirstRunValues();
    firstRun = true;
    if (!QDir(screenshotPath).exists())
        QDir().mkpath(userDirectory() + QStringLiteral("/screenshots"));
    save();
}

void Settings::load()
{
    QFile file(settingsFilePath);
    if (!file.open(QIODevice::ReadOnly)) {
        Log::log(QStringLiteral("Could not open settings file."), Log::Error);
        reportStartupError(tr("Could not open settings file."));
        return;
    }

    QDomDocument document;
    if (!document.setContent(&file)) {
        Log::log(QStringLiteral("Could not set XML content."), Log::Error);
        reportStartupError(tr("Could not set XML content."));
        file.close();
        return;
    }

    const QDomElement root = document.documentElement();
    for (const Key& key : keys) {
        const QString text = groupElement(document, root, QLatin1String(key.group), false)
                                 .firstChildElement(QLatin1String(key.name))
                                 .text();
        std::visit(TextToValue{*this, text}, key.member);
    }

    if (validateGavrelPath(gavrelPath))
        emit gavrelPathChanged();
}

bool Settings::writeFile()
{
    QFile file(settingsFilePath);
    if (settingsFilePath.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;

    QDomDocument document(QStringLiteral("settings.cfg"));
    document.appendChild(document.createProcessingInstruction(
        QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    QDomElement root = document.createElement(QStringLiteral("Settings"));
    document.appendChild(root);

    QDomElement version = document.createElement(QStringLiteral("Version"));
    version.appendChild(document.createTextNode(QString::number(1.0, 'g', 6)));
    root.appendChild(version);

    for (const Key& key : keys) {
        QDomElement element = document.createElement(QLatin1String(key.name));
        element.appendChild(document.createTextNode(std::visit(ValueToText{*this}, key.member)));
        groupElement(document, root, QLatin1String(key.group), true).appendChild(element);
    }

    QTextStream stream(&file);
    stream << document.toString(1);
    stream.flush();
    file.close();
    return file.error() == QFile::NoError;
}

void Settings::save()
{
    Log::log(QStringLiteral("Saving settings."), Log::Info);
    if (!writeFile()) {
        const QString message = tr("Could not open settings file.");
        Log::log(message, Log::Error);
        fatalError(message);
    }

    validateGavrelPath(gavrelPath);
    if (gavrelPathDirty)
        emit gavrelPathChanged();
    gavrelPathDirty = false;
}

bool Settings::validateGavrelPath(const QString& path)
{
    gavrelPathValid = QFile::exists(QDir::toNativeSeparators(path + QStringLiteral("/Gavrel.exe")));
    return gavrelPathValid;
}

void Settings::setGavrelPath(QString path)
{
    firstRun = false;
    gavrelPath = path;
    if (validateGavrelPath(path))
        gavrelPathDirty = true;
}

void Settings::setModPath(QString path)
{
    modPath = path;
    emit modPathChanged();
}

void Settings::setScreenshotPath(QString path)
{
    screenshotPath = path;
}

void Settings::setImageEditorPath(QString path)
{
    imageEditor = path;
}

void Settings::setShadowMapSize(int size)
{
    shadowMap = size;
    emit shadowMapSizeChanged();
}

void Settings::setShadowMapSamples(float size)
{
    shadowMapSamples = size;
}

void Settings::setShadowEnabled(bool val)
{
    showShadows = val;
}

void Settings::setTextureFilter(QString filter)
{
    textureFilter = filter;
    emit textureFilterChanged();
}

void Settings::setMsaa(QString value)
{
    msaa = value;
    emit msaaChanged();
}

void Settings::setShowTankInfo(bool val)
{
    showTankInfo = val;
}

void Settings::setShowHangar(bool val)
{
    showHangar = val;
}

void Settings::setShowGrid(bool val)
{
    showGrid = val;
}

void Settings::setAmbientLight(int val)
{
    ambientLight = val;
}

void Settings::setSceneSet(QString str)
{
    sceneSet = str;
}

void Settings::setLighting(QString str)
{
    lighting = str;
}

void Settings::setViewportColor(QColor color)
{
    viewportColor = color;
}

void Settings::setScreenshotTimeStamp(bool val)
{
    screenshotTimeStamp = val;
}

void Settings::setScreenshotAlpha(bool val)
{
    screenshotAlpha = val;
}

void Settings::setVsync(int val)
{
    vsync = val;
}

void Settings::setMouseInvert(bool mouseX, bool mouseY)
{
    mouseInvertX = mouseX;
    mouseInvertY = mouseY;
    emit mouseInvertChanged();
}

void Settings::setShowRenderInfo(bool val)
{
    showRenderInfo = val;
}

void Settings::setOverwriteTexture(bool val)
{
    overwriteTextures = val;
}

void Settings::setVerticalTabs(bool val)
{
    verticalTabs = val;
}

void Settings::setNativeFileDialog(bool val)
{
    nativeFileDialog = val;
}

void Settings::setTranslateDisable(bool val)
{
    disableTranslate = val;
}

QString currentGamePath()
{
    const Settings* settings = Settings::instance();
    return settings ? settings->gavrelPath : QString();
}

QString currentModPath()
{
    const Settings* settings = Settings::instance();
    return settings ? settings->modPath : QString();
}
