#pragma once

#include "KeyedDockWidget.h"

// The dock "Armor Inspector"; its controls stand in the main window's form. Shift+C
// shows or hides it.
class ArmorWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit ArmorWidget(QWidget* parent = nullptr);
};
