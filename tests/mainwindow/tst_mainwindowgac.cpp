// The main window's Nuendo entries over the real connection manager: built
// twice, once with no SDK anywhere and once beside the stand-in SDK, which
// accepts every connection.
#include "FakeSdkControl.h"
#include "GacManager.h"
#include "MainWindow.h"
#include "MenuBar.h"
#include "ModalAnswer.h"
#include "TestSettings.h"
#include "subFormGAC.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

class tst_MainWindowGac final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings configDir;

    static QString statusText(MainWindow& window)
    {
        return static_cast<MenuBar*>(window.menuBar())->nuendoStatusAction()->text();
    }

private slots:
    void initTestCase() { QVERIFY(configDir.isValid()); }

#ifndef TESK_TEST_SDK_BESIDE
    void missingSdkKeepsTheMenuNotConnected()
    {
        MainWindow window;
        auto* gac = window.findChild<GacManager*>();
        QVERIFY(gac);
        QSignalSpy log(gac, &GacManager::SigGacLogMessage);
        QTRY_COMPARE_WITH_TIMEOUT(statusText(window),
                                  QStringLiteral("[Not Connected] Start connection"), 3000);

        static_cast<MenuBar*>(window.menuBar())->nuendoStatusAction()->trigger();
        QTRY_VERIFY(std::any_of(log.cbegin(), log.cend(), [](const QList<QVariant>& line) {
            return line.at(0).toString() ==
                   QLatin1String("[Warning] Vex GAC is necessary to initialize before start "
                                 "the connection process.");
        }));
        QTRY_COMPARE(gac->GetState(), int(GacManager::NotConnected));
        QTRY_COMPARE_WITH_TIMEOUT(statusText(window),
                                  QStringLiteral("[Not Connected] Start connection"), 3000);
    }

    void openWithoutAConnectionSaysSoInTheStatusBar()
    {
        MainWindow window;
        auto* gac = window.findChild<GacManager*>();
        QVERIFY(gac);
        // Lets the sound output's start-up report (a machine without a card has one) go by.
        QCoreApplication::processEvents();
        gac->OpenByNuendo(QStringLiteral("/sfx/door.wav"));
        QCOMPARE(window.GetStatusLabel()->text(),
                 QStringLiteral("Not connected to Nuendo; start the connection from the Nuendo "
                                "Connection menu first."));
    }

    void settingsDialogStoresAddressAndPort()
    {
        MainWindow window;
        // Accepted, the dialog's values are stored; rejected, they are not.
        for (const bool accept : {true, false}) {
            fixtures::AnswerNextModal<QWidget>([accept](QWidget* modal) {
                auto* form = qobject_cast<subFormGAC*>(modal);
                QVERIFY(form);
                form->findChild<QLineEdit*>()->setText(accept ? "studio-b" : "elsewhere");
                form->findChild<QSpinBox*>()->setValue(accept ? 4500 : 4600);
                accept ? form->accept() : form->reject();
            });
            window.SlotGacOpenSettings();
            QCOMPARE(window.GetManager()->GetGacAddress(), QStringLiteral("studio-b"));
            QCOMPARE(window.GetManager()->GetGacPort(), 4500);
        }
    }
#else
    void toggleWhileConnectedOnlyInforms()
    {
        MainWindow window;
        auto* gac = window.findChild<GacManager*>();
        QVERIFY(gac);
        window.SlotGacToggleConnection();
        QTRY_COMPARE_WITH_TIMEOUT(gac->GetState(), int(GacManager::Connected), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(statusText(window), QStringLiteral("[Connected]"), 3000);

        QString shown;
        fixtures::AnswerNextModal<QWidget>([&shown](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            QVERIFY(box);
            shown = box->windowTitle() + QLatin1Char('|') + box->text();
            box->accept();
        });
        window.SlotGacToggleConnection();
        QCOMPARE(shown, QStringLiteral("Game Audio Connect|To close the connection, please disable "
                                       "the network connection of Game Audio Connect server."));
        QTest::qWait(200);
        QCOMPARE(gac->GetState(), int(GacManager::Connected));
    }

    void openFailureShowsInTheStatusBar()
    {
        FakeSdkControl sdk;
        QVERIFY(sdk.resolve(QCoreApplication::applicationDirPath() + "/libgac_sdk.so"));
        sdk.reset();
        MainWindow window;
        auto* gac = window.findChild<GacManager*>();
        window.SlotGacToggleConnection();
        QTRY_COMPARE_WITH_TIMEOUT(gac->GetState(), int(GacManager::Connected), 5000);
        sdk.setResult("gacOpenNuendoProject", 12);
        gac->OpenByNuendo(QStringLiteral("/sfx/door.wav"));
        QTRY_COMPARE(window.GetStatusLabel()->text(),
                     QStringLiteral("Nuendo could not open /sfx/door.wav: fake error 12"));
        sdk.reset();
    }
#endif
};

QTEST_MAIN(tst_MainWindowGac)
#include "tst_mainwindowgac.moc"
