#include "MoReaderCached.h"

#include "Log.h"
#include "MoFile.h"
#include "Settings.h"

#include <QDir>
#include <QStringList>

MoReaderCached::MoReaderCached() = default;

MoReaderCached::~MoReaderCached() = default;

QString MoReaderCached::catalogPath(const QString& catalogName)
{
    const Settings* settings = Settings::instance();
    const QString gamePath = settings ? settings->gavrelPath : QString();
    return QDir::toNativeSeparators(gamePath + QStringLiteral("/res/text/LC_MESSAGES/") +
                                    catalogName);
}

QString MoReaderCached::translate(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() < 2)
        return text;

    QString catalogName = parts[0];
    catalogName.remove(QLatin1Char('#'));
    const QString wanted = catalogPath(catalogName + QStringLiteral(".mo"));
    const QString& key = parts[1];

    if (wanted != path || !file) {
        // The catalogue in memory (and its name) stays until a new one has
        // loaded, so a failed load does not spoil the next key of the old one.
        auto next = std::make_unique<MoFile>();
        if (!next->load(wanted))
            return QString();
        file = std::move(next);
        path = wanted;
    }

    QString translation;
    if (file->lookup(key, &translation))
        return translation;
    Log::log(QStringLiteral("Could not translate: ") + key, Log::Warning);
    return key;
}
