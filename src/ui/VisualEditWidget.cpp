#include "VisualEditWidget.h"

#include "ui_VisualEditWidget.h"

#include "CommonMessages.h"
#include "Constants.h"
#include "FindReplaceForm.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "Settings.h"
#include "TankLoader.h"
#include "TankMesh.h"
#include "Visual.h"
#include "XmlHighlighter.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

namespace {
QString programName()
{
    return QLatin1String(Ferrox::ApplicationName);
}
} // namespace

VisualEditWidget::VisualEditWidget(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::VisualEditWidget>()),
      findReplace(new FindReplaceForm(this))
{
    ui->setupUi(this);
    setWindowFlags(Qt::Window);
    setModal(false);
    createHighlighters();
}

VisualEditWidget::~VisualEditWidget() = default;

void VisualEditWidget::createHighlighters()
{
    for (int part = 0; part < TankLoader::PartCount; ++part) {
        if (!highlighters[part])
            highlighters[part] = new XmlHighlighter(textEdit(part)->document());
    }
}

void VisualEditWidget::connectVisualText(TankWindowSink& sink)
{
    sink.visualText = [this](int part, const QString& text) { setVisualText(part, text); };
}

void VisualEditWidget::setVisualText(int part, const QString& text)
{
    if (QTextEdit* edit = textEdit(part))
        edit->setPlainText(text);
}

QTextEdit* VisualEditWidget::textEdit(int part) const
{
    switch (part) {
    case TankLoader::ChassisPart:
        return ui->chassisTextEdit;
    case TankLoader::HullPart:
        return ui->hullTextEdit;
    case TankLoader::TurretPart:
        return ui->turretTextEdit;
    case TankLoader::GunPart:
        return ui->gunTextEdit;
    default:
        return nullptr;
    }
}

void VisualEditWidget::findChassis()
{
    showFindReplace(ui->chassisTextEdit);
}

void VisualEditWidget::findHull()
{
    showFindReplace(ui->hullTextEdit);
}

void VisualEditWidget::findGun()
{
    showFindReplace(ui->gunTextEdit);
}

void VisualEditWidget::findTurret()
{
    showFindReplace(ui->turretTextEdit);
}

void VisualEditWidget::showFindReplace(QTextEdit* edit)
{
    findReplace->setTextEdit(edit);
    findReplace->show();
}

void VisualEditWidget::saveVisual()
{
    const TankLoader* loader = TankLoader::instance();
    if (!loader || !loader->loaded)
        return;
    const Settings* settings = Settings::instance();
    const QString modPath = settings ? settings->modPath : QString();
    if (modPath.isEmpty()) {
        warningBox(this, programName(),
                   commonMessages ? commonMessages->selectModFolder
                                  : tr("You must select a mod folder in the application "
                                       "preferences."),
                   QMessageBox::Ok, QMessageBox::NoButton);
        return;
    }
    const QString path = shownVisualPath();
    if (path.isEmpty())
        return;
    const QString text = textEdit(ui->visualTab->currentIndex())->toPlainText();

    const QString target = QDir::toNativeSeparators(modPath + QLatin1Char('/') + path);
    const QString directory = QFileInfo(target).absolutePath();
    if (!QDir(directory).exists() && !QDir().mkpath(directory)) {
        const QString failed = commonMessages ? commonMessages->createDirectoryFailed
                                              : tr("Failed to create directory");
        warn(failed + QStringLiteral(": ") + directory,
             QStringLiteral("Failed to create directory: ") + directory);
        return;
    }
    if (!writeVisual(target, path, text))
        return;
    informationBox(this, programName(), tr("Visual file saved ok."), QMessageBox::Ok);
}

QString VisualEditWidget::shownVisualPath() const
{
    const TankLoader* loader = TankLoader::instance();
    const TankMesh* mesh =
        loader ? loader->mesh(ui->visualTab->currentIndex(), loader->damageMode) : nullptr;
    return mesh && mesh->visual ? mesh->visual->path : QString();
}

bool VisualEditWidget::writeVisual(const QString& target, const QString& path, const QString& text)
{
    // Written completely or not at all: an older file stays if anything fails.
    QSaveFile file(target);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        warn(tr("Failed to open file for writing: ") + target,
             QStringLiteral("Failed to open file for writing: ") + target);
        return false;
    }
    Log::log(QStringLiteral("Saving: ") + path, Log::Info);
    QTextStream stream(&file);
    stream << text;
    stream.flush();
    if (!file.commit()) {
        warn(tr("Failed to write file: ") + target,
             QStringLiteral("Failed to write file: ") + target);
        return false;
    }
    return true;
}

void VisualEditWidget::warn(const QString& boxText, const QString& logText)
{
    warningBox(this, programName(), boxText, QMessageBox::Ok, QMessageBox::NoButton);
    Log::log(logText, Log::Warning);
}
