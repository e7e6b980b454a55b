#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

// Message catalogues compiled by GNU msgfmt from .po text. msgfmt is a
// declared dependency: when it is missing or fails, the calling test fails.
using CatalogueEntries = QList<std::pair<QString, QString>>;

QByteArray poQuoted(const QString& text);
QByteArray compilePo(const QByteArray& po, const QStringList& options = {});
// A UTF-8 catalogue holding these keys and texts.
QByteArray compileCatalogue(const CatalogueEntries& entries, const QStringList& options = {});

class GameTree;
// Writes the catalogue into the game as res/text/LC_MESSAGES/<name>.mo.
void writeCatalogue(const GameTree& game, const QString& name, const CatalogueEntries& entries);
