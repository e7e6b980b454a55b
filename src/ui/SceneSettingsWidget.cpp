#include "SceneSettingsWidget.h"

SceneSettingsWidget::SceneSettingsWidget(QWidget* parent)
    : KeyedDockWidget(Qt::Key_Z, false, parent)
{
}
