#include "ArmorWidget.h"

ArmorWidget::ArmorWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_C, false, parent) {}
