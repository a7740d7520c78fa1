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

#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

class tst_MainWindowGac final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings configDir;

private slots:
#ifndef TESK_TEST_SDK_BESIDE
    void missingSdkKeepsTheMenuNotConnected()
    {
        MainWindow window;
        auto* gac = window.findChild<GacManager*>();
        QSignalSpy log(gac, &GacManager::SigGacLogMessage);
        QAction* status = window.GetMenuBar()->nuendoStatusAction();
        QTRY_COMPARE(status->text(), QStringLiteral("[Not Connected] Start connection"));
        status->trigger();
        QTRY_VERIFY(fixtures::SpiedTexts(log).contains(
            "[Warning] Vex GAC is necessary to initialize before start the connection process."));
        QCOMPARE(gac->GetState(), int(GacManager::NotConnected));
        QTRY_COMPARE(status->text(), QStringLiteral("[Not Connected] Start connection"));

        QCoreApplication::processEvents(); // the sound output's start-up report goes by
        gac->OpenByNuendo(QStringLiteral("/sfx/door.wav"));
        QCOMPARE(window.GetStatusLabel()->text(),
                 QStringLiteral("Not connected to Nuendo; start the connection from the Nuendo "
                                "Connection menu first."));

        // Accepted, the dialog's values are stored; rejected, they are not.
        for (const bool accept : {true, false}) {
            fixtures::AnswerNextModal<subFormGAC>([accept](subFormGAC* form) {
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
    void connectedWindowInformsAndReports()
    {
        FakeSdkControl sdk;
        QVERIFY(sdk.resolve(QCoreApplication::applicationDirPath() + "/libgac_sdk.so"));
        sdk.reset();
        MainWindow window;
        auto* gac = window.findChild<GacManager*>();
        window.SlotGacToggleConnection();
        QTRY_COMPARE(gac->GetState(), int(GacManager::Connected));
        QTRY_COMPARE(window.GetMenuBar()->nuendoStatusAction()->text(), QString("[Connected]"));
        QString shown;
        fixtures::AnswerNextModal<QMessageBox>([&shown](QMessageBox* box) {
            shown = box->windowTitle() + '|' + box->text();
            box->accept();
        });
        window.SlotGacToggleConnection();
        QCOMPARE(shown, QStringLiteral("Game Audio Connect|To close the connection, please disable "
                                       "the network connection of Game Audio Connect server."));
        QTest::qWait(200);
        QCOMPARE(gac->GetState(), int(GacManager::Connected));

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
