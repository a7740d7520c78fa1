// The detail view alone (mouse on its waveform) and in the main window, where
// it follows the table's current row and Space plays its region.
#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "MainWindow.h"
#include "MenuBar.h"
#include "TableRoles.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WaveHeaderReader.h"
#include "WidgetDetailView.h"
#include "WidgetTableBrowser.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int kRate = 48000;

QAction* ActionWithShortcut(QWidget* window, const QKeySequence& key)
{
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->shortcut() == key)
            return action;
    }
    return nullptr;
}

// A move with the left button held (QTest's own move carries no buttons).
void DragTo(QWidget* widget, const QPoint& at)
{
    QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}

std::int32_t RegionFrames(const QString& path)
{
    WaveHeaderHandle* h = OpenWaveHeader(QFile::encodeName(path).constData());
    const std::int32_t frames = h ? GetWaveSamples(h) : -1;
    CloseWaveHeader(h);
    return frames;
}

} // namespace

class TestDetailView : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;
    QString wav_;

private slots:
    void initTestCase()
    {
        QVERIFY(dir_.isValid());
        // Region files go to the temporary location: this test's own folder.
        QVERIFY(QDir().mkpath(dir_.filePath(QStringLiteral("tmp"))));
        qputenv("TMPDIR", QFile::encodeName(dir_.filePath(QStringLiteral("tmp"))));
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, dir_.filePath("config"));
        wav_ = dir_.filePath(QStringLiteral("take.wav"));
        QVERIFY(fixtures::writeSineWav(wav_, kRate, 2, kRate * 4, 0.5, 220.0));
    }

    // A drag across the waveform selects a region, whose WAV is written at
    // once; a click plays from where it lands and drops the region.
    void mouseSelectsARegionAndClicksPlay()
    {
        WidgetDetailView view;
        view.resize(800, 150);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.SetFile(wav_);
        QTRY_VERIFY(view.Overview() != nullptr);
        QCOMPARE(view.Overview()->frames, std::int64_t(kRate * 4));

        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(200, 75));
        for (const int x : {260, 400})
            DragTo(&view, QPoint(x, 75));
        QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(400, 75));
        QVERIFY(view.HasRegion());
        QCOMPARE(view.RegionStart(), view.FrameAt(200));
        QCOMPARE(view.RegionEnd(), view.FrameAt(400));
        QCOMPARE(view.RegionEnd() - view.RegionStart(), std::int64_t(kRate)); // a quarter of 4 s
        QTRY_VERIFY(!view.RegionFile().isEmpty());
        QVERIFY2(view.RegionFile().startsWith(dir_.path()), qPrintable(view.RegionFile()));
        QCOMPARE(RegionFrames(view.RegionFile()), std::int32_t(kRate));

        QSignalSpy region(&view, &WidgetDetailView::SigPlayRegion);
        QVERIFY(view.PlayRegion());
        QCOMPARE(region.count(), 1);
        QCOMPARE(region.first().at(1).toLongLong(), qint64(view.RegionStart()));
        QCOMPARE(region.first().at(2).toLongLong(), qint64(view.RegionEnd()));

        QSignalSpy from(&view, &WidgetDetailView::SigPlayFrom);
        QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(600, 75));
        QCOMPARE(from.count(), 1);
        QCOMPARE(from.first().at(0).toString(), wav_);
        QCOMPARE(from.first().at(1).toInt(), 3000); // three quarters of 4 s
        QVERIFY(!view.HasRegion() && !view.PlayRegion());
    }

    // In the window: the view shows the current row's file, Space plays its
    // region once (the position runs from the region's start, past the loop
    // folding), and the View menu hides it.
    void windowPlaysTheRegionOnSpace()
    {
        QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("hit.wav"));
        QVERIFY(fixtures::writeSineWav(file, kRate, 1, kRate * 3, 0.5, 330.0));
        MainWindow window;
        window.resize(1024, 700);
        window.show();
        TeskManager* manager = window.GetManager();
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        manager->SlotChangeRootPathCalled(folder.path());
        QVERIFY(end.wait(30000));
        manager->SlotChangeAutoPlaybackFlagCalled(false);
        WidgetTableBrowser* browser = window.GetTableBrowser();
        QTRY_COMPARE(browser->sortModel()->rowCount(), 1);
        browser->tableView()->setCurrentIndex(browser->sortModel()->index(0, 0));
        WidgetDetailView* view = window.GetDetailView();
        QCOMPARE(view->File(), file);
        QTRY_VERIFY(view->Overview() != nullptr);

        view->SetRegion(kRate, kRate * 2);
        QAction* space = ActionWithShortcut(&window, QKeySequence(Qt::Key_Space));
        QVERIFY(space);
        space->trigger();
        KrokManager* registry = manager->GetKrokManager();
        QCOMPARE(registry->GetPlayingPath(), file);
        QTRY_VERIFY(registry->IsPlaying());
        const std::int64_t at = registry->GetPlaybackPosition();
        QVERIFY2(at >= kRate && at < kRate * 2, qPrintable(QString::number(at)));
        QTRY_VERIFY_WITH_TIMEOUT(!registry->IsPlaying(), 3000); // one second, then the end
        QTRY_VERIFY(view->ShownPosition() < 0);

        window.GetMenuBar()->detailViewAction()->trigger();
        QVERIFY(!manager->IsDetailViewVisible() && view->isHidden());
        // With the view hidden, Space plays the row from its start.
        space->trigger();
        QTRY_VERIFY(registry->IsPlaying());
        QVERIFY(registry->GetPlaybackPosition() < kRate);
        manager->SlotStopPlaybackCalled();
    }
};

QTEST_MAIN(TestDetailView)
#include "tst_detailview.moc"
