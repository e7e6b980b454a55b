#pragma once

#include "KeyedDockWidget.h"

// The dock "Log"; its controls stand in the main window's form. F11 with any modifiers
// shows or hides it.
class LogViewWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit LogViewWidget(QWidget* parent = nullptr);
};
