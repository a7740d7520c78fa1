// The main window as a desktop user meets it over real files: the status line
// and the progress bar while a folder is worked on, the table's header and the
// subfolder flag surviving a restart, the library settings, and the sort
// specification applied to the table.
#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "MainWindow.h"
#include "MenuBar.h"
#include "ModalAnswer.h"
#include "SortSettingsApplication.h"
#include "StatusProgress.h"
#include "SubFormFont.h"
#include "SubWidgetTableView.h"
#include "TestSettings.h"
#include "WaveBuilder.h"
#include "WidgetSearch.h"
#include "WidgetTableBrowser.h"
#include "subFormLibrarySettings.h"
#include "subFormSortSettings.h"
#include "subFormToolSettings.h"

#include <QApplication>
#include <QFileDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

QAction* MenuAction(MainWindow& window, const QString& text)
{
    for (QAction* action : window.menuBar()->findChildren<QAction*>()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

bool ShowFolder(TeskManager* manager, const QString& folder)
{
    QSignalSpy ended(manager, &TeskManager::SigEndGetDetailInfo);
    manager->SlotChangeRootPathCalled(folder);
    return ended.wait(20000);
}

template<typename T>
T* Child(QObject* parent, const char* name)
{
    return parent->findChild<T*>(QString::fromLatin1(name));
}

} // namespace

class tst_MainWindow final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings configDir;
    QTemporaryDir data;
    QString root;

private slots:
    void initTestCase()
    {
        root = QDir(data.path()).canonicalPath() + QStringLiteral("/library");
        QVERIFY(QDir().mkpath(root + QStringLiteral("/sub")));
        // 1.5 s, 0.25 s and 0.5 s at 8 kHz; one more file in the subfolder.
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/door_open.wav"), 8000, 1, 12000));
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/door_slam.wav"), 8000, 2, 2000));
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/wind.wav"), 8000, 1, 4000));
        QVERIFY(fixtures::writeSineWav(root + QStringLiteral("/sub/rain.wav"), 8000, 1, 8000));
    }

    void init() { configDir.clear(); }

    void statusLineProgressAndTimeLeft()
    {
        MainWindow window;
        StatusProgress* progress = window.GetStatusProgress();
        TeskManager* manager = window.GetManager();
        int counted = -1;
        bool shownWhileCounting = true;
        connect(manager, &TeskManager::SigProgressChanged, this, [&](int done, int total) {
            if (total == 0) {
                shownWhileCounting = shownWhileCounting && progress->bar()->maximum() == 0;
                return;
            }
            counted = total;
            shownWhileCounting = shownWhileCounting && progress->isVisibleTo(&window) &&
                                 progress->bar()->value() == done &&
                                 progress->bar()->maximum() == total;
        });
        QVERIFY(ShowFolder(manager, root));
        QCOMPARE(counted, 3);
        QVERIFY(shownWhileCounting);
        QVERIFY(progress->isHidden());

        QLabel* status = window.GetStatusLabel();
        const QString all =
            QStringLiteral("Number of audio files displayed: 3 Total time: 0hr00min02.250sec");
        QTRY_COMPARE(status->text(), all);
        // Typing filters once the typing pauses; deleting the text shows every file at once.
        QLineEdit* search = window.GetSearchWidget()->searchLine();
        QTest::keyClicks(search, QStringLiteral("DOOR"));
        QTRY_COMPARE(status->text(), QStringLiteral("Number of audio files displayed: 2 Total "
                                                    "time: 0hr00min01.750sec"));
        QTest::keyClick(search, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(search, Qt::Key_Backspace);
        QCOMPARE(status->text(), all);

        // The time left: none too early to tell, a part second rounds up.
        const struct
        {
            int done, total;
            qint64 elapsedMs;
            const char* left;
        } cases[] = {{10, 100, 400, ""},         {0, 100, 5000, ""},      {25, 100, 10000, "0:30"},
                     {1, 100, 40000, "1:06:00"}, {99, 100, 9900, "0:01"}, {100, 100, 9000, "0:00"}};
        for (const auto& c : cases) {
            const qint64 ms = StatusProgress::RemainingMs(c.done, c.total, c.elapsedMs);
            QCOMPARE(ms < 0 ? QString() : StatusProgress::DurationText(ms), QLatin1String(c.left));
        }
    }

    void headerAndSubfolderFlagSurviveARestart()
    {
        const QStringList flipped{"Display files in subfolders as well",
                                  "Display multi-channel plots",
                                  "Show hidden files and folders",
                                  "Display Loudness value of mono audio with raising 3dB",
                                  "Show detail view",
                                  "Keep Analysis Results Between Sessions"};
        QList<bool> before;
        {
            MainWindow window;
            QVERIFY(ShowFolder(window.GetManager(), root));
            QHeaderView* header = window.GetTableBrowser()->tableView()->horizontalHeader();
            header->moveSection(header->visualIndex(ColumnDuration), 0);
            header->resizeSection(ColumnFile, 321);
            header->setSortIndicator(ColumnDuration, Qt::DescendingOrder);
            window.GetMenuBar()->columnVisibilityActions().at(ColumnModifyTime)->trigger();
            QVERIFY(header->isSectionHidden(ColumnModifyTime));
            QSignalSpy ended(window.GetManager(), &TeskManager::SigEndGetDetailInfo);
            for (const QString& entry : flipped) {
                before << MenuAction(window, entry)->isChecked();
                MenuAction(window, entry)->trigger();
            }
            QVERIFY(ended.wait(20000));
        }

        MainWindow window;
        TeskManager* manager = window.GetManager();
        QVERIFY(!manager->IsListCancelPending()); // the flags' echo lists nothing twice
        for (int k = 0; k < flipped.size(); ++k)
            QCOMPARE(MenuAction(window, flipped[k])->isChecked(), !before[k]);
        QHeaderView* header = window.GetTableBrowser()->tableView()->horizontalHeader();
        QCOMPARE(header->visualIndex(ColumnDuration), 0);
        QCOMPARE(header->sectionSize(ColumnFile), 321);
        QVERIFY(header->isSectionHidden(ColumnModifyTime));
        QVERIFY(!window.GetMenuBar()->columnVisibilityActions().at(ColumnModifyTime)->isChecked());
        QCOMPARE(header->sortIndicatorSection(), int(ColumnDuration));
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);

        // The stored root is listed once, with the subfolder, sorted the user's way.
        QSignalSpy ended(manager, &TeskManager::SigEndGetDetailInfo);
        QSignalSpy listed(manager, &TeskManager::SigFilePathListAcquired);
        QVERIFY(ended.wait(20000));
        QCOMPARE(listed.count(), 1);
        const QAbstractItemModel* proxy = window.GetTableBrowser()->sortModel();
        QCOMPARE(proxy->rowCount(), 4);
        QCOMPARE(proxy->index(0, ColumnFile).data().toString(), QStringLiteral("door_open.wav"));
        QCOMPARE(proxy->index(1, ColumnFile).data().toString(), QStringLiteral("rain.wav"));
    }

    void fileNamedAsRootIsSelected()
    {
        // As "Open With Tesk" or a drop does it.
        MainWindow window;
        QVERIFY(ShowFolder(window.GetManager(), root + QStringLiteral("/wind.wav")));
        QCOMPARE(window.GetManager()->GetRootPath(), root);
        const SubWidgetTableView* view = window.GetTableBrowser()->tableView();
        QCOMPARE(view->currentIndex().data(257).toString(), root + QStringLiteral("/wind.wav"));
        QCOMPARE(view->selectionModel()->selectedRows().size(), 1);
    }

    // The menus over a shown folder, each entry as the user picks it.
    void menuEntries()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        QVERIFY(ShowFolder(manager, root + QStringLiteral("/sub")));
        QVERIFY(ShowFolder(manager, root));
        const auto trigger = [&window](const char* text) {
            MenuAction(window, QLatin1String(text))->trigger();
        };
        QSignalSpy news(manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy ended(manager, &TeskManager::SigEndGetDetailInfo);

        // A bookmark named in the prompt, a recent folder (newest first) and a
        // folder picked in the dialog each lead to their folder.
        fixtures::AnswerNextModal<QInputDialog>([](QInputDialog* input) {
            input->setTextValue(QStringLiteral("Lib"));
            input->accept();
        });
        trigger("Add to Bookmarks");
        emit MenuAction(window, QLatin1String("Folder"))->menu()->aboutToShow();
        const QList<QAction*> recent =
            MenuAction(window, QLatin1String("Recently viewed folders"))->menu()->actions();
        QCOMPARE(recent.at(1)->text(), root + QStringLiteral("/sub"));
        recent.at(1)->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, 20000);
        emit MenuAction(window, QLatin1String("Bookmark"))->menu()->aboutToShow();
        trigger("Lib");
        QCOMPARE(manager->GetRootPath(), root);
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 2, 20000);
        fixtures::AnswerNextModal<QFileDialog>([this](QFileDialog* dialog) {
            dialog->setDirectory(root + QStringLiteral("/sub"));
            static_cast<QDialog*>(dialog)->accept();
        });
        trigger("Select a folder...");
        QCOMPARE(manager->GetRootPath(), root + QStringLiteral("/sub"));
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 3, 20000);

        // Seeking is offered in the open menu only while a file plays.
        emit MenuAction(window, QLatin1String("Preview"))->menu()->aboutToShow();
        QVERIFY(!MenuAction(window, QStringLiteral("Seek forward"))->isEnabled());
        emit MenuAction(window, QLatin1String("Preview"))->menu()->aboutToHide();
        QVERIFY(MenuAction(window, QStringLiteral("Seek backward"))->isEnabled());

        // Settings: a CatID list that cannot be used is told on the status line.
        const QString catIds = data.filePath(QStringLiteral("catids.csv"));
        QVERIFY(fixtures::WriteBytes(catIds, "Name,Other\n"));
        fixtures::AnswerNextModal<subFormToolSettings>([catIds](subFormToolSettings* form) {
            Child<QLineEdit>(form, "editCatIdList")->setText(catIds);
            Child<QPushButton>(form, "buttonOk")->click();
        });
        QSignalSpy told(window.GetTableBrowser(), &WidgetTableBrowser::SigSendMessage);
        trigger("Settings...");
        QTRY_VERIFY(fixtures::SpiedTexts(told).contains("The CatID list has no CatID column."));

        // Clearing the library asks first.
        fixtures::AnswerNextModal<QMessageBox>(
            [](QMessageBox* box) { box->button(QMessageBox::Yes)->click(); });
        trigger("Clear Analysis Library...");
        QTRY_VERIFY(fixtures::SpiedTexts(news).contains("Cleared the analysis library."));

        // Windows of their own, opened once each.
        for (int k = 0; k < 2; ++k) {
            trigger("Open Sort Settings");
            trigger("Font...");
        }
        QVERIFY(window.findChild<subFormSortSettings*>()->isVisible());
        QVERIFY(window.findChild<SubFormFont*>()->isVisible());
    }

    // A root folder that is not absolute keeps the form open; a socket folder
    // that does not exist falls back at once.
    void librarySettingsAreStoredOnOk()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        const QString host = data.filePath(QStringLiteral("no-server"));
        for (const QString& rootFolder :
             {QStringLiteral("relative/sfx"), QStringLiteral("/mnt/sfx/")}) {
            fixtures::AnswerNextModal<subFormLibrarySettings>([host, rootFolder](
                                                                  subFormLibrarySettings* f) {
                Child<QRadioButton>(f, "radioServer")->setChecked(true);
                Child<QLineEdit>(f, "editHost")->setText(host);
                Child<QSpinBox>(f, "spinPort")->setValue(6543);
                Child<QLineEdit>(f, "editDatabase")->setText(QStringLiteral(" tesk "));
                auto* roots = Child<QTableWidget>(f, "tableRoots");
                roots->setRowCount(1);
                roots->setItem(0, 0, new QTableWidgetItem(QStringLiteral("SFX")));
                roots->setItem(0, 1, new QTableWidgetItem(rootFolder));
                f->problems().isEmpty() ? Child<QPushButton>(f, "buttonOk")->click() : f->reject();
            });
            window.SlotOpenLibrarySettings();
        }
        const AnalysisLibrarySettings stored = manager->GetAnalysisLibrarySettings();
        QVERIFY(stored.onServer);
        QCOMPARE(stored.server.Describe(), host + QStringLiteral(":6543/tesk"));
        QCOMPARE(stored.roots, QStringList{QStringLiteral("SFX=/mnt/sfx/")});
        QVERIFY(manager->GetKrokManager()->HasLibrary());
    }

    // A specification that names no file of the table explains, with the
    // busy cursor gone.
    void sortSpecificationThatMatchesNothingExplains()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        QVERIFY(ShowFolder(&manager, root));
        const QString csv = data.filePath(QStringLiteral("order.csv"));
        QVERIFY(fixtures::WriteBytes(csv, "sub/door_slam.wav,a\nother/wind.wav,b\n"));
        subFormSortSettings form;
        form.setRelativeRoot(root);
        Child<QGroupBox>(&form, "groupUseCsv")->setChecked(true);
        Child<QLineEdit>(&form, "editCsvPath")->setText(csv);
        Child<QPushButton>(&form, "buttonAnalyze")->click();
        QVERIFY(form.isApplicable());
        QString text;
        fixtures::AnswerNextModal<QMessageBox>([&text](QMessageBox* box) {
            text = box->text();
            box->accept();
        });
        QVERIFY(ApplySortSettings(&form, &browser));
        QVERIFY(text.startsWith(QStringLiteral("No files to reorder.\n")));
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
