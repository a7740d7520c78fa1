#include "AudioFileInfo.h"
#include "CellFormat.h"

#include <QTest>

#include <cmath>

class TestCellFormat final : public QObject
{
    Q_OBJECT

private slots:
    void size_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("0") << qint64(0) << "0 byte";
        QTest::newRow("511") << qint64(511) << "511 byte";
        QTest::newRow("512 is half a KB") << qint64(512) << "0.50 KB";
        QTest::newRow("1536") << qint64(1536) << "1.50 KB";
        QTest::newRow("just below half a MB") << qint64(524287) << "512.00 KB";
        QTest::newRow("half a MB") << qint64(524288) << "0.50 MB";
        QTest::newRow("10 MiB") << qint64(10 * 1024 * 1024) << "10.00 MB";
        QTest::newRow("half a GB") << qint64(536870912) << "0.50 GB";
        QTest::newRow("1.5 GiB") << qint64(1610612736) << "1.50 GB";
        QTest::newRow("2 GiB + 1 MiB") << qint64(2148532224) << "2.00 GB";
        QTest::newRow("4 GB") << qint64(4000000000) << "3.73 GB";
        QTest::newRow("past 4 GiB") << qint64(6442450944) << "6.00 GB";
    }

    void size()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(FormatFileSize(bytes), text);
    }

    void duration_data()
    {
        QTest::addColumn<int>("samples");
        QTest::addColumn<int>("rate");
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("seconds");
        QTest::newRow("one second") << 44100 << 44100 << "0:01.000" << 1.0f;
        QTest::newRow("90 s") << 90 * 48000 << 48000 << "1:30.000" << 90.0f;
        QTest::newRow("185.25 s") << 8892000 << 48000 << "3:05.250" << 185.25f;
        QTest::newRow("half a second") << 24000 << 48000 << "0:00.500" << 0.5f;
        QTest::newRow("empty") << 0 << 48000 << "0:00.000" << 0.0f;
        QTest::newRow("no rate") << 1000 << 0 << "0:00.000" << 0.0f;
        QTest::newRow("an hour") << 3600 * 44100 << 44100 << "60:00.000" << 3600.0f;
    }

    void duration()
    {
        QFETCH(int, samples);
        QFETCH(int, rate);
        QFETCH(QString, text);
        QFETCH(float, seconds);
        QCOMPARE(FormatDuration(samples, rate), text);
        QCOMPARE(DurationSeconds(samples, rate), seconds);
    }

    void loudness_data()
    {
        QTest::addColumn<float>("lufs");
        QTest::addColumn<int>("channels");
        QTest::addColumn<bool>("voltMode");
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("sortValue");
        QTest::newRow("mono") << -20.0f << 1 << false << "-20.00" << -20.0f;
        QTest::newRow("mono, volt mode") << -20.0f << 1 << true << "-16.99" << -16.9897f;
        QTest::newRow("stereo, volt mode") << -20.0f << 2 << true << "-20.00" << -20.0f;
        QTest::newRow("not measured") << -96.0f << 2 << false << "---" << -96.0f;
        QTest::newRow("not measured, mono volt") << -96.0f << 1 << true << "---" << -92.9897f;
        QTest::newRow("below the floor") << -100.0f << 2 << false << "---" << -100.0f;
        QTest::newRow("just above the floor") << -95.99f << 2 << false << "-95.99" << -95.99f;
        QTest::newRow("rounding") << -23.456f << 2 << false << "-23.46" << -23.456f;
        QTest::newRow("infinite") << float(INFINITY) << 2 << false << "---" << float(INFINITY);
        QTest::newRow("not a number") << float(NAN) << 1 << true << "---" << float(NAN);
    }

    void loudness()
    {
        QFETCH(float, lufs);
        QFETCH(int, channels);
        QFETCH(bool, voltMode);
        QFETCH(QString, text);
        QFETCH(float, sortValue);
        AudioFileInfo info;
        info.loudness = lufs;
        info.channels = channels;
        QCOMPARE(RecordCellValue(ColumnLoudness, info, false, voltMode).toString(), text);
        const float sorted = RecordCellValue(ColumnLoudness, info, true, voltMode).toFloat();
        if (std::isfinite(sortValue))
            QVERIFY(qAbs(sorted - sortValue) < 1e-4f);
    }

    void bits()
    {
        QCOMPARE(FormatBits(16, 24), QStringLiteral("16 - 24"));
        QCOMPARE(FormatBits(24, 24), QStringLiteral("24"));
        const QVariant same = BitsSortValue(16, 16);
        QCOMPARE(same.userType(), int(QMetaType::Int));
        QCOMPARE(same.toInt(), 16);
        const QVariant range = BitsSortValue(96, 320);
        QCOMPARE(range.userType(), int(QMetaType::QString));
        QCOMPARE(range.toString(), QStringLiteral("96 - 320"));
    }

    void recordCells()
    {
        AudioFileInfo info;
        info.fileSize = 2048;
        info.modifyTime = ModifyTime::FromText("2024/03/05 07:08:09");
        info.format = "MP3";
        info.samplingRate = 44100;
        info.channels = 2;
        info.samples = 88200;
        info.bitDepthOrMinKbps = 96;
        info.bitDepthOrMaxKbps = 320;
        info.loopCount = 3;
        QCOMPARE(RecordCellValue(ColumnSize, info, false, false).toString(),
                 QStringLiteral("2.00 KB"));
        QCOMPARE(RecordCellValue(ColumnSize, info, true, false).toInt(), 2048);
        QCOMPARE(RecordCellValue(ColumnModifyTime, info, false, false).toString(),
                 QStringLiteral("2024/03/05 07:08:09"));
        QCOMPARE(RecordCellValue(ColumnFormat, info, false, false).toString(),
                 QStringLiteral("MP3"));
        QCOMPARE(RecordCellValue(ColumnSamplingRate, info, true, false).toInt(), 44100);
        QCOMPARE(RecordCellValue(ColumnChannels, info, false, false).toInt(), 2);
        QCOMPARE(RecordCellValue(ColumnSamples, info, false, false).toInt(), 88200);
        QCOMPARE(RecordCellValue(ColumnBits, info, false, false).toString(),
                 QStringLiteral("96 - 320"));
        QCOMPARE(RecordCellValue(ColumnDuration, info, false, false).toString(),
                 QStringLiteral("0:02.000"));
        QCOMPARE(RecordCellValue(ColumnDuration, info, true, false).toFloat(), 2.0f);
        QCOMPARE(RecordCellValue(ColumnLoops, info, false, false).toInt(), 3);
        for (int column : {int(ColumnFile), int(ColumnFullPath), int(ColumnPlots),
                           int(ColumnSortSpecification), int(ColumnSortComments)})
            QVERIFY(!RecordCellValue(column, info, false, false).isValid());

        // A file that could not be read: "ERROR", its size and time, nothing else
        // (not the record's defaults, which would read as 48000 Hz, 1 channel, 16 bits).
        AudioFileInfo broken = info;
        broken.isValid = 0;
        broken.errorText = "E2006110803 : File size is too small.";
        QCOMPARE(RecordCellValue(ColumnFormat, broken, false, false).toString(),
                 QStringLiteral("ERROR"));
        QCOMPARE(RecordCellValue(ColumnFormat, broken, true, false).toString(),
                 QStringLiteral("ERROR"));
        QCOMPARE(RecordCellValue(ColumnSize, broken, false, false).toString(),
                 QStringLiteral("2.00 KB"));
        for (int column :
             {int(ColumnSamplingRate), int(ColumnChannels), int(ColumnSamples), int(ColumnBits),
              int(ColumnDuration), int(ColumnLoudness), int(ColumnLoops)}) {
            QCOMPARE(RecordCellValue(column, broken, false, false).toString(), QString());
            QVERIFY(!RecordCellValue(column, broken, true, false).isValid());
        }
        QCOMPARE(ErrorReasonText(broken), QString::fromStdString(broken.errorText.str()));
        QVERIFY(ErrorReasonText(info).isEmpty());
        // Without the file's status, size and time are unknown, not zero.
        broken.modifyTime = ModifyTime();
        QCOMPARE(RecordCellValue(ColumnSize, broken, false, false).toString(), QString());
        QCOMPARE(RecordCellValue(ColumnModifyTime, broken, false, false).toString(), QString());
    }
};

QTEST_GUILESS_MAIN(TestCellFormat)
#include "tst_cellformat.moc"
