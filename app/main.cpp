#include "MainWindow.h"
#include "TerminationSignals.h"

#include <QApplication>
#include <QFont>
#include <QLocale>
#include <QOperatingSystemVersion>
#include <QSessionManager>
#include <QTranslator>

namespace {

// Windows gets the Japanese-capable UI face the program was designed with;
// elsewhere the desktop's own UI font (what Qt's platform theme reports)
// stays, since a Windows face is rarely installed there and its stand-in
// measures differently. The tree and table fonts the user picks apply on top.
void SetDefaultApplicationFont()
{
#ifdef Q_OS_WIN
    if (QOperatingSystemVersion::current() >= QOperatingSystemVersion::Windows10)
        QApplication::setFont(QFont(QStringLiteral("Yu Gothic UI"), 11));
    else
        QApplication::setFont(QFont(QStringLiteral("Meiryo UI"), 11));
#endif
}

} // namespace

int main(int argc, char* argv[])
{
    // Sharp text, plots and icons on high-density screens (and under QT_SCALE_FACTOR).
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication app(argc, argv);
    // Ties the windows to the installed launcher (its name and icon in the dock).
    QGuiApplication::setDesktopFileName(QStringLiteral("works.orvane.Tesk"));

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

    SetDefaultApplicationFont();

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
