#include "UnmatchedRowMarks.h"

#include <QTest>

class tst_UnmatchedRowMarks final : public QObject
{
    Q_OBJECT

private slots:
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

QTEST_GUILESS_MAIN(tst_UnmatchedRowMarks)
#include "tst_unmatchedrowmarks.moc"
