#include "MainApplication.h"

#include "BufferManager.h"
#include "CommonMessages.h"
#include "Database.h"
#include "Environment.h"
#include "FileManager.h"
#include "Log.h"
#include "MoReaderCached.h"
#include "Physics.h"
#include "Settings.h"

MainApplication::MainApplication(int& argc, char** argv) : QApplication(argc, argv) {}

void MainApplication::initialise()
{
    new CommonMessages;
    new Log;
    new MoReaderCached;
    new FileManager;

    // The archives open while the settings are read, so the game path's
    // listener must be connected before the file is loaded.
    auto* settings = new Settings;
    connect(settings, &Settings::gavrelPathChanged, FileManager::instance(),
            &FileManager::loadZipFiles);
    settings->loadOrCreate();

    Log::log(QStringLiteral("Gavrel Version: ") + gameVersionString(), Log::Info);

    new BufferManager;

    // Connects itself to the game path; its first rebuild runs in the
    // viewport's GL start-up, after the loaders it needs are made.
    new Database;
    // The armour inspection's ray world, which needs no GL.
    new Physics;
    initialised = true;
}

MainApplication::~MainApplication()
{
    if (!initialised)
        return;
    delete Physics::instance();
    delete Database::instance();
    // Its GL objects are freed only if a context is still current; the
    // window and its context are gone by now in a normal shutdown.
    delete BufferManager::instance();
    delete Settings::instance();
    delete FileManager::instance();
    delete MoReaderCached::instance();
    delete Log::instance();
    delete commonMessages;
}
