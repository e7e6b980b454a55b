#pragma once

#include "ui_ScreenShotUI.h"

#include <QDialog>

class RenderWidget;

// Renders a new frame of the viewport at a chosen size, up to what the GPU
// allows, and saves it as PNG or TIFF. The viewport stays paused for as long
// as the dialog lives; whoever runs it clears the flag afterwards.
class ScreenShotUI : public QDialog
{
    Q_OBJECT
public:
    ScreenShotUI(QWidget* parent, RenderWidget* renderWidget);

    Ui::ScreenShotUI ui;

public slots:
    void loadPresetChanged(int index);
    void accept() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showPreview();

    RenderWidget* renderWidget;
    // The viewport's frame as the dialog opened, scaled to the preview's
    // size whenever the layout gives it one.
    QImage frame;
};
