#include "Msgfmt.h"

#include "TestRoot.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

QByteArray poQuoted(const QString& text)
{
    QByteArray bytes = text.toUtf8();
    bytes.replace("\\", "\\\\").replace("\"", "\\\"").replace("\n", "\\n");
    return '"' + bytes + '"';
}

// msgfmt is a declared build dependency: without it the test fails.
QByteArray compilePo(const QByteArray& po, const QStringList& options)
{
    QTemporaryDir directory;
    QFile source(directory.filePath(QStringLiteral("in.po")));
    if (!source.open(QIODevice::WriteOnly) || source.write(po) != po.size()) {
        ADD_FAILURE() << "cannot write the .po file";
        return {};
    }
    source.close();

    const QString output = directory.filePath(QStringLiteral("out.mo"));
    QProcess msgfmt;
    msgfmt.start(QStringLiteral("msgfmt"),
                 options + QStringList{QStringLiteral("-o"), output, source.fileName()});
    if (!msgfmt.waitForFinished(30000) || msgfmt.exitStatus() != QProcess::NormalExit ||
        msgfmt.exitCode() != 0) {
        ADD_FAILURE() << "msgfmt failed: " << msgfmt.errorString().toStdString() << " "
                      << msgfmt.readAllStandardError().toStdString();
        return {};
    }
    QFile compiled(output);
    if (!compiled.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "msgfmt wrote no file";
        return {};
    }
    return compiled.readAll();
}

QByteArray compileCatalogue(const CatalogueEntries& entries, const QStringList& options)
{
    QByteArray po = "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n";
    for (const auto& [key, text] : entries)
        po += "\nmsgid " + poQuoted(key) + "\nmsgstr " + poQuoted(text) + "\n";
    return compilePo(po, options);
}

void writeCatalogue(const GameTree& game, const QString& name, const CatalogueEntries& entries)
{
    game.writeFile("res/text/LC_MESSAGES/" + name + ".mo", compileCatalogue(entries));
}
