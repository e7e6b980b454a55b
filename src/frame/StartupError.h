#pragma once

#include <QString>

// Failures before the event loop gather into one text, which start-up shows
// in a single "Fatal Error" box before ending the run.
void reportStartupError(const QString& text);
QString takeStartupError();
bool startupErrorPending();

// Called once the event loop is about to run: later reports are dropped.
void markStartupFinished();
bool startupFinished();

// Back to the state of a fresh process, for runs of the start-up inside tests.
void resetStartupState();
