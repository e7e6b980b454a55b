#pragma once

#include "UvMap.h"
#include "ui_UvGenerateUI.h"

#include <QDialog>
#include <QImage>
#include <QMap>
#include <QVector>

class QLabel;
class RenderWidget;
class TankLoader;

// Draws the UV layout of the vehicle in view, one tab per texture, and
// saves the templates as PNG, TIFF or SVG at one to four times the
// texture's size.
class UvGenerateUI : public QDialog
{
    Q_OBJECT
public:
    // The loader's turrets and guns are loaded for the occasion, with the
    // viewport's context current.
    UvGenerateUI(QWidget* parent, TankLoader* loader, RenderWidget* renderWidget);

    void setUvData(const QVector<UvGroup>& uvGroups, const QStringList& textures);

    Ui::UvGenerateForm ui;
    UvMapStyle style;
    UvMap map;
    bool generated = false;
    QVector<QImage> images;

public slots:
    void generate();
    void changeFillColour();
    void changeBrushColour();
    void changeBackgroundColour();
    void save();
    void saveActive(bool showComplete);
    void saveActive();
    void closeTab(int index);
    void changeLineWidth(double width);

private:
    void collect();
    QSize textureSize(const QString& texture);
    bool savePaths(const QStringList& textures);
    bool savePath(const QString& texture);
    void chooseColour(QColor& colour, QLabel* swatch);
    void warn(const QString& text);

    TankLoader* loader;
    RenderWidget* renderWidget;
    // Read once per generate: the size lookup reads the texture's header.
    QMap<QString, QSize> sizes;
};
