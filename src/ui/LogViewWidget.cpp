#include "LogViewWidget.h"

LogViewWidget::LogViewWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_F11, true, parent) {}
