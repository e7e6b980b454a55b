#include "CameraWidget.h"

CameraWidget::CameraWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_X, false, parent) {}
