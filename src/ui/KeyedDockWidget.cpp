#include "KeyedDockWidget.h"

#include "Constants.h"
#include "MainWindow.h"

#include <QAction>
#include <QKeyEvent>

KeyedDockWidget::KeyedDockWidget(int key, bool anyModifiers, QWidget* parent)
    : QDockWidget(parent), toggleKey(key), toggleWithAnyModifiers(anyModifiers)
{
    connect(this, SIGNAL(visibilityChanged(bool)), this, SLOT(vischanged(bool)));
}

void KeyedDockWidget::vischanged(bool val)
{
    setProperty(Ferrox::VisibilityProperty, val);
}

void KeyedDockWidget::keyPressEvent(QKeyEvent* event)
{
    const bool modifiersMatch = toggleWithAnyModifiers || event->modifiers() == Qt::ShiftModifier;
    if (event->key() == toggleKey && modifiersMatch)
        toggleViewAction()->trigger();
    if (!mainWindow)
        return;
    mainWindow->keyPressEvent(event);
    // Handed on once: the window is also the dock's parent, to which an
    // ignored key would travel again.
    event->accept();
}
