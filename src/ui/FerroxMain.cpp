#include "FerroxMain.h"

#include "Constants.h"
#include "MainApplication.h"
#include "MainWindow.h"
#include "MessageBoxes.h"
#include "StartupError.h"

#include <QDir>
#include <QLocale>
#include <QTranslator>

namespace {
void loadTranslation(QTranslator& translator, const QString& localeName)
{
    const QString base = QLatin1String(Ferrox::TranslationDirectory) + QStringLiteral("Ferrox_");
    const QLocale locale = localeName.isEmpty() ? QLocale::system() : QLocale(localeName);
    if (translator.load(base + locale.name(), QString(), QString(), QString()))
        return;
    // "de_AT" has no file of its own: try the language alone.
    const QString language = locale.name().section(QLatin1Char('_'), 0, 0);
    (void)translator.load(base + language, QString(), QString(), QString());
}
} // namespace

int runFerrox(int& argc, char** argv, const StartOptions& options)
{
    MainApplication application(argc, argv);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application,
                     &QCoreApplication::quit);

    QDir::setCurrent(options.applicationDirectory.isEmpty() ? QCoreApplication::applicationDirPath()
                                                            : options.applicationDirectory);
    QCoreApplication::setApplicationName(QLatin1String(Ferrox::ApplicationName));
    QCoreApplication::setApplicationVersion(QLatin1String(Ferrox::ApplicationVersion));

    QTranslator translator;
    loadTranslation(translator, options.localeName);
    if (!translator.isEmpty())
        QCoreApplication::installTranslator(&translator);

    application.initialise();

    // Shows itself: the viewport's GL start-up, which also builds the
    // vehicle table, runs within the constructor.
    MainWindow window;

    if (startupErrorPending()) {
        window.close();
        criticalBox(QCoreApplication::translate("main", "Fatal Error"), takeStartupError(),
                    QMessageBox::Ok);
        return 1;
    }

    markStartupFinished();
    if (options.onStarted)
        options.onStarted(window);
    return application.exec();
}
