#include "TestSettings.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace {

QString Fixture(const char* name)
{
    return QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name);
}

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run Scan(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(TESK_SCAN_PATH), arguments);
    Run run;
    if (!process.waitForFinished(120000))
        return run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// RFC 4180 reader, enough for the scanner's output.
QList<QStringList> ParseCsv(const QString& text)
{
    QList<QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted) {
            if (c == QLatin1Char('"') && i + 1 < text.size() &&
                text.at(i + 1) == QLatin1Char('"')) {
                field += c;
                ++i;
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                field += c;
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == QLatin1Char(',')) {
            row << field;
            field.clear();
        } else if (c == QLatin1Char('\n')) {
            row << field;
            rows << row;
            row.clear();
            field.clear();
        } else {
            field += c;
        }
    }
    return rows;
}

QStringList RowFor(const QList<QStringList>& rows, const QString& fileName)
{
    for (const QStringList& row : rows)
        if (!row.isEmpty() && row.first() == fileName)
            return row;
    return {};
}

} // namespace

class TestTeskScan final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        QVERIFY(QFile::copy(Fixture("cbr128.mp3"), dir.filePath(QStringLiteral("a-tones.mp3"))));
        QVERIFY(QFile::copy(Fixture("tones-stereo.wav"),
                            dir.filePath(QStringLiteral("c, \"quoted\".wav"))));
        // Not MP3 data, sorted between the others.
        QVERIFY(fixtures::WriteBytes(dir.filePath(QStringLiteral("b-broken.mp3")),
                                     "These are liner notes, not audio.\n"));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("sub")));
        QVERIFY(QFile::copy(Fixture("tones-mono.ogg"), dir.filePath(QStringLiteral("sub/d.ogg"))));
        QVERIFY(
            QFile::copy(Fixture("tones-mono.wav"), dir.filePath(QStringLiteral(".e-hidden.wav"))));
        QVERIFY(fixtures::WriteBytes(dir.filePath(QStringLiteral("notes.txt"))));
    }

    void csvHeaderAndRows()
    {
        const Run run = Scan({dir.path()});
        QCOMPARE(run.exitCode, 0);
        const QList<QStringList> rows = ParseCsv(QString::fromUtf8(run.out));
        QVERIFY(!rows.isEmpty());
        QCOMPARE(rows.first(),
                 (QStringList{"File", "Full Path", "Size", "Modify Time", "Format", "Sampling Rate",
                              "Channels", "Samples", "BIT", "Duration", "Plots", "Loudness",
                              "Loops", "Sort Specification", "Sort Comments"}));
        QCOMPARE(rows.size(), 1 + 3); // two audio files and the broken one
        for (const QStringList& row : rows)
            QCOMPARE(row.size(), 15);

        const QStringList mp3 = RowFor(rows, QStringLiteral("a-tones.mp3"));
        QCOMPARE(mp3.value(1), QDir(dir.path()).absoluteFilePath(QStringLiteral("a-tones.mp3")));
        const qint64 size = QFileInfo(mp3.value(1)).size();
        QCOMPARE(mp3.value(2), QStringLiteral("%1 KB").arg(size / 1024.0, 0, 'f', 2));
        QVERIFY(
            QDateTime::fromString(mp3.value(3), QStringLiteral("yyyy/MM/dd HH:mm:ss")).isValid());
        QCOMPARE(mp3.mid(4, 6), (QStringList{"MP3", "44100", "2", "220500", "128", "0:05.000"}));
        QCOMPARE(mp3.mid(10), (QStringList{"", "---", "0", "", ""}));

        // The comma and quotes in the name survive the quoting.
        const QStringList wav = RowFor(rows, QStringLiteral("c, \"quoted\".wav"));
        QCOMPARE(wav.value(4), QStringLiteral("wav"));
        QCOMPARE(wav.value(8), QStringLiteral("16"));

        // The broken file is reported and does not stop the scan.
        const QStringList broken = RowFor(rows, QStringLiteral("b-broken.mp3"));
        QCOMPARE(broken.value(4), QStringLiteral("ERROR"));
    }

    void loudnessColumn()
    {
        const Run run = Scan({QStringLiteral("--loudness"), dir.path()});
        QCOMPARE(run.exitCode, 0);
        const QList<QStringList> rows = ParseCsv(QString::fromUtf8(run.out));
        bool ok = false;
        const double lufs = RowFor(rows, QStringLiteral("a-tones.mp3")).value(11).toDouble(&ok);
        QVERIFY(ok);
        QVERIFY(lufs > -40 && lufs < -10);
        // A failed row shows no values, loudness included.
        QCOMPARE(RowFor(rows, QStringLiteral("b-broken.mp3")).value(11), QString());
    }

    void listingOptions()
    {
        const Run recursive = Scan({QStringLiteral("--recursive"), dir.path()});
        QCOMPARE(recursive.exitCode, 0);
        QList<QStringList> rows = ParseCsv(QString::fromUtf8(recursive.out));
        QCOMPARE(rows.size(), 1 + 4);
        const QStringList ogg = RowFor(rows, QStringLiteral("d.ogg"));
        QCOMPARE(ogg.value(4), QStringLiteral("Vorbis"));
        QCOMPARE(ogg.value(6), QStringLiteral("1"));

        const Run hidden = Scan({QStringLiteral("--hidden"), dir.path()});
        rows = ParseCsv(QString::fromUtf8(hidden.out));
        QCOMPARE(rows.size(), 1 + 4);
        QVERIFY(!RowFor(rows, QStringLiteral(".e-hidden.wav")).isEmpty());
        QVERIFY(RowFor(rows, QStringLiteral("d.ogg")).isEmpty());
    }

    void json()
    {
        const Run run = Scan({QStringLiteral("--json"), QStringLiteral("--multi-plot"),
                              QStringLiteral("-r"), QStringLiteral("-l"), dir.path()});
        QCOMPARE(run.exitCode, 0);
        QJsonParseError error{};
        const QJsonDocument doc = QJsonDocument::fromJson(run.out, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(doc.isArray());
        const QJsonArray files = doc.array();
        QCOMPARE(files.size(), 4);
        const QStringList keys{
            "path",       "isValid",          "isHeaderRead",      "fileSize",
            "modifyTime", "samplingRate",     "channels",          "samples",
            "loopCount",  "markerCount",      "bitDepthOrMinKbps", "bitDepthOrMaxKbps",
            "loopStart",  "loopEnd",          "loudness",          "format",
            "plot",       "isMultiPlotValid", "multiPlot"};
        bool sawOgg = false;
        for (const QJsonValue& value : files) {
            const QJsonObject o = value.toObject();
            for (const QString& key : keys)
                QVERIFY2(o.contains(key), qPrintable(key));
            QCOMPARE(o.value(QStringLiteral("plot")).toArray().size(), 500);
            const QJsonArray multi = o.value(QStringLiteral("multiPlot")).toArray();
            QCOMPARE(multi.size(), o.value(QStringLiteral("channels")).toInt());
            for (const QJsonValue& channel : multi)
                QCOMPARE(channel.toArray().size(), 500);
            if (o.value(QStringLiteral("path")).toString().endsWith(QLatin1String("d.ogg"))) {
                sawOgg = true;
                QCOMPARE(o.value(QStringLiteral("format")).toString(), QStringLiteral("Vorbis"));
                QCOMPARE(o.value(QStringLiteral("samples")).toInt(), 220500);
                QCOMPARE(o.value(QStringLiteral("isMultiPlotValid")).toInt(), 1);
                QCOMPARE(o.value(QStringLiteral("fileSize")).toInt(),
                         int(QFileInfo(Fixture("tones-mono.ogg")).size()));
                const double lufs = o.value(QStringLiteral("loudness")).toDouble();
                QVERIFY(lufs > -40 && lufs < -10);
                // max/min pairs: every max at least its min, and something drawn.
                const QJsonArray plot = o.value(QStringLiteral("plot")).toArray();
                int drawn = 0;
                for (int i = 0; i < 500; i += 2) {
                    QVERIFY(plot.at(i).toInt() >= plot.at(i + 1).toInt());
                    drawn += plot.at(i).toInt() != 0;
                }
                QVERIFY(drawn > 200);
            }
            if (o.value(QStringLiteral("path")).toString().endsWith(QLatin1String("b-broken.mp3")))
                QCOMPARE(o.value(QStringLiteral("isValid")).toInt(), 0);
        }
        QVERIFY(sawOgg);

        QTemporaryDir empty;
        const Run none = Scan({QStringLiteral("--json"), empty.path()});
        QCOMPARE(none.exitCode, 0);
        QVERIFY(QJsonDocument::fromJson(none.out).isArray());
        QCOMPARE(QJsonDocument::fromJson(none.out).array().size(), 0);
    }

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("missing folder") << QStringList{dir.filePath(QStringLiteral("nowhere"))};
        QTest::newRow("a file, not a folder")
            << QStringList{dir.filePath(QStringLiteral("notes.txt"))};
        QTest::newRow("bad option") << QStringList{QStringLiteral("--frobnicate"), dir.path()};
        QTest::newRow("no folder") << QStringList{QStringLiteral("--json")};
        QTest::newRow("two folders") << QStringList{dir.path(), dir.path()};
    }

    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        const Run run = Scan(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.out.isEmpty());
        QVERIFY(run.err.startsWith("tesk-scan: "));
    }

    void unreadableFolder()
    {
        if (::geteuid() == 0)
            QSKIP("permissions do not stop root");
        QTemporaryDir locked;
        QVERIFY(QFile::setPermissions(locked.path(), QFileDevice::WriteOwner));
        const Run run = Scan({locked.path()});
        QFile::setPermissions(locked.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                 QFileDevice::ExeOwner);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.err.contains("cannot read folder"));
    }

    void help()
    {
        const Run run = Scan({QStringLiteral("--help")});
        QCOMPARE(run.exitCode, 0);
        for (const char* word : {"--recursive", "--hidden", "--loudness", "--multi-plot", "--json",
                                 "Exit status", "FOLDER"})
            QVERIFY2(run.out.contains(word), word);
    }

private:
    QTemporaryDir dir;
};

QTEST_GUILESS_MAIN(TestTeskScan)
#include "tst_teskscan.moc"
