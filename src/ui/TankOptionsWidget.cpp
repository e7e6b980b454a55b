#include "TankOptionsWidget.h"

TankOptionsWidget::TankOptionsWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_W, false, parent) {}
