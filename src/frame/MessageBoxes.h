#pragma once

#include <QMessageBox>
#include <QString>

#include <functional>

class QWidget;

// Everything the program asks through a message box passes here, so that a
// test or a command-line tool can answer it instead of a person.
struct MessageBoxRequest
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
};

using MessageBoxHandler = std::function<int(const MessageBoxRequest&)>;

// With a handler set, no box is shown: the handler's answer is returned as
// the button pressed. An empty handler brings the real boxes back.
void setMessageBoxHandler(MessageBoxHandler handler);

// Shows the box (or asks the handler) and returns the button pressed.
int showMessageBox(QWidget* parent, const MessageBoxRequest& request,
                   const QString& windowIcon = QString());

int criticalBox(const QString& title, const QString& text, QMessageBox::StandardButtons buttons);
int informationBox(QWidget* parent, const QString& title, const QString& text,
                   QMessageBox::StandardButtons buttons);
int warningBox(QWidget* parent, const QString& title, const QString& text,
               QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton);

// The closing box: shows text and a note that the program closes, then asks
// the application to quit and returns. Before the event loop runs, the quit
// request has no effect.
void fatalError(const QString& text);
