#include "MainApplication.h"

#include "CommonMessages.h"
#include "Environment.h"
#include "FileManager.h"
#include "Log.h"
#include "Settings.h"

MainApplication::MainApplication(int& argc, char** argv) : QApplication(argc, argv) {}

void MainApplication::initialise()
{
    new CommonMessages;
    new Log;
    new FileManager;

    // The archives open while the settings are read, so the game path's
    // listener must be connected before the file is loaded.
    auto* settings = new Settings;
    connect(settings, &Settings::gavrelPathChanged, FileManager::instance(),
            &FileManager::loadZipFiles);
    settings->loadOrCreate();

    Log::log(QStringLiteral("Gavrel Version: ") + gameVersionString(), Log::Info);
    initialised = true;
}

MainApplication::~MainApplication()
{
    if (!initialised)
        return;
    delete Settings::instance();
    delete FileManager::instance();
    delete Log::instance();
    delete commonMessages;
}
