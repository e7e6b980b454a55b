#pragma once

#include <QDockWidget>

// A dock of the main window that answers its own key: the key, with
// exactly Shift (or with any modifiers, for a function key), shows or
// hides the dock; every key then goes on to the main window's handler,
// so the window's dock keys work with the focus inside a dock too. The
// dock keeps its visibility in the dynamic property the window reads when
// it toggles docks.
class KeyedDockWidget : public QDockWidget
{
    Q_OBJECT
public:
    KeyedDockWidget(int key, bool anyModifiers, QWidget* parent);

public slots:
    void vischanged(bool val);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    int toggleKey;
    bool toggleWithAnyModifiers;
};
