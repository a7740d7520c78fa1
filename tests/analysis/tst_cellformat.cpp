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
                                          {524288, "0.50 MB"},
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

    // Not measured, or nothing a meter gives, shows "---".
    void loudness()
    {
        AudioFileInfo info;
        for (const auto& [lufs, text] : {std::pair<float, const char*>{-96.0f, "---"},
                                         {-95.99f, "-95.99"},
                                         {-23.456f, "-23.46"},
                                         {float(INFINITY), "---"},
                                         {float(NAN), "---"}}) {
            info.loudness = lufs;
            QCOMPARE(RecordCellValue(ColumnLoudness, info, false, false).toString(),
                     QLatin1String(text));
        }
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
