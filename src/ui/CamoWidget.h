#pragma once

#include "KeyedDockWidget.h"

// The dock "Camo"; its controls stand in the main window's form. Shift+E
// shows or hides it.
class CamoWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit CamoWidget(QWidget* parent = nullptr);
};
