#pragma once

#include "KeyedDockWidget.h"

// The dock "Tank Options"; its controls stand in the main window's form. Shift+W
// shows or hides it.
class TankOptionsWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit TankOptionsWidget(QWidget* parent = nullptr);
};
