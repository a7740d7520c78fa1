// The GUI-free half of sorting by a CSV list: reading the list, finding
// each listed file under the root, and marking the rows that matched nothing.
#include "SortCsvReader.h"
#include "SortPathResolver.h"
#include "TestSettings.h"
#include "UnmatchedRowMarks.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

class tst_SortSpec final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString root;

    QString write(const QByteArray& bytes)
    {
        static int n = 0;
        const QString path = dir.filePath(QStringLiteral("list%1.csv").arg(++n));
        return fixtures::WriteBytes(path, bytes) ? path : QString();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        root = QDir(dir.path()).canonicalPath() + QStringLiteral("/root");
        for (const char* name : {"a.wav", "b.wav", "sub/c.wav", "d.aif", "d.mp3", "e.aiff", "f.mp3",
                                 "g.ogg", "h.wav", "h.aif", "My Sounds/i.wav"})
            QVERIFY(fixtures::WriteBytes(root + QLatin1Char('/') + QLatin1String(name)));
        QVERIFY(QDir(root).mkdir(QStringLiteral("folder.wav")));
    }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("pathColumn");
        QTest::addColumn<int>("commentColumn");
        QTest::addColumn<bool>("ignoreFirst");
        QTest::addColumn<QStringList>("expected"); // path, comment, path, comment...
        const auto row = [](const char* name, const QByteArray& bytes, int path, int comment,
                            bool ignoreFirst, const QStringList& expected) {
            QTest::newRow(name) << bytes << path << comment << ignoreFirst << expected;
        };
        const QByteArray two = "a.wav,first\nb,second\n";
        row("two lines", two, 1, 2, false, {"a.wav", "first", "b", "second"});
        row("first line ignored", two, 1, 2, true, {"b", "second"});
        row("columns swapped", two, 2, 1, false, {"first", "a.wav", "second", "b"});
        row("same column for both", two, 1, 1, false, {"a.wav", "a.wav", "b", "b"});
        row("no trailing newline", "a.wav,x\nb.wav,y", 1, 2, false, {"a.wav", "x", "b.wav", "y"});
        row("CRLF line ends", "a.wav,x\r\nb.wav,y\r\n", 1, 2, false, {"a.wav", "x", "b.wav", "y"});
        row("empty fields kept", "a.wav,,\nb.wav,,z\n", 1, 3, false, {"a.wav", "", "b.wav", "z"});
        row("quotes stay in the text", "\"sub/c.wav\",note\n", 1, 2, false,
            {"\"sub/c.wav\"", "note"});
        row("third of five columns", "id,name,path,x,comment\n1,n,p.wav,0,hi\n", 3, 5, true,
            {"p.wav", "hi"});
        // Everything below is discarded as a whole.
        row("quoted comma makes a ragged line", "\"x,y.wav\",c\nb.wav,d\n", 1, 2, false, {});
        row("path column 3 of 2", two, 3, 2, false, {});
        row("comment column 3 of 2", two, 1, 3, false, {});
        row("missing column on ignored header too", two, 3, 1, true, {});
        row("column zero", two, 0, 2, false, {});
        row("negative column", two, 1, -1, false, {});
        row("blank line in the middle", "a.wav,x\n\nb.wav,y\n", 1, 2, false, {});
        row("later line longer", "a.wav,x\nb.wav,y,z\n", 1, 2, false, {});
        row("empty file", "", 1, 1, false, {});
        row("header only, ignored", "path,comment\n", 1, 2, true, {});
        // A byte-order mark selects Unicode, as spreadsheets write it.
        const QString text = QStringLiteral("効果音/爆発.wav,大きい\n");
        row("UTF-8 with BOM", "\xEF\xBB\xBF" + text.toUtf8(), 1, 2, false,
            {QStringLiteral("効果音/爆発.wav"), QStringLiteral("大きい")});
        QByteArray le("\xFF\xFE", 2);
        for (const QChar c : text)
            le.append(char(c.unicode() & 0xFF)).append(char(c.unicode() >> 8));
        row("UTF-16LE with BOM", le, 1, 2, false,
            {QStringLiteral("効果音/爆発.wav"), QStringLiteral("大きい")});
    }

    void reads()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, pathColumn);
        QFETCH(int, commentColumn);
        QFETCH(bool, ignoreFirst);
        QFETCH(QStringList, expected);
        QStringList flat;
        for (const SortEntry& e : ReadSortCsv(write(bytes), pathColumn, commentColumn, ignoreFirst))
            flat << e.first << e.second;
        QCOMPARE(flat, expected);
        QVERIFY(ReadSortCsv(dir.filePath(QStringLiteral("absent.csv")), 1, 1, false).isEmpty());
    }

    void resolves_data()
    {
        QTest::addColumn<QString>("csvText");
        QTest::addColumn<QString>("expected"); // "@/" stands for the root folder
        const auto row = [](const char* name, const char* csvText, const char* expected) {
            QTest::newRow(name) << QString::fromUtf8(csvText) << QString::fromUtf8(expected);
        };
        row("relative existing", "a.wav", "@/a.wav");
        row("no suffix tries .wav", "b", "@/b.wav");
        row("quoted sub folder", "\"sub/c.wav\"", "@/sub/c.wav");
        row("quoted without suffix", "\"sub/c\"", "@/sub/c.wav");
        row(".aif before .mp3", "d", "@/d.aif");
        row(".aiff", "e", "@/e.aiff");
        row(".mp3", "f", "@/f.mp3");
        row(".wav before .aif", "h", "@/h.wav");
        row("dot segments cleaned", "sub/../a.wav", "@/a.wav");
        row("space in folder", "My Sounds/i", "@/My Sounds/i.wav");
        row("absolute existing", "@/sub/c.wav", "@/sub/c.wav");
        // Not found: the unquoted text comes back as written, not made absolute.
        row("ogg is not tried", "g", "g");
        row("missing with suffix", "zz.wav", "zz.wav");
        row("wrong suffix is not replaced", "a.aif", "a.aif");
        row("missing quoted", "\"zz\"", "zz");
        row("only one pair stripped", "\"\"a.wav\"\"", "\"a.wav\"");
        row("lone quote kept", "\"", "\"");
        row("opening quote only", "\"a.wav", "\"a.wav");
        row("two quotes give empty", "\"\"", "");
        row("a folder is not a file", "folder.wav", "folder.wav");
        row("empty", "", "");
    }

    void resolves()
    {
        QFETCH(QString, csvText);
        QFETCH(QString, expected);
        csvText.replace(QStringLiteral("@/"), root + QLatin1Char('/'));
        expected.replace(QStringLiteral("@/"), root + QLatin1Char('/'));
        QCOMPARE(ResolveSortPath(csvText, root), expected);
        // A root given with a trailing slash is the same root.
        QCOMPARE(ResolveSortPath(csvText, root + QLatin1Char('/')), expected);
    }

    void marksOneRowPerUnmatchedOccurrence()
    {
        const SortEntryList entries{
            {"/a.wav", ""}, {"/b.wav", ""}, {"/a.wav", ""}, {"/A.wav", ""}, {"/c.wav", ""}};
        // Exact comparison here: "/A.wav" is a different text from "/a.wav".
        QCOMPARE(UnmatchedRowMarks(entries, {{"/a.wav", ""}, {"/c.wav", ""}}),
                 (QVector<bool>{true, false, false, false, true}));
        QCOMPARE(UnmatchedRowMarks(entries, {{"/a.wav", ""}, {"/a.wav", ""}}),
                 (QVector<bool>{true, false, true, false, false}));
    }
};

QTEST_GUILESS_MAIN(tst_SortSpec)
#include "tst_sortspec.moc"
