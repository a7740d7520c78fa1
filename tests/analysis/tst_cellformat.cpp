#include "AudioFileInfo.h"
#include "CellFormat.h"

#include <QTest>

#include <cmath>

class TestCellFormat final : public QObject
{
    Q_OBJECT

private slots:
    void sizesAndDurations()
    {
        for (const auto& [bytes, text] : {std::pair<qint64, const char*>{511, "511 byte"},
                                          {512, "0.50 KB"},
                                          {524287, "512.00 KB"},
                                          {524288, "0.50 MB"},
                                          {536870912, "0.50 GB"},
                                          {2148532224, "2.00 GB"},
                                          {4000000000, "3.73 GB"},
                                          {6442450944, "6.00 GB"}})
            QCOMPARE(FormatFileSize(bytes), QLatin1String(text));
        QCOMPARE(FormatDuration(8892000, 48000), QStringLiteral("3:05.250"));
        QCOMPARE(DurationSeconds(8892000, 48000), 185.25f);
        QCOMPARE(FormatDuration(3600 * 44100, 44100), QStringLiteral("60:00.000"));
        QCOMPARE(FormatDuration(1000, 0), QStringLiteral("0:00.000"));
        QCOMPARE(DurationSeconds(1000, 0), 0.0f);
    }

    // Volt mode counts a mono file twice (+3.01 dB), as a stereo file of it would read.
    void loudness_data()
    {
        QTest::addColumn<float>("lufs");
        QTest::addColumn<int>("channels");
        QTest::addColumn<bool>("voltMode");
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("sortValue");
        QTest::newRow("mono, volt mode") << -20.0f << 1 << true << "-16.99" << -16.9897f;
        QTest::newRow("stereo, volt mode") << -20.0f << 2 << true << "-20.00" << -20.0f;
        QTest::newRow("not measured") << -96.0f << 2 << false << "---" << -96.0f;
        QTest::newRow("not measured, mono volt") << -96.0f << 1 << true << "---" << -92.9897f;
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
        QFETCH(float, sortValue);
        AudioFileInfo info;
        info.loudness = lufs;
        info.channels = channels;
        QTEST(RecordCellValue(ColumnLoudness, info, false, voltMode).toString(), "text");
        const float sorted = RecordCellValue(ColumnLoudness, info, true, voltMode).toFloat();
        if (std::isfinite(sortValue))
            QVERIFY(qAbs(sorted - sortValue) < 1e-4f);
    }

    // A file that could not be read keeps its size and time and tells why.
    void brokenRecordShowsNoValues()
    {
        AudioFileInfo broken;
        broken.fileSize = 2048;
        broken.modifyTime = ModifyTime::FromText("2024/03/05 07:08:09");
        broken.isValid = 0;
        broken.errorText = "E2006110803 : File size is too small.";
        QCOMPARE(RecordCellValue(ColumnSize, broken, false, false).toString(),
                 QStringLiteral("2.00 KB"));
        QCOMPARE(ErrorReasonText(broken), QString::fromStdString(broken.errorText.str()));
        // Without the file's status, size and time are unknown, not zero.
        broken.modifyTime = ModifyTime();
        QCOMPARE(RecordCellValue(ColumnSize, broken, false, false).toString(), QString());
        QCOMPARE(RecordCellValue(ColumnModifyTime, broken, false, false).toString(), QString());
    }
};

QTEST_GUILESS_MAIN(TestCellFormat)
#include "tst_cellformat.moc"
