#pragma once

#include <QString>

#include <functional>

// The main window's status bar, reached without depending on the window:
// the window installs a sink while it exists; without one, messages go
// nowhere.
using StatusMessageSink = std::function<void(const QString& text, int timeoutMs)>;

void setStatusMessageSink(StatusMessageSink sink);
bool hasStatusMessageSink();
// A timeout of 0 keeps the message until the next one.
void showStatusMessage(const QString& text, int timeoutMs = 0);
