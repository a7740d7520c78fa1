#include "SortEntryMatcher.h"

#include <QTest>

class tst_SortEntryMatcher final : public QObject
{
    Q_OBJECT

private slots:
    void matchesWithoutRegardToCase()
    {
        const QStringList rows{"C:/Sfx/Boom.WAV", "C:/sfx/hit.wav", "C:/sfx/zap.wav"};
        const SortEntryList entries{{"c:/sfx/zap.wav", "third"},
                                    {"C:/SFX/boom.wav", "first"},
                                    {"C:/sfx/absent.wav", "none"}};
        const SortMatchResult r = MatchSortEntries(rows, entries);
        QCOMPARE(r.order, (QVector<int>{1, -1, 0}));
        QCOMPARE(r.comments, (QStringList{"first", "", "third"}));
        QCOMPARE(r.unmatched, (SortEntryList{{"C:/sfx/absent.wav", "none"}}));
    }

    void pathListedTwiceKeepsTheLaterEntry()
    {
        const QStringList rows{"/a.wav", "/b.wav"};
        const SortEntryList entries{{"/b.wav", "early"}, {"/a.wav", "x"}, {"/B.wav", "late"}};
        const SortMatchResult r = MatchSortEntries(rows, entries);
        QCOMPARE(r.order, (QVector<int>{1, 2}));
        QCOMPARE(r.comments.at(1), QStringLiteral("late"));
        QVERIFY(r.unmatched.isEmpty());
    }

    void onlyTheFirstOfEqualRowsIsMatched()
    {
        const QStringList rows{"/x/A.wav", "/x/a.wav"};
        const SortMatchResult r = MatchSortEntries(rows, {{"/X/A.WAV", "c"}});
        QCOMPARE(r.order, (QVector<int>{0, -1}));
        QCOMPARE(r.comments, (QStringList{"c", ""}));
    }

    void nothingMatches()
    {
        const SortMatchResult r = MatchSortEntries({}, {{"a", "1"}, {"b", "2"}});
        QVERIFY(r.order.isEmpty());
        QCOMPARE(r.unmatched.size(), 2);
    }

    void marksOneRowPerUnmatchedOccurrence()
    {
        const SortEntryList entries{
            {"/a.wav", ""}, {"/b.wav", ""}, {"/a.wav", ""}, {"/A.wav", ""}, {"/c.wav", ""}};
        // Exact comparison here: "/A.wav" is a different text from "/a.wav".
        const SortEntryList unmatched{{"/a.wav", ""}, {"/c.wav", ""}};
        QCOMPARE(UnmatchedRowMarks(entries, unmatched),
                 (QVector<bool>{true, false, false, false, true}));
        const SortEntryList twice{{"/a.wav", ""}, {"/a.wav", ""}};
        QCOMPARE(UnmatchedRowMarks(entries, twice),
                 (QVector<bool>{true, false, true, false, false}));
    }
};

QTEST_GUILESS_MAIN(tst_SortEntryMatcher)
#include "tst_sortentrymatcher.moc"
