#pragma once

#include "ui_EditTextureUI.h"

#include <QDialog>
#include <QStandardItemModel>

class TankLoader;

// Lists the textures of the vehicle's shown state by kind, so that the user
// picks the one to hand to the image editor.
class EditTextureUI : public QDialog
{
    Q_OBJECT
public:
    explicit EditTextureUI(QWidget* parent = nullptr, Qt::WindowFlags flags = {});

    // The textures of the loader's state (intact, destroyed; none for
    // collision), grouped by kind.
    void fill(const TankLoader& loader);
    // The path of the chosen row; empty for none.
    QString chosenPath() const;
    // The group rows' texts, in their order.
    static QStringList groupNames();

    Ui::EditTextureUi ui;

public slots:
    // Stays open unless a texture row is current.
    void accept() override;

private:
    void addGroup(const QString& name, const QStringList& paths, bool always);

    QStandardItemModel model;
};
