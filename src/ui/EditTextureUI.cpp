#include "EditTextureUI.h"

#include "Constants.h"
#include "MessageBoxes.h"
#include "TankInfo.h"
#include "TankLoader.h"

EditTextureUI::EditTextureUI(QWidget* parent, Qt::WindowFlags flags) : QDialog(parent, flags)
{
    ui.setupUi(this);
    ui.treeView->setModel(&model);
}

QStringList EditTextureUI::groupNames()
{
    return {tr("Diffuse"),  tr("Specular"), tr("Normal"),
            tr("Metallic"), tr("Detail"),   tr("Exclusion")};
}

void EditTextureUI::fill(const TankLoader& loader)
{
    model.clear();
    const QStringList groups = groupNames();
    const TankInfo* info = loader.info;
    if (info) {
        const QStringList none;
        const int state = loader.damageMode;
        const bool intact = state == Intact;
        const bool destroyed = state == Destroyed;
        auto pick = [&](const QStringList& intactList, const QStringList& destroyedList) {
            return intact ? intactList : destroyed ? destroyedList : none;
        };
        addGroup(groups[0], pick(info->diffuseTextures, info->destroyedDiffuseTextures), true);
        addGroup(groups[1], pick(info->specularTextures, info->destroyedSpecularTextures), false);
        addGroup(groups[2], pick(info->normalTextures, info->destroyedNormalTextures), true);
        addGroup(groups[3], pick(info->metallicGlossTextures, info->destroyedMetallicGlossTextures),
                 false);
        addGroup(groups[4], pick(info->metallicDetailTextures, none), false);
        addGroup(groups[5], pick(info->exclusionTextures, none), false);
    }
    model.setHorizontalHeaderLabels({tr("Select a texture")});
    if (!model.findItems(groups[0]).isEmpty())
        ui.treeView->expand(model.findItems(groups[0]).first()->index());
}

void EditTextureUI::addGroup(const QString& name, const QStringList& paths, bool always)
{
    if (paths.isEmpty() && !always)
        return;
    auto* group = new QStandardItem(name);
    group->setEditable(false);
    for (const QString& path : paths) {
        auto* row = new QStandardItem(path);
        row->setEditable(false);
        group->appendRow(row);
    }
    model.appendRow(group);
}

QString EditTextureUI::chosenPath() const
{
    return ui.treeView->currentIndex().data(Qt::DisplayRole).toString();
}

void EditTextureUI::accept()
{
    const QModelIndex current = ui.treeView->currentIndex();
    // Group rows are the top level; only their children are textures.
    if (!current.isValid() || !current.parent().isValid()) {
        warningBox(this, QLatin1String(Ferrox::ApplicationName), tr("You must select a texture."),
                   QMessageBox::Ok, QMessageBox::NoButton);
        return;
    }
    QDialog::accept();
}
