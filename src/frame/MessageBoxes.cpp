#include "MessageBoxes.h"

#include "Constants.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QIcon>
#include <QOpenGLContext>
#include <QPointer>
#include <QThread>

namespace {
MessageBoxHandler& handler()
{
    static MessageBoxHandler value;
    return value;
}

QString tr(const char* text)
{
    return QCoreApplication::translate("MessageBoxes", text);
}

void translateButtonCaptions(QMessageBox& box)
{
    const struct
    {
        QMessageBox::StandardButton button;
        const char* caption;
    } captions[] = {{QMessageBox::Ok, QT_TRANSLATE_NOOP("MessageBoxes", "Ok")},
                    {QMessageBox::No, QT_TRANSLATE_NOOP("MessageBoxes", "No")},
                    {QMessageBox::Cancel, QT_TRANSLATE_NOOP("MessageBoxes", "Cancel")},
                    {QMessageBox::Abort, QT_TRANSLATE_NOOP("MessageBoxes", "Abort")},
                    {QMessageBox::Yes, QT_TRANSLATE_NOOP("MessageBoxes", "Yes")}};
    for (const auto& entry : captions) {
        if (QAbstractButton* button = box.button(entry.button))
            button->setText(tr(entry.caption));
    }
}
} // namespace

void setMessageBoxHandler(MessageBoxHandler newHandler)
{
    handler() = std::move(newHandler);
}

int showMessageBox(QWidget* parent, const MessageBoxRequest& request, const QString& windowIcon)
{
    if (handler())
        return handler()(request);

    QMessageBox box(request.icon, request.title, request.text, request.buttons, parent,
                    Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    if (!windowIcon.isEmpty())
        box.setWindowIcon(QIcon(windowIcon));
    if (request.defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(request.defaultButton);
    translateButtonCaptions(box);
    // The box's own event loop paints the viewport and composes the window,
    // each on a GL context of its own. A box asked for in the middle of GL
    // work (a vehicle that fails to load) hands back the context it found.
    const QPointer<QOpenGLContext> context = QOpenGLContext::currentContext();
    QSurface* surface = context ? context->surface() : nullptr;
    const int answer = box.exec();
    if (context && surface && QOpenGLContext::currentContext() != context)
        context->makeCurrent(surface);
    return answer;
}

int criticalBox(const QString& title, const QString& text, QMessageBox::StandardButtons buttons)
{
    return showMessageBox(nullptr, {QMessageBox::Critical, title, text, buttons});
}

int informationBox(QWidget* parent, const QString& title, const QString& text,
                   QMessageBox::StandardButtons buttons)
{
    return showMessageBox(parent, {QMessageBox::Information, title, text, buttons});
}

int warningBox(QWidget* parent, const QString& title, const QString& text,
               QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
    return showMessageBox(parent, {QMessageBox::Warning, title, text, buttons, defaultButton});
}

void fatalError(const QString& text)
{
    showMessageBox(nullptr,
                   {QMessageBox::Critical, QLatin1String(Ferrox::ApplicationName),
                    text + tr("\nApplication will now close."), QMessageBox::Ok},
                   QStringLiteral(":/icons/ferrox_ico_32.png"));
    // Before the event loop runs there is nothing to quit; Qt would keep the
    // request and end the loop as soon as it starts.
    if (QThread::currentThread()->loopLevel() > 0)
        QCoreApplication::quit();
}
