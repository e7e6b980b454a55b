#pragma once

#include "KeyedDockWidget.h"

// The dock "Camera"; its controls stand in the main window's form. Shift+X
// shows or hides it.
class CameraWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit CameraWidget(QWidget* parent = nullptr);
};
