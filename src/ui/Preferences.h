#pragma once

#include <QDialog>
#include <QStringList>

#include <memory>

class QListWidgetItem;
class Settings;

namespace Ui {
class Preferences;
}

// The settings dialog. It only shows the settings in its controls; the main
// window reads the controls back once the user accepts. The texts of the
// anti-aliasing, filter and shadow combos are what the renderer reads from
// the settings, so the form leaves them untranslated.
class Preferences : public QDialog
{
    Q_OBJECT
public:
    // Where the mod folders chosen so far are kept between runs.
    static QString historyFilePath();

    explicit Preferences(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    // Writes the history, so that a folder chosen before Cancel is kept.
    ~Preferences() override;

    // Writes the controls into the settings, each change with its signal,
    // and saves them. An empty game path becomes the default one, with a
    // box. True when a change takes effect only after a restart.
    bool applyTo(Settings& settings);

    std::unique_ptr<Ui::Preferences> ui;
    QStringList modPathHistory;

public slots:
    void openGavrelPath();
    void openModPath();
    void openEditorPath();
    void openScreenshotPath();
    void changePage(QListWidgetItem* current, QListWidgetItem* previous);

private:
    void showSettings();
    void loadHistory();
    void saveHistory() const;
};
