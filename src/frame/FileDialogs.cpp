#include "FileDialogs.h"

#include "Settings.h"

#include <QDir>
#include <QFileDialog>

namespace {
FileDialogHandler& handler()
{
    static FileDialogHandler value;
    return value;
}

bool useNativeDialog()
{
    const Settings* settings = Settings::instance();
    return !settings || settings->nativeFileDialog;
}

QString firstSelected(QFileDialog& dialog, QString* selectedFilter)
{
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    if (selectedFilter)
        *selectedFilter = dialog.selectedNameFilter();
    return dialog.selectedFiles().first();
}

QString showNativeDialog(QWidget* parent, const FileDialogRequest& request)
{
    switch (request.kind) {
    case FileDialogRequest::Directory:
        return QFileDialog::getExistingDirectory(parent, request.caption, request.startDirectory,
                                                 QFileDialog::ShowDirsOnly);
    case FileDialogRequest::OpenFile:
        return QFileDialog::getOpenFileName(parent, request.caption, request.startDirectory,
                                            request.filter);
    case FileDialogRequest::SaveFile:
        return QFileDialog::getSaveFileName(parent, request.caption, request.startDirectory,
                                            request.filter, request.selectedFilter);
    }
    return QString();
}

QString showOwnDialog(QWidget* parent, const FileDialogRequest& request)
{
    QFileDialog dialog(parent, request.caption, request.startDirectory);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setHistory(request.history);
    switch (request.kind) {
    case FileDialogRequest::Directory:
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        break;
    case FileDialogRequest::OpenFile:
        dialog.setNameFilter(request.filter);
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
        break;
    case FileDialogRequest::SaveFile:
        dialog.setNameFilter(request.filter);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        break;
    }
    return firstSelected(dialog, request.selectedFilter);
}

QString choose(QWidget* parent, const FileDialogRequest& request)
{
    QString path;
    if (handler())
        path = handler()(request);
    else if (useNativeDialog())
        path = showNativeDialog(parent, request);
    else
        path = showOwnDialog(parent, request);
    return QDir::toNativeSeparators(path);
}
} // namespace

void setFileDialogHandler(FileDialogHandler newHandler)
{
    handler() = std::move(newHandler);
}

QString chooseDirectory(QWidget* parent, const QString& caption, const QString& startDirectory,
                        const QStringList& history)
{
    return choose(parent, {FileDialogRequest::Directory, caption, startDirectory, {}, history});
}

QString chooseOpenFile(QWidget* parent, const QString& caption, const QString& startDirectory,
                       const QString& filter, const QStringList& history)
{
    return choose(parent, {FileDialogRequest::OpenFile, caption, startDirectory, filter, history});
}

QString chooseSaveFile(QWidget* parent, const QString& caption, const QString& startDirectory,
                       const QString& filter, const QStringList& history, QString* selectedFilter)
{
    return choose(parent, {FileDialogRequest::SaveFile, caption, startDirectory, filter, history,
                           selectedFilter});
}
