#include "PathRanking.h"

#include <QThreadPool>
#include <QtTest>

#include <algorithm>
#include <random>

namespace {

// Paths whose take numbers say the order: the folders differ only in case, so
// take k sits at place k whatever the spelling of its folder.
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

QVector<int> expectedRanks(const QStringList& library)
{
    QVector<int> ranks;
    for (const QString& path : library) {
        const int start = path.lastIndexOf(QLatin1String("take")) + 4;
        ranks << path.midRef(start, path.size() - start - 4).toInt();
    }
    return ranks;
}

} // namespace

class TestPathRanking : public QObject
{
    Q_OBJECT
private slots:
    void ranksInNaturalOrder_data();
    void ranksInNaturalOrder();
    void sharedFolderEndsAtASlash_data();
    void sharedFolderEndsAtASlash();
    void askedEarlyWorksThemOutAtOnce();
    void poolRanksOnlyTheLatestList();
};

void TestPathRanking::ranksInNaturalOrder_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<int>("skip");
    QTest::addColumn<QVector<int>>("ranks");
    QTest::newRow("empty") << QStringList() << 0 << QVector<int>();
    QTest::newRow("one") << QStringList{"/a/x.wav"} << 3 << QVector<int>{0};
    // Numbers by value, capitals beside small letters.
    QTest::newRow("natural, case ignored")
        << QStringList{"/r/take2.wav", "/r/take10.wav", "/r/Take3.wav", "/r/TAKE1.wav"} << 3
        << QVector<int>{1, 3, 2, 0};
    // A folder's files stay together before longer names that share its start.
    QTest::newRow("folder parts") << QStringList{"/r/take 2/a.wav", "/r/take/x.wav", "/r/take2.wav",
                                                 "/r/take/a.wav", "/r/take_b/a.wav"}
                                  << 3 << QVector<int>{2, 1, 4, 0, 3};
    QTest::newRow("prefix of another, skip is all of the shorter")
        << QStringList{"/r/ab", "/r/a", "/r/abc"} << 4 << QVector<int>{1, 0, 2};
    QTest::newRow("equal paths share a rank")
        << QStringList{"/r/b.wav", "/r/a.wav", "/r/b.wav", "/r/c.wav"} << 3
        << QVector<int>{1, 0, 1, 3};
    // Spellings that differ only in case collate alike but keep distinct ranks.
    QTest::newRow("case alone decides last")
        << QStringList{"/r/a.wav", "/r/A.wav"} << 3 << QVector<int>{1, 0};
    QTest::newRow("shuffled library")
        << shuffledLibrary(500, 7) << 9 << expectedRanks(shuffledLibrary(500, 7));
}

void TestPathRanking::ranksInNaturalOrder()
{
    QFETCH(QStringList, paths);
    QFETCH(int, skip);
    QFETCH(QVector<int>, ranks);
    QCOMPARE(PathRanking::rank(paths, skip), ranks);
}

void TestPathRanking::sharedFolderEndsAtASlash_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<int>("length");
    QTest::addColumn<QVector<int>>("ranks");
    QTest::newRow("nothing shared") << QStringList{"a/x", "b/x"} << 0 << QVector<int>{0, 1};
    // The names share "x1"; skipping it would put 9 (of x19) after 000 (of x1000).
    QTest::newRow("names start alike")
        << QStringList{"/r/x19.wav", "/r/x1000.wav"} << 3 << QVector<int>{0, 1};
}

void TestPathRanking::sharedFolderEndsAtASlash()
{
    QFETCH(QStringList, paths);
    QFETCH(int, length);
    QFETCH(QVector<int>, ranks);
    QCOMPARE(PathRanking::sharedFolderLength(paths), length);
    QCOMPARE(PathRanking::rank(paths, length), ranks);
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
    release.release();
    QThreadPool::globalInstance()->waitForDone();
    QThreadPool::globalInstance()->setMaxThreadCount(QThread::idealThreadCount());
    QCOMPARE(ranking.ranks(), expectedRanks(paths));
}

void TestPathRanking::poolRanksOnlyTheLatestList()
{
    PathRanking ranking;
    ranking.start(shuffledLibrary(1000, 17), 9);
    ranking.clear();
    QVERIFY(ranking.ranks().isEmpty());
    const QStringList paths = shuffledLibrary(3000, 11);
    ranking.start(shuffledLibrary(1000, 19), 9);
    ranking.start(paths, 9);
    QTRY_VERIFY(ranking.isReady());
    QCOMPARE(ranking.ranks(), expectedRanks(paths));
    // Dropped mid-way, the job owns its copy of the list (the sanitizer build checks).
    for (int k = 0; k < 3; ++k)
        PathRanking().start(shuffledLibrary(20000, 23 + k), 9);
    QThreadPool::globalInstance()->waitForDone();
}

QTEST_GUILESS_MAIN(TestPathRanking)
#include "tst_pathranking.moc"
