#include "StartupError.h"

namespace {
struct StartupState
{
    QString text;
    bool pending = false;
    bool finished = false;
};

StartupState& state()
{
    static StartupState value;
    return value;
}
} // namespace

void reportStartupError(const QString& text)
{
    if (state().finished)
        return;
    state().text.append(text);
    state().pending = true;
}

QString takeStartupError()
{
    const QString text = state().text;
    state().text.clear();
    state().pending = false;
    return text;
}

bool startupErrorPending()
{
    return state().pending;
}

void markStartupFinished()
{
    state().finished = true;
    state().pending = false;
}

bool startupFinished()
{
    return state().finished;
}

void resetStartupState()
{
    state() = StartupState();
}
