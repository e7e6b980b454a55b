#pragma once

#include "KeyedDockWidget.h"

// The dock "Scene Settings"; its controls stand in the main window's form. Shift+Z
// shows or hides it.
class SceneSettingsWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit SceneSettingsWidget(QWidget* parent = nullptr);
};
