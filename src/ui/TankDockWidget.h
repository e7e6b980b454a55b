#pragma once

#include "KeyedDockWidget.h"

// The dock "Tanks"; its controls stand in the main window's form. Shift+Q
// shows or hides it.
class TankDockWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit TankDockWidget(QWidget* parent = nullptr);
};
