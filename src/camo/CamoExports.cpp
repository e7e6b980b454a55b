#include "CamoExports.h"

#include "CamoBakeJob.h"
#include "CamoLoader.h"
#include "CommonMessages.h"
#include "Constants.h"
#include "Database.h"
#include "FileManager.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "Settings.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TurretGunChooser.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <memory>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("CamoLoader", text);
}

QString title()
{
    return QLatin1String(Ferrox::ApplicationName);
}

void warn(const QString& text)
{
    warningBox(nullptr, title(), text, QMessageBox::Ok, QMessageBox::Ok);
}

Vector4 componentProduct(const Vector4& a, const Vector4& b)
{
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2], a[3] * b[3]};
}

bool confirmOverwrite(const QString& path)
{
    const QString text = QStringLiteral("WARNING! ") + path +
                         QStringLiteral(" already exists.\nAre you sure you want to overwrite "
                                        "this file?");
    return warningBox(nullptr, title(), text, QMessageBox::Ok | QMessageBox::Cancel,
                      QMessageBox::Cancel) == QMessageBox::Ok;
}

} // namespace

QString camoExportProblem()
{
    const TankLoader* loader = TankLoader::instance();
    if (!loader || !loader->loaded)
        return tr("You must load a tank first.");
    const CamoLoader* camo = CamoLoader::instance();
    if (!camo || !camo->enabled)
        return tr("You must enable camouflage first.");
    if (currentModPath().isEmpty()) {
        return commonMessages ? commonMessages->selectModFolder
                              : tr("You must select a mod folder in the application preferences.");
    }
    return QString();
}

CamoBakeReport bakeCamouflage()
{
    CamoBakeReport report;
    const TankLoader* loader = TankLoader::instance();
    const CamoLoader* camo = CamoLoader::instance();
    if (!loader || !camo)
        return report;
    if (loader->damageMode != Intact) {
        warn(tr("Camo bake is only available in UnDamaged mode."));
        return report;
    }
    const Database* database = Database::instance();
    const QString directory =
        QDir::toNativeSeparators(currentModPath() + QLatin1Char('/') +
                                 (database ? database->tankDirectory(loader->name) : ""));
    if (!isInsideFolder(directory, currentGamePath()) && !QDir(directory).exists())
        QDir().mkpath(directory);

    const QStringList diffuse = loader->info->paintableTextures();
    const QStringList masks = loader->info->exclusionTextures;
    if (diffuse.size() != masks.size()) {
        const QString text = tr("This tank is currently not supported by the camouflage baking "
                                "system.");
        Log::log(text, Log::Warning);
        warn(text + QStringLiteral("\n") + tr("Aborting!"));
        return report;
    }
    report.started = true;
    const Turret* turret = loader->chooser->currentTurret();
    const Vector4 turretTiling = turret ? turret->tiling : Vector4{1, 1, 1, 1};
    for (int i = 0; i < diffuse.size(); ++i) {
        const Vector4 tiling = i == 0 ? camo->tiling : componentProduct(turretTiling, camo->tiling);
        CamoBakeJob job(diffuse[i], masks[i], tiling);
        const QString path = job.outputPath();
        switch (job.run()) {
        case CamoBakeJob::Written:
            report.written.append(path);
            break;
        case CamoBakeJob::Refused:
            report.refused.append(path);
            break;
        case CamoBakeJob::Failed:
            report.failed.append(path);
            break;
        }
    }
    informationBox(nullptr, title(), tr("Camouflage bake export complete."), QMessageBox::Ok);
    return report;
}

CamoBakeReport exportCamoBake()
{
    const QString problem = camoExportProblem();
    if (!problem.isEmpty()) {
        informationBox(nullptr, title(), problem, QMessageBox::Ok);
        return CamoBakeReport();
    }
    return bakeCamouflage();
}

QString exportCamoPattern()
{
    const QString problem = camoExportProblem();
    if (!problem.isEmpty()) {
        informationBox(nullptr, title(), problem, QMessageBox::Ok);
        return QString();
    }
    const QString path = CamoLoader::instance()->texture;
    FileManager* files = FileManager::instance();
    const std::unique_ptr<QIODevice> device(files ? files->openArchiveFile(path) : nullptr);
    if (!device) {
        const QString text =
            tr("Failed to find: ") + path + QStringLiteral(" ") + tr("in any zip archives.");
        Log::log(text, Log::Warning);
        warn(text);
        return QString();
    }
    const QString output = QDir::toNativeSeparators(currentModPath() + QLatin1Char('/') + path);
    if (isInsideFolder(output, currentGamePath())) {
        Log::log(QStringLiteral("Refusing to write into the game folder: ") + output, Log::Warning);
        return QString();
    }
    const QString directory = QFileInfo(output).path();
    if (!QFile::exists(output) && !QDir().mkpath(directory)) {
        Log::log(QStringLiteral("Failed to create directory: ") + directory, Log::Info);
        return QString();
    }
    if (QFile::exists(output) && !confirmOverwrite(output))
        return QString();
    if (!device->isOpen() && !device->open(QIODevice::ReadOnly))
        return QString();
    QSaveFile file(output);
    if (!file.open(QIODevice::WriteOnly)) {
        Log::log(QStringLiteral("Failed to open file for writing: ") + output, Log::Warning);
        return QString();
    }
    Log::log(QStringLiteral("Extracting texture: ") + path + QStringLiteral(" to: ") +
                 currentModPath(),
             Log::Info);
    const QByteArray bytes = device->readAll();
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        Log::log(QStringLiteral("Failed to open file for writing: ") + output, Log::Warning);
        return QString();
    }
    informationBox(nullptr, title(), tr("Export completed."), QMessageBox::Ok);
    return output;
}
