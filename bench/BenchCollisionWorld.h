#pragma once

// The heavy vehicle of the large installation ("Talon 0000", over 20,000
// triangles) in the ray world, for the armour benchmarks.

#include "BenchGame.h"

#include "BufferManager.h"
#include "CollisionArmor.h"
#include "CollisionMesh.h"
#include "Database.h"
#include "FileManager.h"
#include "MoReaderCached.h"
#include "Physics.h"
#include "Settings.h"
#include "TransformChain.h"

#include <QDir>

#include <memory>

inline const QString HeavyVehicle = QStringLiteral("Talon 0000");
inline const char* const Parts[] = {"Chassis", "Hull", "Turret_01", "Gun_01"};
// The game's files, the vehicle table and the heavy vehicle's four
// collision models in the ray world, with no GL: the plates need only the
// CPU copies of the geometry.
struct CollisionWorld
{
    CollisionWorld()
    {
        QDir::setCurrent(QStringLiteral(FERROX_SOURCE_DIR "/bench"));
        const QString game = benchGameDirectory();
        settings = std::make_unique<Settings>(QString());
        settings->gavrelPath = game;
        settings->validateGavrelPath(game);
        files = std::make_unique<FileManager>();
        files->resourcesConfigPath = game + QStringLiteral("/ferrox-resources.cfg");
        files->loadZipFiles();
        reader = std::make_unique<MoReaderCached>();
        database = std::make_unique<Database>();
        database->tankListPath = game + QStringLiteral("/ferrox-tank_list.cfg");
        database->rebuildDatabase();
        buffers = std::make_unique<BufferManager>();
        const QString folder = database->tankDirectory(HeavyVehicle);
        for (int part = 0; part < 4; ++part) {
            meshes[part] = std::make_unique<CollisionMesh>(&chain);
            const QString path = folder + QStringLiteral("/collision_client/") +
                                 QLatin1String(Parts[part]) + QStringLiteral(".model");
            ready = meshes[part]->load(path, {0, 0, 0}, part) && !folder.isEmpty();
            meshes[part]->assignArmor();
            for (const ArmorPart* plate : meshes[part]->parts)
                triangles += plate->triangles.size();
        }
    }

    std::unique_ptr<Settings> settings;
    std::unique_ptr<FileManager> files;
    std::unique_ptr<MoReaderCached> reader;
    std::unique_ptr<Database> database;
    std::unique_ptr<BufferManager> buffers;
    Physics physics;
    CollisionArmor armor;
    TransformChain chain;
    std::unique_ptr<CollisionMesh> meshes[4];
    bool ready = false;
    int triangles = 0;
};
