#pragma once

#include "FileDialogs.h"
#include "MessageBoxes.h"

#include <QList>

// Answers every message box with a fixed button and keeps what was asked,
// for as long as it lives.
class MessageBoxRecorder
{
public:
    explicit MessageBoxRecorder(int answer = QMessageBox::Ok)
    {
        setMessageBoxHandler([this, answer](const MessageBoxRequest& request) {
            boxes.append(request);
            return answer;
        });
    }
    ~MessageBoxRecorder() { setMessageBoxHandler({}); }

    MessageBoxRecorder(const MessageBoxRecorder&) = delete;
    MessageBoxRecorder& operator=(const MessageBoxRecorder&) = delete;

    QList<MessageBoxRequest> boxes;
};
