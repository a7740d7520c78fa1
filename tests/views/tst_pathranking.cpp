#include "PathRanking.h"

#include <QThreadPool>
#include <QtTest>

#include <algorithm>
#include <random>

namespace {

// Ranks by plain sorting of the whole strings: the prefix that is skipped is
// shared by all, so it cannot change the order.
QVector<int> expectedRanks(const QStringList& paths)
{
    QVector<int> ranks(paths.size());
    for (int i = 0; i < paths.size(); ++i) {
        ranks[i] =
            static_cast<int>(std::count_if(paths.begin(), paths.end(), [&](const QString& p) {
                return QString::compare(p, paths[i], Qt::CaseSensitive) < 0;
            }));
    }
    return ranks;
}

QStringList shuffledLibrary(int count, unsigned seed)
{
    QStringList paths;
    for (int k = 0; k < count; ++k) {
        paths << QStringLiteral("/lib/sfx/%1/take%2.wav")
                     .arg(QLatin1String(k % 3 == 0 ? "Doors" : "doors"))
                     .arg(k);
    }
    std::mt19937 random(seed);
    std::shuffle(paths.begin(), paths.end(), random);
    return paths;
}

} // namespace

class TestPathRanking : public QObject
{
    Q_OBJECT
private slots:
    void ranksInCodePointOrder_data();
    void ranksInCodePointOrder();
    void poolThreadDeliversTheSameRanks();
    void askedEarlyWorksThemOutAtOnce();
    void clearedOrReplacedListForgetsTheOldRanks();
    void droppedWhileRunning();
};

void TestPathRanking::ranksInCodePointOrder_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<int>("skip");
    QTest::newRow("empty") << QStringList() << 0;
    QTest::newRow("one") << QStringList{QStringLiteral("/a/x.wav")} << 3;
    // Capitals before small letters, no natural numbers: take10 before take2.
    QTest::newRow("code points") << QStringList{QStringLiteral("/r/take2.wav"),
                                                QStringLiteral("/r/take10.wav"),
                                                QStringLiteral("/r/Take3.wav"),
                                                QStringLiteral("/r/sub/a.wav"),
                                                QStringLiteral("/r/sub.wav")}
                                 << 3;
    QTest::newRow("prefix of another, skip is all of the shorter")
        << QStringList{QStringLiteral("/r/ab"), QStringLiteral("/r/a"), QStringLiteral("/r/abc")}
        << 4;
    QTest::newRow("equal paths share a rank")
        << QStringList{QStringLiteral("/r/b.wav"), QStringLiteral("/r/a.wav"),
                       QStringLiteral("/r/b.wav"), QStringLiteral("/r/c.wav")}
        << 3;
    QTest::newRow("beyond the BMP and accents")
        << QStringList{QStringLiteral("/r/\u00e9t\u00e9.wav"), QStringLiteral("/r/ete.wav"),
                       QString::fromUtf8("/r/\xf0\x9f\x94\x8a.wav"), QStringLiteral("/r/z.wav")}
        << 3;
    QTest::newRow("shuffled library") << shuffledLibrary(500, 7) << 9;
}

void TestPathRanking::ranksInCodePointOrder()
{
    QFETCH(QStringList, paths);
    QFETCH(int, skip);
    QCOMPARE(PathRanking::rank(paths, skip), expectedRanks(paths));
}

void TestPathRanking::poolThreadDeliversTheSameRanks()
{
    const QStringList paths = shuffledLibrary(3000, 11);
    PathRanking ranking;
    ranking.start(paths, 9);
    QTRY_VERIFY(ranking.isReady());
    QCOMPARE(ranking.ranks(), expectedRanks(paths));
    // Taken once, kept.
    QCOMPARE(ranking.ranks(), expectedRanks(paths));
}

void TestPathRanking::askedEarlyWorksThemOutAtOnce()
{
    // Keep the pool busy so that the job cannot have run when asked.
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    QSemaphore release;
    QThreadPool::globalInstance()->start([&release] { release.acquire(); });
    const QStringList paths = shuffledLibrary(2000, 13);
    PathRanking ranking;
    ranking.start(paths, 9);
    QVERIFY(!ranking.isReady());
    QCOMPARE(ranking.ranks(), expectedRanks(paths));
    QVERIFY(ranking.isReady());
    release.release();
    QThreadPool::globalInstance()->waitForDone();
    QThreadPool::globalInstance()->setMaxThreadCount(QThread::idealThreadCount());
    QCOMPARE(ranking.ranks(), expectedRanks(paths));
}

void TestPathRanking::clearedOrReplacedListForgetsTheOldRanks()
{
    PathRanking ranking;
    ranking.start(shuffledLibrary(1000, 17), 9);
    ranking.clear();
    QVERIFY(ranking.ranks().isEmpty());
    const QStringList second{QStringLiteral("/q/b"), QStringLiteral("/q/a")};
    ranking.start(shuffledLibrary(1000, 19), 9);
    ranking.start(second, 3);
    QTRY_VERIFY(ranking.isReady());
    QCOMPARE(ranking.ranks(), (QVector<int>{1, 0}));
}

void TestPathRanking::droppedWhileRunning()
{
    // The job owns its copy of the list; dropping the ranking mid-way must
    // leave the pool thread nothing dangling (the sanitizer build checks).
    for (int k = 0; k < 5; ++k) {
        PathRanking ranking;
        ranking.start(shuffledLibrary(20000, 23 + k), 9);
    }
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(QThreadPool::globalInstance()->activeThreadCount() == 0);
}

QTEST_GUILESS_MAIN(TestPathRanking)
#include "tst_pathranking.moc"
