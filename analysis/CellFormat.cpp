#include "CellFormat.h"

#include "AnalysisErrors.h"
#include "AudioFileInfo.h"

#include <QCoreApplication>

#include <cmath>

namespace {

QString Tr(const char* text)
{
    return QCoreApplication::translate("krokTableModel", text);
}

// Marked for the translation tools; translated when the headers are made.
const char* const kHeaders[] = {
    QT_TRANSLATE_NOOP("krokTableModel", "File"),
    QT_TRANSLATE_NOOP("krokTableModel", "Full Path"),
    QT_TRANSLATE_NOOP("krokTableModel", "Size"),
    QT_TRANSLATE_NOOP("krokTableModel", "Modify Time"),
    QT_TRANSLATE_NOOP("krokTableModel", "Format"),
    QT_TRANSLATE_NOOP("krokTableModel", "Sampling Rate"),
    QT_TRANSLATE_NOOP("krokTableModel", "Channels"),
    QT_TRANSLATE_NOOP("krokTableModel", "Samples"),
    "BIT",
    QT_TRANSLATE_NOOP("krokTableModel", "Duration"),
    QT_TRANSLATE_NOOP("krokTableModel", "Plots"),
    QT_TRANSLATE_NOOP("krokTableModel", "Loudness"),
    QT_TRANSLATE_NOOP("krokTableModel", "Loops"),
    QT_TRANSLATE_NOOP("krokTableModel", "Sort Specification"),
    QT_TRANSLATE_NOOP("krokTableModel", "Sort Comments"),
};

} // namespace

QStringList TableColumnHeaderLabels()
{
    QStringList labels;
    for (const char* header : kHeaders)
        labels << (header == kHeaders[ColumnBits] ? QString::fromLatin1(header) : Tr(header));
    return labels;
}

QString FormatFileSize(std::int64_t size)
{
    if (size >= 0x20000000)
        return Tr(QT_TRANSLATE_NOOP("krokTableModel", "%1 GB"))
            .arg(size / (1024.0 * 1024.0 * 1024.0), 0, 'f', 2);
    if (size >= 0x80000)
        return Tr(QT_TRANSLATE_NOOP("krokTableModel", "%1 MB"))
            .arg(size / (1024.0 * 1024.0), 0, 'f', 2);
    if (size < 512)
        return Tr(QT_TRANSLATE_NOOP("krokTableModel", "%1 byte")).arg(size);
    return Tr(QT_TRANSLATE_NOOP("krokTableModel", "%1 KB")).arg(size / 1024.0, 0, 'f', 2);
}

float DurationSeconds(std::int32_t samples, std::int32_t samplingRate)
{
    if (samplingRate <= 0)
        return 0.0f;
    return static_cast<float>(samples) / static_cast<float>(samplingRate);
}

QString FormatDuration(std::int32_t samples, std::int32_t samplingRate)
{
    const float seconds = DurationSeconds(samples, samplingRate);
    const auto minutes = static_cast<int>(seconds / 60.0f);
    const float rest = seconds - static_cast<float>(minutes) * 60.0f;
    return QStringLiteral("%1:%2").arg(minutes).arg(double(rest), 6, 'f', 3, QLatin1Char('0'));
}

QString FormatBits(std::int32_t first, std::int32_t second)
{
    if (first == second)
        return QString::number(first);
    return QStringLiteral("%1 - %2").arg(first).arg(second);
}

QVariant BitsSortValue(std::int32_t first, std::int32_t second)
{
    if (first == second)
        return first;
    return FormatBits(first, second);
}

float DisplayedLoudness(float loudness, std::int32_t channels, bool voltMode)
{
    return voltMode && channels == 1 ? loudness + 3.0103f : loudness;
}

QString FormatLoudness(float loudness, std::int32_t channels, bool voltMode)
{
    if (!std::isfinite(loudness) || loudness <= -96.0f)
        return QStringLiteral("---");
    return QStringLiteral("%1").arg(double(DisplayedLoudness(loudness, channels, voltMode)), 0, 'f',
                                    2);
}

bool IsFailedRecord(const AudioFileInfo& info)
{
    return info.isValid == 0 || !info.errorText.empty();
}

QString FormatText(const AudioFileInfo& info)
{
    if (IsFailedRecord(info))
        return QStringLiteral("ERROR");
    return QString::fromStdString(info.format.str());
}

QString ErrorReasonText(const AudioFileInfo& info)
{
    if (!IsFailedRecord(info))
        return {};
    if (info.errorText.empty())
        return QCoreApplication::translate(kErrorContext, kErrorDecodeFailed);
    return QCoreApplication::translate(kErrorContext, info.errorText.c_str());
}

QVariant RecordCellValue(int column, const AudioFileInfo& info, bool forSorting,
                         bool loudnessVoltMode)
{
    // A failed row shows its size and time only when the file's status was read.
    const bool statusKnown = !info.modifyTime.empty();
    if (IsFailedRecord(info) && column != ColumnFormat &&
        (!statusKnown || (column != ColumnSize && column != ColumnModifyTime)))
        return forSorting ? QVariant() : QVariant(QString());
    switch (column) {
    case ColumnSize:
        return forSorting ? QVariant(static_cast<qlonglong>(info.fileSize))
                          : QVariant(FormatFileSize(info.fileSize));
    case ColumnModifyTime:
        return QString::fromStdString(info.modifyTime.text());
    case ColumnFormat:
        return FormatText(info);
    case ColumnSamplingRate:
        return info.samplingRate;
    case ColumnChannels:
        return info.channels;
    case ColumnSamples:
        return info.samples;
    case ColumnBits:
        return forSorting ? BitsSortValue(info.bitDepthOrMinKbps, info.bitDepthOrMaxKbps)
                          : QVariant(FormatBits(info.bitDepthOrMinKbps, info.bitDepthOrMaxKbps));
    case ColumnDuration:
        return forSorting ? QVariant(DurationSeconds(info.samples, info.samplingRate))
                          : QVariant(FormatDuration(info.samples, info.samplingRate));
    case ColumnLoudness:
        return forSorting
                   ? QVariant(DisplayedLoudness(info.loudness, info.channels, loudnessVoltMode))
                   : QVariant(FormatLoudness(info.loudness, info.channels, loudnessVoltMode));
    case ColumnLoops:
        return info.loopCount;
    default:
        return {};
    }
}
