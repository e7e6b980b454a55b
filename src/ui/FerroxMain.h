#pragma once

#include <QString>

#include <functional>

class MainWindow;

// What a caller may change about a run of the program. The program itself
// uses the defaults; tests point it at a temporary tree and close it again.
struct StartOptions
{
    // The folder taken as the executable's; empty means the real one.
    QString applicationDirectory;
    // The locale whose translation is loaded; empty means the system's.
    QString localeName;
    // Called when start-up has succeeded, just before the event loop runs.
    std::function<void(MainWindow&)> onStarted;
};

// The whole life of the program: start-up, event loop, shutdown. Returns the
// exit code.
int runFerrox(int& argc, char** argv, const StartOptions& options = StartOptions());
