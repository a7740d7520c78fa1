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
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QGroupBox>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace {

QMimeData* urlsOf(const QString& path)
{
    auto* mime = new QMimeData;
    mime->setUrls({QUrl::fromLocalFile(path)});
    return mime;
}

using fixtures::SpiedTexts;

int countOf(const QSignalSpy& spy, const QString& text)
{
    int n = 0;
    for (const QList<QVariant>& args : spy)
        n += args.at(0).toString() == text ? 1 : 0;
    return n;
}

} // namespace

class TestFindWidgets : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    fixtures::TestSettings config;

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        QVERIFY(config.isValid());
    }

    void pathLineMovesTreeWithoutSecondAcquisition()
    {
        const QString folder = dir.filePath(QStringLiteral("lib/ambience"));
        QVERIFY(QDir().mkpath(folder));
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
        QCOMPARE(countOf(status, QStringLiteral("Retrieving file list")), 1);
        QCOMPARE(countOf(status, QStringLiteral("Cancel file list acquisition")), 0);
        QCOMPARE(countOf(status, QStringLiteral("Cancel to acquire analyzed data")), 0);
        QCOMPARE(manager.GetRootPath(), folder);
        QVERIFY(bar.refreshButton()->isEnabled());

        // A later, different root is still taken.
        const QString other = dir.filePath(QStringLiteral("lib"));
        tree.treeView()->setCurrentIndex(tree.treeModel()->index(other));
        QCOMPARE(manager.GetRootPath(), other);
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 2, 20000);
        QCOMPARE(countOf(status, QStringLiteral("Retrieving file list")), 2);
    }

    void rootBarEntry_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("root");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("message");
        // Paths relative to the sandbox, which is the working and the home folder.
        QTest::newRow("trailing slash") << "bar/sfx/"
                                        << "bar/sfx"
                                        << ""
                                        << "";
        QTest::newRow("dot") << "."
                             << ""
                             << ""
                             << "";
        QTest::newRow("dots inside") << "./bar/../bar/sfx/."
                                     << "bar/sfx"
                                     << ""
                                     << "";
        QTest::newRow("tilde") << "~/bar"
                               << "bar"
                               << ""
                               << "";
        QTest::newRow("audio file") << "bar/sfx/Hit 2.WAV"
                                    << "bar/sfx"
                                    << "bar/sfx/Hit 2.WAV"
                                    << "";
        QTest::newRow("missing folder") << "bar/gone/"
                                        << "-"
                                        << ""
                                        << "The folder \"%1/bar/gone\" does not exist.";
        QTest::newRow("other file") << "bar/notes.txt"
                                    << "-"
                                    << ""
                                    << "\"bar/notes.txt\" is neither a folder nor a WAV, AIFF, "
                                       "MP3, Ogg Vorbis or FLAC file.";
    }

    void rootBarEntry()
    {
        QFETCH(QString, typed);
        QFETCH(QString, root);
        QFETCH(QString, selected);
        QFETCH(QString, message);
        const QString base = QDir(dir.path()).canonicalPath();
        const QString sfx = base + QStringLiteral("/bar/sfx");
        QVERIFY(QDir().mkpath(sfx));
        QVERIFY(fixtures::writeSineWav(sfx + QStringLiteral("/Hit 2.WAV"), 8000, 1, 800, 0.0));
        QVERIFY(fixtures::WriteBytes(base + QStringLiteral("/bar/notes.txt")));
        const QByteArray home = qgetenv("HOME");
        const QString previousDir = QDir::currentPath();
        qputenv("HOME", QFile::encodeName(base));
        QDir::setCurrent(base);

        TeskManager manager;
        WidgetRootPath bar;
        bar.SetManager(&manager);
        // The folder listed before: a refused entry puts it back.
        manager.SlotChangeRootPathCalled(sfx + QStringLiteral("/"));
        QCOMPARE(manager.GetRootPath(), sfx);
        QSignalSpy messages(&bar, &WidgetRootPath::SigStatusMessage);
        QSignalSpy selections(&manager, &TeskManager::SigFileSelectionRequested);
        bar.pathLine()->setText(typed);
        QTest::keyClick(bar.pathLine(), Qt::Key_Return);
        QDir::setCurrent(previousDir);
        qputenv("HOME", home);

        const QString expected = root == QLatin1String("-")
                                     ? sfx
                                     : (root.isEmpty() ? base : base + QLatin1Char('/') + root);
        QCOMPARE(manager.GetRootPath(), expected);
        QCOMPARE(bar.pathLine()->text(), expected);
        QCOMPARE(SpiedTexts(messages),
                 message.isEmpty() ? QStringList() : QStringList{message.arg(base)});
        // Recent folders hold each folder once, in one spelling.
        QCOMPARE(manager.GetRecentFolders().count(sfx), 1);
        if (!selected.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(selections.count(), 1, 20000);
            QCOMPARE(selections.at(0).at(0).toString(), base + QLatin1Char('/') + selected);
        }
    }

    void dragAcceptance_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("opus refused") << QStringLiteral("drag/a.opus") << false;
        QTest::newRow("FLAC in capitals") << QStringLiteral("drag/c.FLAC") << true;
        QTest::newRow("WAV in capitals") << QStringLiteral("drag/X.WAV") << true;
        QTest::newRow("aiff") << QStringLiteral("drag/b.aiff") << true;
        QTest::newRow("text file") << QStringLiteral("drag/notes.txt") << false;
        QTest::newRow("missing wav") << QStringLiteral("drag/gone.wav") << false;
        QTest::newRow("folder") << QStringLiteral("drag") << true;
    }

    void dragAcceptance()
    {
        QFETCH(QString, name);
        QFETCH(bool, accepted);
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("drag"))));
        for (const char* file :
             {"drag/a.opus", "drag/X.WAV", "drag/b.aiff", "drag/c.FLAC", "drag/notes.txt"})
            QVERIFY(fixtures::WriteBytes(dir.filePath(QLatin1String(file))));
        const QString path = dir.filePath(name);

        WidgetRootPath bar;
        std::unique_ptr<QMimeData> mime(urlsOf(path));
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction | Qt::LinkAction, mime.get(),
                              Qt::LeftButton, Qt::NoModifier);
        enter.setAccepted(false);
        QApplication::sendEvent(&bar, &enter);
        QCOMPARE(enter.isAccepted(), accepted);
        if (!accepted)
            return;
        QCOMPARE(enter.dropAction(), Qt::LinkAction);

        QSignalSpy asks(&bar, &WidgetRootPath::SigChangeRootPathCalled);
        QDropEvent drop(QPointF(5, 5), Qt::CopyAction | Qt::LinkAction, mime.get(), Qt::LeftButton,
                        Qt::NoModifier);
        QApplication::sendEvent(&bar, &drop);
        // A file goes as it is: its folder is listed with the file selected.
        QCOMPARE(asks.count(), 1);
        QCOMPARE(asks.at(0).at(0).toString(), path);
        QCOMPARE(drop.dropAction(), Qt::IgnoreAction);
    }

    void starReflectsWithoutEmitting()
    {
        WidgetRootPath bar;
        QSignalSpy flag(&bar, &WidgetRootPath::SigBookmarkFlagChangeRequired);
        bar.SlotRootPathChanged(QString());
        QVERIFY(!bar.starButton()->isEnabled());
        bar.SlotRootPathChanged(dir.path());
        QVERIFY(bar.starButton()->isEnabled());
        QVERIFY(!bar.refreshButton()->isEnabled());
        QCOMPARE(bar.pathLine()->text(), dir.path());

        // Filled (gold) exactly when the folder is bookmarked.
        const auto goldPixels = [&bar] {
            const QImage image = bar.starButton()->grab().toImage();
            int gold = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const QColor c = image.pixelColor(x, y);
                    gold += c.red() > 200 && c.green() > 140 && c.blue() < 100 ? 1 : 0;
                }
            }
            return gold;
        };
        bar.SlotBookmarkStateSpecified(true);
        QVERIFY(bar.starButton()->isChecked());
        QVERIFY(goldPixels() > 40);
        QCOMPARE(bar.starButton()->toolTip(), QStringLiteral("Remove from Bookmarks"));
        bar.SlotBookmarkStateSpecified(false);
        QVERIFY(!bar.starButton()->isChecked());
        QCOMPARE(goldPixels(), 0);
        QCOMPARE(bar.starButton()->toolTip(), QStringLiteral("Add to Bookmarks"));
        QCOMPARE(flag.count(), 0);

        bar.starButton()->click();
        QCOMPARE(flag.count(), 1);
        QCOMPARE(flag.at(0).at(0).toBool(), true);
        bar.SlotUpdateEnabled();
        QVERIFY(bar.refreshButton()->isEnabled());
    }

    void treeFiltersAndKeys()
    {
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("tree/.hidden"))));
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("tree/shown"))));
        WidgetTreeBrowser tree(nullptr);
        TreeViewItemModel* model = tree.treeModel();
        QCOMPARE(int(model->filter()), 25601);
        tree.SlotShowHiddenFolderFlagChanged(true);
        QCOMPARE(int(model->filter()), 25601 | 0x100);
        tree.SlotShowHiddenFolderFlagChanged(false);
        QCOMPARE(int(model->filter()), 25601);

        // Only the name column shows, and the rows follow the font's line height.
        for (int c = 1; c < model->columnCount(); ++c)
            QVERIFY(tree.treeView()->isColumnHidden(c));
        const QModelIndex index = model->index(dir.filePath(QStringLiteral("tree/shown")));
        QVERIFY(index.isValid());
        QCOMPARE(index.data(Qt::SizeHintRole).toSize().height(),
                 QFontMetrics(model->treeFont()).height());

        // A root chosen elsewhere becomes the current item and asks once.
        QSignalSpy asks(&tree, &WidgetTreeBrowser::SigChangeRootPathCalled);
        tree.SlotRootPathChanged(dir.filePath(QStringLiteral("tree/shown")));
        QCOMPARE(asks.count(), 1);
        tree.SlotRootPathChanged(dir.filePath(QStringLiteral("tree/shown")));
        QCOMPARE(asks.count(), 1);
        tree.SlotRootPathChanged(dir.filePath(QStringLiteral("tree/missing")));
        QCOMPARE(asks.count(), 1);

        QSignalSpy explorer(&tree, &WidgetTreeBrowser::SigShowInExplorer);
        tree.treeView()->showInExplorerAction()->trigger();
        QCOMPARE(explorer.count(), 1);
        QCOMPARE(explorer.at(0).at(0).toString(), dir.filePath(QStringLiteral("tree/shown")));

        SubWidgetTreeView* view = tree.treeView();
        QSignalSpy esc(view, &SubWidgetTreeView::SigPressEscKey);
        QSignalSpy altUp(view, &SubWidgetTreeView::SigPressAltUpKey);
        QSignalSpy altDown(view, &SubWidgetTreeView::SigPressAltDownKey);
        QTest::keyClick(view, Qt::Key_Escape);
        QTest::keyClick(view, Qt::Key_Period);
        QTest::keyClick(view, Qt::Key_Up, Qt::AltModifier);
        QTest::keyClick(view, Qt::Key_Up, Qt::AltModifier | Qt::ShiftModifier);
        QTest::keyClick(view, Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(esc.count(), 2);
        QCOMPARE(altUp.count(), 1);
        QCOMPARE(altDown.count(), 1);
    }

    void treeShowsTheRootWhileItsAncestorsLoad()
    {
        // Two hundred folders beside the root's parent: as they load, they are
        // inserted above it and would push it out of sight.
        QTemporaryDir deep;
        QVERIFY(deep.isValid());
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
        const QModelIndex parent = model->index(deep.path());
        QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(parent), 200, 20000);
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

    void searchBarReportsChangesOnly()
    {
        WidgetSearch search;
        SearchCriteriaStruct stored;
        connect(&search, &WidgetSearch::SigSearchCriteriaRequired, this,
                [&stored](SearchCriteriaStruct* c) { *c = stored; });
        QSignalSpy applied(&search, &WidgetSearch::SigSearchCriteriaApplied);
        connect(&search, &WidgetSearch::SigSearchCriteriaApplied, this,
                [&stored](SearchCriteriaStruct c, bool) { stored = c; });

        search.searchLine()->setText(QStringLiteral("foley"));
        QTest::keyClick(search.searchLine(), Qt::Key_Return);
        QCOMPARE(applied.count(), 1);
        QCOMPARE(applied.at(0).at(0).value<SearchCriteriaStruct>().name, QStringLiteral("foley"));
        QCOMPARE(applied.at(0).at(1).toBool(), true);
        search.searchButton()->click();
        QCOMPARE(applied.count(), 1);

        search.useDetailAction()->trigger();
        QCOMPARE(applied.count(), 2);
        QVERIFY(applied.at(1).at(0).value<SearchCriteriaStruct>().useDetail);

        search.searchLine()->setText(QStringLiteral("rain"));
        search.SlotDisableSearchWidget();
        QVERIFY(!search.searchLine()->isEnabled());
        QVERIFY(!search.searchButton()->isEnabled());
        QCOMPARE(applied.count(), 3);
        QCOMPARE(applied.at(2).at(1).toBool(), false);
        search.SlotEnableSearchWidget();
        QVERIFY(search.searchLine()->isEnabled());
    }

    void typingFiltersAfterAPauseAndClearingAtOnce()
    {
        WidgetSearch search;
        SearchCriteriaStruct stored;
        connect(&search, &WidgetSearch::SigSearchCriteriaRequired, this,
                [&stored](SearchCriteriaStruct* c) { *c = stored; });
        connect(&search, &WidgetSearch::SigSearchCriteriaApplied, this,
                [&stored](SearchCriteriaStruct c, bool) { stored = c; });
        QSignalSpy applied(&search, &WidgetSearch::SigSearchCriteriaApplied);

        // Each key restarts the pause; only the whole word is applied.
        QTest::keyClicks(search.searchLine(), QStringLiteral("door"));
        QCOMPARE(applied.count(), 0);
        QVERIFY(search.typingTimer()->isActive());
        QTRY_COMPARE(applied.count(), 1);
        QCOMPARE(stored.name, QStringLiteral("door"));

        // The clear button shows every file again without waiting.
        QToolButton* clear = nullptr;
        for (QToolButton* button : search.searchLine()->findChildren<QToolButton*>()) {
            if (button->defaultAction() &&
                button->defaultAction()->objectName() == QLatin1String("_q_qlineeditclearaction"))
                clear = button;
        }
        QVERIFY(clear);
        clear->click();
        QCOMPARE(applied.count(), 2);
        QCOMPARE(stored.name, QString());
        QVERIFY(!search.typingTimer()->isActive());

        // So does deleting the text by hand.
        QTest::keyClicks(search.searchLine(), QStringLiteral("ab"));
        QTest::keyClick(search.searchLine(), Qt::Key_Backspace);
        QTest::keyClick(search.searchLine(), Qt::Key_Backspace);
        QCOMPARE(applied.count(), 2); // "ab" never got through: the name was already empty
        QVERIFY(!search.typingTimer()->isActive());
        QTest::qWait(WidgetSearch::kTypingPauseMs * 2);
        QCOMPARE(applied.count(), 2);
    }

    void advancedDialogAssemblesRecord()
    {
        WidgetSearch search;
        SearchCriteriaStruct stored;
        stored.timeMs = 61234;
        stored.rateMode = SearchCriteriaStruct::Equal;
        connect(&search, &WidgetSearch::SigSearchCriteriaRequired, this,
                [&stored](SearchCriteriaStruct* c) { *c = stored; });
        QSignalSpy applied(&search, &WidgetSearch::SigSearchCriteriaApplied);

        bool seen = false;
        QTimer::singleShot(0, this, [&seen] {
            auto* form = qobject_cast<subFormSearch*>(QApplication::activeModalWidget());
            if (!form)
                return;
            seen = true;
            // The dialog starts from the stored record.
            if (form->minutesSpin()->value() != 1 || form->secondsSpin()->value() != 1 ||
                form->millisecondsSpin()->value() != 234 ||
                form->rateModeChoice()->currentIndex() != 2)
                seen = false;
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
        const auto c = applied.at(0).at(0).value<SearchCriteriaStruct>();
        QCOMPARE(c.name, QStringLiteral("door"));
        QVERIFY(c.useDetail);
        QCOMPARE(c.formatMask, std::uint32_t(0x10000001));
        QVERIFY(c.useTime);
        QCOMPARE(c.timeMs, 123045);
        QCOMPARE(c.timeMode, 1);
        QVERIFY(c.useChannels);
        QCOMPARE(c.channels, 64);
        QVERIFY(!c.useRate);
        QCOMPARE(search.searchLine()->text(), QStringLiteral("door"));
        QVERIFY(search.useDetailAction()->isChecked());

        // Cancel changes nothing.
        QTimer::singleShot(0, this, [] {
            if (auto* form = qobject_cast<subFormSearch*>(QApplication::activeModalWidget()))
                form->reject();
        });
        search.openDetailAction()->trigger();
        QCOMPARE(applied.count(), 1);
    }
};

QTEST_MAIN(TestFindWidgets)
#include "tst_findwidgets.moc"
