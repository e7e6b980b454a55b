#pragma once

// Answers a modal dialog of the given object name as soon as it shows:
// from inside its own event loop it first runs the test's edits, then
// accepts or rejects it. No one has to click. Made before the program's
// application exists, it starts listening when that application is made.

#include <QApplication>
#include <QDialog>
#include <QEvent>

#include <functional>

class DialogAnswer : public QObject
{
public:
    using Edit = std::function<void(QDialog&)>;

    DialogAnswer(const QString& objectName, bool accept, Edit edit = {})
        : name(objectName), accepting(accept), editing(std::move(edit))
    {
        if (qApp) {
            qApp->installEventFilter(this);
            return;
        }
        waiting() = this;
        static const bool registered = [] {
            qAddPreRoutine([] {
                if (waiting())
                    qApp->installEventFilter(waiting());
                waiting() = nullptr;
            });
            return true;
        }();
        Q_UNUSED(registered);
    }
    ~DialogAnswer() override
    {
        if (waiting() == this)
            waiting() = nullptr;
        if (qApp)
            qApp->removeEventFilter(this);
    }

    void answer(bool accept, Edit edit = {})
    {
        accepting = accept;
        editing = std::move(edit);
    }

    int shown = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* dialog = qobject_cast<QDialog*>(watched);
        if (event->type() != QEvent::Show || !dialog || dialog->objectName() != name)
            return false;
        ++shown;
        // Queued: done() before exec() has entered its loop would be lost.
        QMetaObject::invokeMethod(
            dialog,
            [dialog, accept = accepting, edit = editing] {
                if (edit)
                    edit(*dialog);
                if (accept)
                    dialog->accept();
                else
                    dialog->reject();
            },
            Qt::QueuedConnection);
        return false;
    }

private:
    static DialogAnswer*& waiting()
    {
        static DialogAnswer* answer = nullptr;
        return answer;
    }

    QString name;
    bool accepting;
    Edit editing;
};
