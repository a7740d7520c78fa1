#include "MainWindow.h"
#include "TerminationSignals.h"

#include <QApplication>
#include <QFont>
#include <QLocale>
#include <QOperatingSystemVersion>
#include <QSessionManager>
#include <QTranslator>

namespace {

QFont DefaultApplicationFont()
{
#ifdef Q_OS_WIN
    if (QOperatingSystemVersion::current() >= QOperatingSystemVersion::Windows10)
        return QFont(QStringLiteral("Yu Gothic UI"), 11);
#endif
    return QFont(QStringLiteral("Meiryo UI"), 11);
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);

    QTranslator translatorJa;
    QTranslator translatorZh;
    QTranslator translatorEn;
    // A catalogue that fails to load stays empty and the texts show in English.
    (void)translatorJa.load(QStringLiteral(":/translations/tesk_ja.qm"), QString(), QString(),
                            QString());
    (void)translatorZh.load(QStringLiteral(":/translations/tesk_zh.qm"), QString(), QString(),
                            QString());
    (void)translatorEn.load(QStringLiteral(":/translations/tesk_en.qm"), QString(), QString(),
                            QString());
    switch (QLocale::system().language()) {
    case QLocale::Japanese:
        QApplication::installTranslator(&translatorJa);
        break;
    case QLocale::Chinese:
        QApplication::installTranslator(&translatorZh);
        break;
    default:
        QApplication::installTranslator(&translatorEn);
        break;
    }

    QApplication::setFont(DefaultApplicationFont());

    int exitCode = 0;
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        // Shutdown, logout or Ctrl+C: the settings are written before anything
        // else, then the program quits as if the window had been closed.
        TerminationSignals termination;
        QObject::connect(&termination, &TerminationSignals::SigTerminationRequested, manager,
                         [manager] {
                             manager->SaveSettingsNow();
                             QApplication::quit();
                         });
        QObject::connect(&app, &QGuiApplication::commitDataRequest, manager,
                         [manager](QSessionManager&) { manager->SaveSettingsNow(); });
        window.show();
        exitCode = QApplication::exec();
    }
    return exitCode;
}
