#include "SortCsvReader.h"
#include "TestSettings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_SortCsvReader final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString write(const QByteArray& bytes)
    {
        static int n = 0;
        const QString path = dir.filePath(QStringLiteral("list%1.csv").arg(++n));
        return fixtures::WriteBytes(path, bytes) ? path : QString();
    }

private slots:
    void reads_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("pathColumn");
        QTest::addColumn<int>("commentColumn");
        QTest::addColumn<bool>("ignoreFirst");
        QTest::addColumn<QStringList>("expected"); // path, comment, path, comment...

        const QByteArray two = "a.wav,first\nb,second\n";
        QTest::newRow("two lines")
            << two << 1 << 2 << false << QStringList{"a.wav", "first", "b", "second"};
        QTest::newRow("first line ignored") << two << 1 << 2 << true << QStringList{"b", "second"};
        QTest::newRow("columns swapped")
            << two << 2 << 1 << false << QStringList{"first", "a.wav", "second", "b"};
        QTest::newRow("same column for both")
            << two << 1 << 1 << false << QStringList{"a.wav", "a.wav", "b", "b"};
        QTest::newRow("no trailing newline") << QByteArray("a.wav,x\nb.wav,y") << 1 << 2 << false
                                             << QStringList{"a.wav", "x", "b.wav", "y"};
        QTest::newRow("CRLF line ends") << QByteArray("a.wav,x\r\nb.wav,y\r\n") << 1 << 2 << false
                                        << QStringList{"a.wav", "x", "b.wav", "y"};
        QTest::newRow("empty fields kept") << QByteArray("a.wav,,\nb.wav,,z\n") << 1 << 3 << false
                                           << QStringList{"a.wav", "", "b.wav", "z"};
        QTest::newRow("quotes stay in the text") << QByteArray("\"sub/c.wav\",note\n") << 1 << 2
                                                 << false << QStringList{"\"sub/c.wav\"", "note"};
        QTest::newRow("third of five columns")
            << QByteArray("id,name,path,x,comment\n1,n,p.wav,0,hi\n") << 3 << 5 << true
            << QStringList{"p.wav", "hi"};

        // Everything below is discarded as a whole.
        QTest::newRow("quoted comma makes a ragged line")
            << QByteArray("\"x,y.wav\",c\nb.wav,d\n") << 1 << 2 << false << QStringList{};
        QTest::newRow("path column 3 of 2") << two << 3 << 2 << false << QStringList{};
        QTest::newRow("comment column 3 of 2") << two << 1 << 3 << false << QStringList{};
        QTest::newRow("missing column on ignored header too")
            << two << 3 << 1 << true << QStringList{};
        QTest::newRow("column zero") << two << 0 << 2 << false << QStringList{};
        QTest::newRow("negative column") << two << 1 << -1 << false << QStringList{};
        QTest::newRow("blank line in the middle")
            << QByteArray("a.wav,x\n\nb.wav,y\n") << 1 << 2 << false << QStringList{};
        QTest::newRow("later line longer")
            << QByteArray("a.wav,x\nb.wav,y,z\n") << 1 << 2 << false << QStringList{};
        QTest::newRow("empty file") << QByteArray() << 1 << 1 << false << QStringList{};
        QTest::newRow("header only, ignored")
            << QByteArray("path,comment\n") << 1 << 2 << true << QStringList{};
    }

    void reads()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, pathColumn);
        QFETCH(int, commentColumn);
        QFETCH(bool, ignoreFirst);
        QFETCH(QStringList, expected);

        const SortEntryList entries =
            ReadSortCsv(write(bytes), pathColumn, commentColumn, ignoreFirst);
        QStringList flat;
        for (const SortEntry& e : entries)
            flat << e.first << e.second;
        QCOMPARE(flat, expected);
    }

    void byteOrderMarkSelectsUnicode_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QString text = QStringLiteral("効果音/爆発.wav,大きい\nb.wav,小さい\n");
        QTest::newRow("UTF-8") << QByteArray("\xEF\xBB\xBF") + text.toUtf8();
        QByteArray le("\xFF\xFE", 2);
        for (const QChar c : text) {
            le.append(char(c.unicode() & 0xFF));
            le.append(char(c.unicode() >> 8));
        }
        QTest::newRow("UTF-16LE") << le;
    }

    void byteOrderMarkSelectsUnicode()
    {
        QFETCH(QByteArray, bytes);
        const SortEntryList entries = ReadSortCsv(write(bytes), 1, 2, false);
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries.at(0).first, QStringLiteral("効果音/爆発.wav"));
        QCOMPARE(entries.at(0).second, QStringLiteral("大きい"));
        QCOMPARE(entries.at(1).second, QStringLiteral("小さい"));
    }

    void missingFileGivesNothing()
    {
        QVERIFY(ReadSortCsv(dir.filePath(QStringLiteral("absent.csv")), 1, 1, false).isEmpty());
    }

    void manyLines()
    {
        QByteArray bytes = "path,comment\n";
        for (int i = 0; i < 20000; ++i)
            bytes += "s" + QByteArray::number(i) + ".wav,c" + QByteArray::number(i) + "\n";
        const SortEntryList entries = ReadSortCsv(write(bytes), 1, 2, true);
        QCOMPARE(entries.size(), 20000);
        QCOMPARE(entries.last(), SortEntry(QStringLiteral("s19999.wav"), QStringLiteral("c19999")));
    }
};

QTEST_GUILESS_MAIN(tst_SortCsvReader)
#include "tst_sortcsvreader.moc"
