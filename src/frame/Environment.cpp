#include "Environment.h"

#include "Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QSysInfo>

QString architectureName()
{
    return QStringLiteral("x64");
}

QString qtVersionString()
{
    return QString::fromLatin1(qVersion());
}

QString osVersionName()
{
    const QString name = QSysInfo::prettyProductName();
    return name.isEmpty() ? QStringLiteral("Unknown") : name;
}

QString userDirectory()
{
    QString path = QDir::currentPath();
    path.remove(QStringLiteral("bin_") + architectureName());
    return path + QStringLiteral("data");
}

QString gameVersionString()
{
    const QString fallback = QCoreApplication::translate("Environment", "Gavrel not found");
    const Settings* settings = Settings::instance();
    if (!settings)
        return fallback;

    QFile file(QDir::toNativeSeparators(settings->gavrelPath + QStringLiteral("/version.xml")));
    if (!file.open(QIODevice::ReadOnly))
        return fallback;

    QDomDocument document(QStringLiteral("GavrelVersion"));
    if (!document.setContent(&file))
        return fallback;

    return document.documentElement()
        .firstChildElement(QStringLiteral("version"))
        .text()
        .simplified();
}
