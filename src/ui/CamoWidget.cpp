#include "CamoWidget.h"

CamoWidget::CamoWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_E, false, parent) {}
