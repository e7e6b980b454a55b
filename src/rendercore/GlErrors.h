#pragma once

#include <QString>

// The name of a glGetError code; "UNKOWN GL ERROR." for codes outside the
// core set (the misspelling is part of the log text users search for).
QString glErrorName(int code);

// Drains the GL error queue of the current context, logging each error at
// error level under the caller's name. Needs a current context.
void checkGlErrors(const QString& caller);
