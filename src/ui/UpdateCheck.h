#pragma once

#include <QDialog>
#include <QUrl>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

namespace Ui {
class UpdateCheck;
}

// Compares this build with the version document on the maker's server and
// offers the download of a newer one. Nothing in the window sends the request
// today; the answer's handling is complete for the day something does.
class UpdateCheck : public QDialog
{
    Q_OBJECT
public:
    // The build this program is; it stands for the application version.
    static constexpr int BuildNumber = 1700;
    static constexpr char DocumentAddress[] =
        "http://ferrox.example.org/downloads/GavrelVersion.xml";

    explicit UpdateCheck(QWidget* parent = nullptr);
    ~UpdateCheck() override;

    // Asks the maker's server for the version document.
    void requestUpdateDocument();
    // Asks the given address instead; the answer is handled the same way.
    void requestUpdateDocument(const QUrl& address);

    std::unique_ptr<Ui::UpdateCheck> ui;

public slots:
    void onNetworkReply(QNetworkReply* reply);

private:
    void processDocument(const QString& text);
    void showNewVersion(const QString& latestVersion, const QString& downloadAddress,
                        const QString& notes);
    QString updateTitle() const;

    QNetworkAccessManager* network = nullptr;
};
