#include "UpdateCheck.h"

#include "ui_UpdateCheck.h"

#include "CommonMessages.h"
#include "Constants.h"
#include "MessageBoxes.h"

#include <QDomDocument>
#include <QDomElement>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

UpdateCheck::UpdateCheck(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::UpdateCheck>()),
      network(new QNetworkAccessManager(this))
{
    ui->setupUi(this);
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);
    connect(network, SIGNAL(finished(QNetworkReply*)), this, SLOT(onNetworkReply(QNetworkReply*)));
}

UpdateCheck::~UpdateCheck() = default;

void UpdateCheck::requestUpdateDocument()
{
    requestUpdateDocument(QUrl(QLatin1String(DocumentAddress)));
}

void UpdateCheck::requestUpdateDocument(const QUrl& address)
{
    network->get(QNetworkRequest(address));
}

void UpdateCheck::onNetworkReply(QNetworkReply* reply)
{
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    // Qt counts an HTTP error status as a reply error as well; but then the
    // server did answer, and only an answer that never came is a network
    // error. Other statuses than 200 are dropped without a word.
    if (reply->error() != QNetworkReply::NoError && !status.isValid()) {
        warningBox(this, updateTitle(), tr("There was a network error when checking for updates."),
                   QMessageBox::Ok, QMessageBox::NoButton);
    } else if (status.toInt() == 200 && reply->isReadable()) {
        processDocument(QString::fromUtf8(reply->readAll()));
    }
    reply->deleteLater();
}

void UpdateCheck::processDocument(const QString& text)
{
    // A body that is not XML leaves an empty document, whose Latest reads 0.
    QDomDocument document(QStringLiteral("Update"));
    document.setContent(text);
    const QDomElement root = document.documentElement();
    const int latest = root.firstChildElement(QStringLiteral("Latest")).text().toInt();

    if (latest == BuildNumber) {
        informationBox(this, updateTitle(), tr("You are running the latest version."),
                       QMessageBox::Ok);
    } else if (latest < BuildNumber) {
        warningBox(this, updateTitle(), tr("The was a problem determining the correct version."),
                   QMessageBox::Ok, QMessageBox::NoButton);
    } else {
        showNewVersion(root.firstChildElement(QStringLiteral("LatestStr")).text(),
                       root.firstChildElement(QStringLiteral("UrlZip")).text(),
                       root.firstChildElement(QStringLiteral("Notes")).text());
    }
}

void UpdateCheck::showNewVersion(const QString& latestVersion, const QString& downloadAddress,
                                 const QString& notes)
{
    ui->installedText->setText(QLatin1String(Ferrox::ApplicationVersion));
    ui->LatestVersionLabel->setText(latestVersion);
    ui->notesText->setPlainText(notes);
    // The address comes from the network: escaped, it cannot add markup.
    ui->UrlText->setTextFormat(Qt::RichText);
    ui->UrlText->setText(QStringLiteral("<a href=\"") + downloadAddress.toHtmlEscaped() +
                         QStringLiteral("\">") + tr("Click here for download") +
                         QStringLiteral("</a>"));
    ui->UrlText->setTextInteractionFlags(Qt::TextBrowserInteraction);
    ui->UrlText->setOpenExternalLinks(true);
    exec();
}

QString UpdateCheck::updateTitle() const
{
    return commonMessages ? commonMessages->update : tr("Update");
}
