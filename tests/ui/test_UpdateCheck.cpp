// The version document's handling, fed by a real HTTP server on 127.0.0.1
// through the program's own network manager.

#include "CommonMessages.h"
#include "DialogAnswer.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "UpdateCheck.h"

#include <QLabel>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTextEdit>

#include <gtest/gtest.h>

#include <memory>

namespace {
// Answers each request on the server with one fixed response; status 0
// leaves the port closed (listened on and given back).
QUrl serve(QTcpServer& server, int status, const QByteArray& body)
{
    const QByteArray response = "HTTP/1.1 " + QByteArray::number(status) +
                                (status == 200 ? " OK" : " Not Found") +
                                "\r\nContent-Length: " + QByteArray::number(body.size()) +
                                "\r\nConnection: close\r\n\r\n" + body;
    QObject::connect(&server, &QTcpServer::newConnection, [&server, response] {
        QTcpSocket* socket = server.nextPendingConnection();
        auto request = std::make_shared<QByteArray>();
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, request, response] {
            *request += socket->readAll();
            if (request->contains("\r\n\r\n")) {
                socket->write(response);
                socket->disconnectFromHost();
            }
        });
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    });
    EXPECT_TRUE(server.listen(QHostAddress::LocalHost, 0));
    const quint16 port = server.serverPort();
    if (status == 0)
        server.close();
    return QUrl(QStringLiteral("http://127.0.0.1:%1/downloads/GavrelVersion.xml").arg(port));
}

QByteArray document(const QByteArray& latest, const QByteArray& notes = QByteArray())
{
    QByteArray text = "<?xml version=\"1.0\"?>\n<Update>\n <Latest>" + latest +
                      "</Latest>\n <LatestStr>1.0.18</LatestStr>\n"
                      " <UrlZip>http://downloads.example.org/Ferrox-1.0.18.zip</UrlZip>\n";
    if (!notes.isNull())
        text += " <Notes>" + notes + "</Notes>\n";
    return text + "</Update>\n";
}

// What a dialog shows in its labels and notes.
QStringList shownTexts(const QDialog& dialog)
{
    QStringList texts;
    for (const char* name : {"installedText", "LatestVersionLabel", "UrlText"})
        texts.append(dialog.findChild<QLabel*>(QLatin1String(name))->text());
    return texts << dialog.findChild<QTextEdit*>(QStringLiteral("notesText"))->toPlainText();
}

struct UpdateCase
{
    const char* name;
    int status; // 0: nothing listens
    QByteArray body;
    QMessageBox::Icon boxIcon; // NoIcon: no box
    const char* boxText;
    const char* notesShown; // null: no dialog
};

void PrintTo(const UpdateCase& test, std::ostream* out)
{
    *out << test.name;
}

const char LatestText[] = "You are running the latest version.";
const char VersionProblem[] = "The was a problem determining the correct version.";
const char NetworkError[] = "There was a network error when checking for updates.";

class UpdateCheckTest : public testing::TestWithParam<UpdateCase>
{
};
} // namespace

TEST_P(UpdateCheckTest, AnswersTheVersionDocument)
{
    const UpdateCase& test = GetParam();
    CommonMessages messages;
    MessageBoxRecorder boxes;
    UpdateCheck check;
    // Notes what the dialog shows, then closes it as if Cancel were pressed.
    QStringList shown;
    bool modal = false;
    DialogAnswer answer(QStringLiteral("Dialog"), false, [&](QDialog& dialog) {
        shown = shownTexts(dialog);
        modal = dialog.isModal();
    });
    QTcpServer server;
    const QUrl address = serve(server, test.status, test.body);

    auto* network = check.findChild<QNetworkAccessManager*>();
    ASSERT_NE(network, nullptr);
    QSignalSpy finished(network, &QNetworkAccessManager::finished);
    check.requestUpdateDocument(address);
    ASSERT_TRUE(finished.wait(30000));

    if (test.boxIcon == QMessageBox::NoIcon) {
        EXPECT_TRUE(boxes.boxes.isEmpty()) << boxes.boxes.value(0).text.toStdString();
    } else {
        ASSERT_EQ(boxes.boxes.size(), 1);
        EXPECT_EQ(boxes.boxes[0].icon, test.boxIcon);
        EXPECT_EQ(boxes.boxes[0].title, QStringLiteral("Update"));
        EXPECT_EQ(boxes.boxes[0].text, QLatin1String(test.boxText));
    }

    if (!test.notesShown) {
        EXPECT_EQ(answer.shown, 0);
        return;
    }
    ASSERT_EQ(answer.shown, 1);
    EXPECT_EQ(shown, (QStringList{QStringLiteral("1.0.17"), QStringLiteral("1.0.18"),
                                  QStringLiteral("<a href=\"http://downloads.example.org/"
                                                 "Ferrox-1.0.18.zip\">Click here for download</a>"),
                                  QLatin1String(test.notesShown)}));
    EXPECT_TRUE(modal);
    EXPECT_TRUE(check.findChild<QLabel*>(QStringLiteral("UrlText"))->openExternalLinks());
    EXPECT_EQ(check.result(), int(QDialog::Rejected));
}

INSTANTIATE_TEST_SUITE_P(
    Replies, UpdateCheckTest,
    testing::Values(
        UpdateCase{"NewerWithNotes", 200, document("1701", "Faster loading.\nNew garage."),
                   QMessageBox::NoIcon, nullptr, "Faster loading.\nNew garage."},
        UpdateCase{"NewerWithoutNotes", 200, document(" 1800 "), QMessageBox::NoIcon, nullptr, ""},
        UpdateCase{"SameVersion", 200, document("1700"), QMessageBox::Information, LatestText,
                   nullptr},
        UpdateCase{"OlderVersion", 200, document("1699"), QMessageBox::Warning, VersionProblem,
                   nullptr},
        UpdateCase{"UnparsableLatest", 200, document("1.0.18"), QMessageBox::Warning,
                   VersionProblem, nullptr},
        UpdateCase{"NotXml", 200, "Latest=1701\n", QMessageBox::Warning, VersionProblem, nullptr},
        UpdateCase{"NotFound", 404, document("1701"), QMessageBox::NoIcon, nullptr, nullptr},
        UpdateCase{"ClosedPort", 0, {}, QMessageBox::Warning, NetworkError, nullptr}),
    [](const testing::TestParamInfo<UpdateCase>& param) { return std::string(param.param.name); });
