// The main window as a desktop user meets it over real files: the status
// line and the progress bar while a folder is worked on, the table's header
// and the subfolder flag surviving a restart, the header's column menu, and
// the empty tool bar kept out of sight.
#include "KrokTableSortModel.h"
#include "MainWindow.h"
#include "MenuBar.h"
#include "StatusProgress.h"
#include "SubWidgetTableView.h"
#include "TestSettings.h"
#include "WaveBuilder.h"
#include "WidgetSearch.h"
#include "WidgetTableBrowser.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>

#include <memory>

class tst_DesktopHabits final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings configDir;
    QTemporaryDir data;
    QString root;

    static QAction* menuAction(MainWindow& window, const QString& text)
    {
        for (QAction* action : window.menuBar()->findChildren<QAction*>()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }

    // Lists and analyses `folder` in `window`, waiting for the end.
    static bool showFolder(MainWindow& window, const QString& folder)
    {
        QSignalSpy ended(window.GetManager(), &TeskManager::SigEndGetDetailInfo);
        window.GetManager()->SlotChangeRootPathCalled(folder);
        return ended.wait(20000);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(configDir.isValid());
        QVERIFY(data.isValid());
        root = QDir(data.path()).canonicalPath() + QStringLiteral("/library");
        QVERIFY(QDir().mkpath(root + QStringLiteral("/sub")));
        // 1.5 s, 0.25 s and 0.5 s at 8 kHz; one more file in the subfolder.
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/door_open.wav"), 8000, 1, 12000));
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/door_slam.wav"), 8000, 2, 2000));
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/wind.wav"), 8000, 1, 4000));
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/sub/rain.wav"), 8000, 1, 8000));
    }

    void init() { configDir.clear(); }

    void statusLineFollowsTheFilter()
    {
        MainWindow window;
        QVERIFY(showFolder(window, root));
        QLabel* status = window.GetStatusLabel();
        QTRY_COMPARE(status->text(), QStringLiteral("Number of audio files displayed: 3 Total "
                                                    "time: 0hr00min02.250sec"));
        // Typing filters once the typing pauses; the line follows.
        QLineEdit* search = window.GetSearchWidget()->searchLine();
        QTest::keyClicks(search, QStringLiteral("DOOR"));
        QTRY_COMPARE(status->text(), QStringLiteral("Number of audio files displayed: 2 Total "
                                                    "time: 0hr00min01.750sec"));
        // Deleting the text shows every file again at once.
        QTest::keyClick(search, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(search, Qt::Key_Backspace);
        QCOMPARE(status->text(), QStringLiteral("Number of audio files displayed: 3 Total "
                                                "time: 0hr00min02.250sec"));
    }

    void progressShowsWhileWorkRuns()
    {
        MainWindow window;
        StatusProgress* progress = window.GetStatusProgress();
        QVERIFY(progress->isHidden());
        TeskManager* manager = window.GetManager();
        int listing = 0;
        int counted = -1;
        bool shownWhileCounting = true;
        connect(manager, &TeskManager::SigProgressChanged, this, [&](int done, int total) {
            if (total == 0) {
                ++listing;
                shownWhileCounting = shownWhileCounting && progress->bar()->maximum() == 0;
                return;
            }
            counted = total;
            shownWhileCounting = shownWhileCounting && progress->isVisibleTo(&window) &&
                                 progress->bar()->value() == done &&
                                 progress->bar()->maximum() == total;
        });
        QVERIFY(showFolder(window, root));
        QVERIFY(listing >= 1);
        QCOMPARE(counted, 3);
        QVERIFY(shownWhileCounting);
        QVERIFY(progress->isHidden());
        // A folder that does not exist starts no work: no bar.
        manager->SlotChangeRootPathCalled(root + QStringLiteral("/gone"));
        QVERIFY(progress->isHidden());
    }

    void timeLeft()
    {
        const struct
        {
            int done, total;
            qint64 elapsedMs;
            const char* left;
        } cases[] = {{10, 100, 400, ""}, // too early to tell
                     {0, 100, 5000, ""},         {25, 100, 10000, "0:30"},
                     {1, 100, 40000, "1:06:00"}, {99, 100, 9900, "0:01"}, // a part second rounds up
                     {100, 100, 9000, "0:00"}};
        for (const auto& c : cases) {
            const qint64 ms = StatusProgress::RemainingMs(c.done, c.total, c.elapsedMs);
            QCOMPARE(ms < 0 ? QString() : StatusProgress::DurationText(ms), QLatin1String(c.left));
        }
    }

    void headerAndSubfolderFlagSurviveARestart()
    {
        QByteArray saved;
        {
            MainWindow window;
            QVERIFY(showFolder(window, root));
            QHeaderView* header = window.GetTableBrowser()->tableView()->horizontalHeader();
            header->moveSection(header->visualIndex(ColumnDuration), 0);
            header->resizeSection(ColumnFile, 321);
            header->setSortIndicator(ColumnDuration, Qt::DescendingOrder);

            // The header's own menu hides a column; the View menu follows.
            QTimer::singleShot(0, [] {
                auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                if (!menu)
                    return;
                for (QAction* action : menu->actions()) {
                    if (action->text() == QLatin1String("Modify Time"))
                        action->trigger();
                }
                menu->close();
            });
            emit header->customContextMenuRequested(QPoint(5, 5));
            QVERIFY(header->isSectionHidden(ColumnModifyTime));
            const QAction* columnEntry =
                window.GetMenuBar()->columnVisibilityActions().at(ColumnModifyTime);
            QVERIFY(!columnEntry->isChecked());

            QAction* recursive =
                menuAction(window, QStringLiteral("Display files in subfolders as well"));
            QVERIFY(recursive);
            QSignalSpy ended(window.GetManager(), &TeskManager::SigEndGetDetailInfo);
            recursive->trigger();
            QVERIFY(ended.wait(20000));
            saved = header->saveState();
        }

        MainWindow window;
        TeskManager* manager = window.GetManager();
        QVERIFY(manager->IsRecursive());
        QVERIFY(
            menuAction(window, QStringLiteral("Display files in subfolders as well"))->isChecked());
        QHeaderView* header = window.GetTableBrowser()->tableView()->horizontalHeader();
        QCOMPARE(header->visualIndex(ColumnDuration), 0);
        QCOMPARE(header->sectionSize(ColumnFile), 321);
        QVERIFY(header->isSectionHidden(ColumnModifyTime));
        QVERIFY(!window.GetMenuBar()->columnVisibilityActions().at(ColumnModifyTime)->isChecked());
        QCOMPARE(header->sortIndicatorSection(), int(ColumnDuration));
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);

        // The stored root is listed with the subfolder and sorted the user's way.
        QSignalSpy ended(manager, &TeskManager::SigEndGetDetailInfo);
        QSignalSpy listed(manager, &TeskManager::SigFilePathListAcquired);
        QVERIFY(ended.wait(20000));
        // Listed once: announcing the stored flag does not start a second run.
        QCOMPARE(listed.count(), 1);
        const QAbstractItemModel* proxy = window.GetTableBrowser()->sortModel();
        QCOMPARE(proxy->rowCount(), 4);
        QCOMPARE(proxy->index(0, ColumnFile).data().toString(), QStringLiteral("door_open.wav"));
        QCOMPARE(proxy->index(1, ColumnFile).data().toString(), QStringLiteral("rain.wav"));
    }

    void fileNamedAsRootIsSelected()
    {
        // As "Open With Tesk" or a drop does it, with the folder tree echoing
        // the new root as it follows it.
        MainWindow window;
        QVERIFY(showFolder(window, root + QStringLiteral("/wind.wav")));
        QCOMPARE(window.GetManager()->GetRootPath(), root);
        const SubWidgetTableView* view = window.GetTableBrowser()->tableView();
        QCOMPARE(view->currentIndex().data(257).toString(), root + QStringLiteral("/wind.wav"));
        QCOMPARE(view->selectionModel()->selectedRows().size(), 1);
    }

    void emptyToolBarIsHidden()
    {
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* toolBar = window.findChild<QToolBar*>(QStringLiteral("mainToolBar"));
        QVERIFY(toolBar && !toolBar->isVisible());
        // Nor does the window's own menu offer to bring it back.
        std::unique_ptr<QMenu> menu(window.createPopupMenu());
        QVERIFY(!menu || !menu->actions().contains(toolBar->toggleViewAction()) ||
                !toolBar->toggleViewAction()->isVisible());
    }
};

QTEST_MAIN(tst_DesktopHabits)
#include "tst_desktophabits.moc"
