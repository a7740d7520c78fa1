// The ways to a folder and a file: the path bar, the folder tree, the
// search dialog.
#include "ModalAnswer.h"
#include "SubWidgetTreeView.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "TreeViewItemModel.h"
#include "WaveBuilder.h"
#include "WidgetRootPath.h"
#include "WidgetSearch.h"
#include "WidgetTreeBrowser.h"
#include "subFormSearch.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using fixtures::SpiedTexts;

class TestFindWidgets : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    fixtures::TestSettings config;

private slots:
    void pathLineMovesTreeWithoutSecondAcquisition()
    {
        const QString folder = dir.filePath(QStringLiteral("lib/ambience"));
        for (int k = 0; k < 3; ++k)
            QVERIFY(fixtures::writeSineWav(folder + QStringLiteral("/wind%1.wav").arg(k), 48000, 1,
                                           4800, 0.0));
        TeskManager manager;
        WidgetTreeBrowser tree(&manager);
        WidgetRootPath bar;
        bar.SetManager(&manager);
        WidgetSearch search;
        search.SetManager(&manager);
        // A root that does not exist starts nothing and leaves the search bar usable.
        manager.SlotChangeRootPathCalled(dir.filePath(QStringLiteral("missing")));
        QVERIFY(search.isSearchEnabled());
        QSignalSpy listed(&manager, &TeskManager::SigFilePathListAcquired);
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy treeAsks(&tree, &WidgetTreeBrowser::SigChangeRootPathCalled);
        QSignalSpy ended(&manager, &TeskManager::SigEndGetDetailInfo);

        bar.pathLine()->setText(folder);
        QTest::keyClick(bar.pathLine(), Qt::Key_Return);
        QCOMPARE(tree.treeModel()->filePath(tree.treeView()->currentIndex()), folder);
        // The tree asked once more for the same root; the manager kept its work.
        QCOMPARE(treeAsks.count(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(listed.count(), 1, 20000);
        QVERIFY(!search.isSearchEnabled() || ended.count() == 1);
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, 20000);
        QVERIFY(search.isSearchEnabled());
        const QStringList texts = SpiedTexts(status);
        QCOMPARE(texts.count(QStringLiteral("Retrieving file list")), 1);
        QCOMPARE(texts.filter(QStringLiteral("Cancel")), QStringList());
        QVERIFY(bar.refreshButton()->isEnabled());

        // A later, different root is still taken.
        const QString other = dir.filePath(QStringLiteral("lib"));
        tree.treeView()->setCurrentIndex(tree.treeModel()->index(other));
        QCOMPARE(manager.GetRootPath(), other);
        QSignalSpy reveal(&tree, &WidgetTreeBrowser::SigShowInExplorer);
        tree.treeView()->actions().first()->trigger();
        QCOMPARE(SpiedTexts(reveal), QStringList{other});
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 2, 20000);

        // A file typed is listed in its folder and selected; a file that is
        // not audio is refused and the path shown goes back.
        QSignalSpy selections(&manager, &TeskManager::SigFileSelectionRequested);
        QSignalSpy messages(&bar, &WidgetRootPath::SigStatusMessage);
        const QString file = folder + QStringLiteral("/wind1.wav");
        bar.pathLine()->setText(file);
        QTest::keyClick(bar.pathLine(), Qt::Key_Return);
        QCOMPARE(manager.GetRootPath(), folder);
        QTRY_COMPARE_WITH_TIMEOUT(SpiedTexts(selections), QStringList{file}, 20000);
        const QString notes = dir.filePath(QStringLiteral("lib/notes.txt"));
        QVERIFY(fixtures::WriteBytes(notes));
        bar.pathLine()->setText(notes);
        QTest::keyClick(bar.pathLine(), Qt::Key_Return);
        QCOMPARE(bar.pathLine()->text(), folder);
        QCOMPARE(SpiedTexts(messages), QStringList{'"' + notes +
                                                   "\" is neither a folder nor a WAV, AIFF, "
                                                   "MP3, Ogg Vorbis or FLAC file."});
        QCOMPARE(manager.GetRecentFolders().count(folder), 1);
    }

    // The path bar takes a folder or an audio file dropped on it, nothing else.
    void pathBarDrops()
    {
        for (const char* name : {"drops/Take.WAV", "drops/notes.txt"})
            QVERIFY(fixtures::WriteBytes(dir.filePath(QLatin1String(name))));
        const std::pair<QString, bool> cases[] = {
            {"drops", true}, {"drops/Take.WAV", true}, {"drops/notes.txt", false}, {"", false}};
        for (const auto& [dropped, taken] : cases) {
            WidgetRootPath bar;
            QSignalSpy asked(&bar, &WidgetRootPath::SigChangeRootPathCalled);
            QMimeData mime;
            if (!dropped.isEmpty())
                mime.setUrls({QUrl::fromLocalFile(dir.filePath(dropped))});
            const Qt::DropActions actions = Qt::CopyAction | Qt::LinkAction;
            QDragEnterEvent enter(QPoint(1, 1), actions, &mime, Qt::LeftButton, Qt::NoModifier);
            QDragMoveEvent move(QPoint(2, 2), actions, &mime, Qt::LeftButton, Qt::NoModifier);
            QDropEvent drop(QPointF(2, 2), actions, &mime, Qt::LeftButton, Qt::NoModifier);
            for (QDragMoveEvent* event : {static_cast<QDragMoveEvent*>(&enter), &move}) {
                event->setAccepted(!taken);
                static_cast<QObject*>(&bar)->event(event);
                QCOMPARE(event->isAccepted(), taken);
            }
            QCOMPARE(enter.dropAction() == Qt::LinkAction, taken);
            if (taken) // the drag refused, nothing is dropped
                static_cast<QObject*>(&bar)->event(&drop);
            QCOMPARE(SpiedTexts(asked), taken ? QStringList{dir.filePath(dropped)} : QStringList());
        }
    }

    void treeShowsTheRootWhileItsAncestorsLoad()
    {
        // Two hundred folders beside the root's parent: as they load, they are
        // inserted above it and would push it out of sight.
        QTemporaryDir deep;
        for (int k = 0; k < 200; ++k)
            QVERIFY(QDir().mkpath(
                deep.filePath(QStringLiteral("m%1").arg(k, 3, 10, QLatin1Char('0')))));
        const QString root = deep.filePath(QStringLiteral("m150/inner"));
        QVERIFY(QDir().mkpath(root));
        WidgetTreeBrowser tree(nullptr);
        tree.resize(300, 300);
        tree.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tree));
        tree.SlotRootPathChanged(root);
        TreeViewItemModel* model = tree.treeModel();
        QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(model->index(deep.path())), 200, 20000);
        SubWidgetTreeView* view = tree.treeView();
        const QModelIndex index = model->index(root);
        QTRY_VERIFY_WITH_TIMEOUT(view->viewport()->rect().contains(view->visualRect(index)), 10000);
        QCOMPARE(view->currentIndex(), index);
        // Once the user scrolls, the tree stays where the user put it.
        view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
        const int top = view->verticalScrollBar()->value();
        emit model->directoryLoaded(deep.path());
        QCOMPARE(view->verticalScrollBar()->value(), top);
    }

    void searchDialogAssemblesTheRecord()
    {
        WidgetSearch search;
        SearchCriteriaStruct stored;
        stored.timeMs = 61234;
        stored.rateMode = SearchCriteriaStruct::Equal;
        connect(&search, &WidgetSearch::SigSearchCriteriaRequired, this,
                [&stored](SearchCriteriaStruct* c) { *c = stored; });
        connect(&search, &WidgetSearch::SigSearchCriteriaApplied, this,
                [&stored](SearchCriteriaStruct c, bool) { stored = c; });
        QSignalSpy applied(&search, &WidgetSearch::SigSearchCriteriaApplied);

        // The dialog starts from the stored record and sends the whole of it.
        bool seen = false;
        fixtures::AnswerNextModal<subFormSearch>([&seen](subFormSearch* form) {
            seen = form->minutesSpin()->value() == 1 && form->secondsSpin()->value() == 1 &&
                   form->millisecondsSpin()->value() == 234 &&
                   form->rateModeChoice()->currentIndex() == 2;
            form->detailGroup()->setChecked(true);
            form->nameEdit()->setText(QStringLiteral("door"));
            for (int i = 1; i < 5; ++i) // all but WAV and Error
                form->formatBox(i)->setChecked(false);
            form->timeGroup()->setChecked(true);
            form->minutesSpin()->setValue(2);
            form->secondsSpin()->setValue(3);
            form->millisecondsSpin()->setValue(45);
            form->timeModeChoice()->setCurrentIndex(1);
            form->channelsGroup()->setChecked(true);
            form->channelsSpin()->setValue(99); // clamped to 64
            form->SlotOKPushed();
        });
        search.openDetailAction()->trigger();
        QVERIFY(seen);
        QCOMPARE(applied.count(), 1);
        QCOMPARE(stored.name, QStringLiteral("door"));
        QVERIFY(stored.useDetail && stored.useTime && stored.useChannels && !stored.useRate);
        QCOMPARE(stored.formatMask, std::uint32_t(0x10000001));
        QCOMPARE(stored.timeMs, 123045);
        QCOMPARE(stored.timeMode, 1);
        QCOMPARE(stored.channels, 64);
    }
};

QTEST_MAIN(TestFindWidgets)
#include "tst_findwidgets.moc"
