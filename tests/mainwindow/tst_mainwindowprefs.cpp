// The main window's preference entry points over a real manager: theme
// switching, the font dialog's live signal, Tool Settings storage and the
// Sort Settings window's root change.
#include "FontSettings.h"
#include "KrokManager.h"
#include "MainWindow.h"
#include "MenuBar.h"
#include "SubFormFont.h"
#include "TeskStyle.h"
#include "TestSettings.h"
#include "subFormLibrarySettings.h"
#include "subFormSortSettings.h"
#include "subFormToolSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class tst_MainWindowPrefs final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings configDir;
    QTemporaryDir data;

    static QAction* menuAction(MainWindow& window, const QString& text)
    {
        for (QAction* action : window.menuBar()->findChildren<QAction*>()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }

private slots:
    void initTestCase() { QVERIFY(configDir.isValid()); }

    void themeReplacesTheApplicationStyle()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        QScopedPointer<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
        const QColor lightWindow = fusion->standardPalette().color(QPalette::Window);

        window.SlotChangeColor(TeskManager::Dark);
        QCOMPARE(manager->GetColorTheme(), TeskManager::Dark);
        QVERIFY(qobject_cast<TeskStyle*>(QApplication::style()));
        const QPalette dark = QApplication::palette();
        QCOMPARE(dark.color(QPalette::Active, QPalette::Window), QColor(32, 32, 34));
        QCOMPARE(dark.color(QPalette::Inactive, QPalette::Base), QColor(48, 48, 51));
        QCOMPARE(dark.color(QPalette::Disabled, QPalette::Window), QColor(8, 8, 10));
        QCOMPARE(dark.color(QPalette::Active, QPalette::AlternateBase), QColor(64, 64, 68));
        QCOMPARE(window.palette().color(QPalette::Window), QColor(32, 32, 34));

        // The Theme menu goes the same way.
        QAction* light = menuAction(window, QStringLiteral("Light"));
        QVERIFY(light);
        light->trigger();
        QCOMPARE(manager->GetColorTheme(), TeskManager::Light);
        QVERIFY(light->isChecked());
        QCOMPARE(QApplication::palette().color(QPalette::Window), lightWindow);
        QCOMPARE(window.palette().color(QPalette::Window), lightWindow);

        menuAction(window, QStringLiteral("Dark"))->trigger();
        QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(32, 32, 34));
        window.SlotChangeColor(TeskManager::Light);
    }

    void fontDialogChangesReachTheManager()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        QSignalSpy fontChanged(manager, &TeskManager::SigChangeFont);
        window.SlotOpenFontForm();
        auto* form = window.findChild<SubFormFont*>();
        QVERIFY(form);
        QVERIFY(form->isVisible());
        QVERIFY(!form->isModal());
        auto* size = form->findChild<QSpinBox*>(QStringLiteral("treeFontSize"));
        size->setValue(size->value() + 3);
        QCOMPARE(fontChanged.count(), 1);
        QCOMPARE(manager->GetFontSettings()->GetPointSize(FontSettings::Tree), size->value());

        // Opening again reuses the one dialog.
        window.SlotOpenFontForm();
        QCOMPARE(window.findChildren<SubFormFont*>().size(), 1);
    }

    void toolSettingsAreStoredOnOk()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        const QString tool = QCoreApplication::applicationFilePath();

        const auto answer = [tool](bool ok) {
            QTimer::singleShot(20, [tool, ok] {
                auto* form = qobject_cast<subFormToolSettings*>(QApplication::activeModalWidget());
                if (!form)
                    return;
                form->findChild<QLineEdit*>(QStringLiteral("editToolPath"))->setText(tool);
                form->findChild<QLineEdit*>(QStringLiteral("editToolArgs"))
                    ->setText(QStringLiteral("-x %FILEPATH%"));
                form->findChild<QSpinBox*>(QStringLiteral("spinSeekTime"))->setValue(2500);
                if (ok)
                    form->findChild<QPushButton*>(QStringLiteral("buttonOk"))->click();
                else
                    form->reject();
            });
        };
        answer(false);
        window.SlotOpenSettingsForm();
        QCOMPARE(manager->GetExternalToolPath(), QString());
        QCOMPARE(manager->GetSeekTimeMs(), 1000);

        answer(true);
        window.SlotOpenSettingsForm();
        QCOMPARE(manager->GetExternalToolPath(), tool);
        QCOMPARE(manager->GetExternalToolArgs(), QStringLiteral("-x %FILEPATH%"));
        QCOMPARE(manager->GetSeekTimeMs(), 2500);
    }

    void librarySettingsAreStoredOnOk()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        QVERIFY(menuAction(window, QStringLiteral("Analysis Library Settings...")));
        // A socket folder that does not exist: the library falls back at once.
        const QString host = data.filePath(QStringLiteral("no-server"));
        const auto answer = [host](const QString& rootFolder) {
            QTimer::singleShot(20, [host, rootFolder] {
                auto* form =
                    qobject_cast<subFormLibrarySettings*>(QApplication::activeModalWidget());
                if (!form)
                    return;
                form->findChild<QRadioButton*>(QStringLiteral("radioServer"))->setChecked(true);
                form->findChild<QLineEdit*>(QStringLiteral("editHost"))->setText(host);
                form->findChild<QSpinBox*>(QStringLiteral("spinPort"))->setValue(6543);
                form->findChild<QLineEdit*>(QStringLiteral("editDatabase"))
                    ->setText(QStringLiteral(" tesk "));
                auto* roots = form->findChild<QTableWidget*>(QStringLiteral("tableRoots"));
                roots->setRowCount(1);
                roots->setItem(0, 0, new QTableWidgetItem(QStringLiteral("SFX")));
                roots->setItem(0, 1, new QTableWidgetItem(rootFolder));
                // A folder that is not absolute is refused; the form stays open.
                if (!form->problems().isEmpty()) {
                    form->reject();
                    return;
                }
                form->findChild<QPushButton*>(QStringLiteral("buttonOk"))->click();
            });
        };
        answer(QStringLiteral("relative/sfx"));
        window.SlotOpenLibrarySettings();
        QVERIFY(!manager->GetAnalysisLibrarySettings().onServer);

        answer(QStringLiteral("/mnt/sfx/"));
        window.SlotOpenLibrarySettings();
        const AnalysisLibrarySettings stored = manager->GetAnalysisLibrarySettings();
        QVERIFY(stored.onServer);
        QCOMPARE(stored.server.Describe(), host + QStringLiteral(":6543/tesk"));
        QCOMPARE(stored.roots, QStringList{QStringLiteral("SFX=/mnt/sfx/")});
        QVERIFY(manager->GetKrokManager()->HasLibrary());
    }

    void sortSettingsApplyAfterTheNewList()
    {
        QVERIFY(data.isValid());
        const QString root = QDir(data.path()).filePath(QStringLiteral("library"));
        QVERIFY(QDir().mkpath(root));
        QVERIFY(fixtures::WriteBytes(root + QStringLiteral("/a.wav")));

        MainWindow window;
        TeskManager* manager = window.GetManager();
        manager->SlotChangeRootPathCalled(data.path());
        window.SlotShowSortSettings();
        auto* form = window.findChild<subFormSortSettings*>();
        QVERIFY(form);
        QVERIFY(form->isVisible());
        QVERIFY(form->isWindow());
        QCOMPARE(form->relativeRoot(), data.path());

        // Hidden and shown again, it takes the current root once more.
        form->hide();
        manager->SlotChangeRootPathCalled(root);
        window.SlotShowSortSettings();
        QCOMPARE(form->relativeRoot(), root);
        QCOMPARE(window.findChildren<subFormSortSettings*>().size(), 1);

        QSignalSpy applied(form, &subFormSortSettings::SigSortSettingApplied);
        QSignalSpy listed(manager, &TeskManager::SigFilePathListAcquired);
        QTRY_VERIFY(listed.count() >= 1 || manager->GetTotalFileCount() == 1);
        listed.clear();
        form->findChild<QCheckBox*>(QStringLiteral("checkMoveToRoot"))->setChecked(true);
        form->findChild<QPushButton*>(QStringLiteral("buttonApply"))->click();
        QCOMPARE(manager->GetRootPath(), root);
        QCOMPARE(applied.count(), 0);
        QVERIFY(form->isApplyPending());
        QTRY_COMPARE_WITH_TIMEOUT(applied.count(), 1, 10000);
        QVERIFY(listed.count() >= 1);
        QVERIFY(!form->isApplyPending());
    }
};

QTEST_MAIN(tst_MainWindowPrefs)
#include "tst_mainwindowprefs.moc"
