#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

// Every file dialog of the program passes here, so that a test can answer
// it instead of a person.
struct FileDialogRequest
{
    enum Kind
    {
        Directory,
        OpenFile,
        SaveFile
    };
    Kind kind = Directory;
    QString caption;
    QString startDirectory;
    QString filter;
    QStringList history;
    // For a save dialog that asks for it: the name filter the user chose.
    QString* selectedFilter = nullptr;
};

// With a handler set, no dialog is shown and its answer is the chosen path
// (empty for a cancelled dialog). An empty handler brings the dialogs back.
using FileDialogHandler = std::function<QString(const FileDialogRequest&)>;
void setFileDialogHandler(FileDialogHandler handler);

// Each returns a path with native separators, empty when the user cancels.
QString chooseDirectory(QWidget* parent, const QString& caption, const QString& startDirectory,
                        const QStringList& history);
QString chooseOpenFile(QWidget* parent, const QString& caption, const QString& startDirectory,
                       const QString& filter, const QStringList& history);
// selectedFilter, when given, receives the filter chosen in the dialog.
QString chooseSaveFile(QWidget* parent, const QString& caption, const QString& startDirectory,
                       const QString& filter, const QStringList& history,
                       QString* selectedFilter = nullptr);
