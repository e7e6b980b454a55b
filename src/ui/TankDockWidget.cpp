#include "TankDockWidget.h"

TankDockWidget::TankDockWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_Q, false, parent) {}
