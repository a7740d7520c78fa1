#include "CellFormat.h"

#include "AudioFileInfo.h"

#include <QCoreApplication>

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

QString FormatFileSize(std::int32_t size)
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
    if (loudness <= -96.0f)
        return QStringLiteral("---");
    return QStringLiteral("%1").arg(double(DisplayedLoudness(loudness, channels, voltMode)), 0, 'f',
                                    2);
}

QString FormatText(const AudioFileInfo& info)
{
    if (info.isValid == 0)
        return QStringLiteral("ERROR");
    return QString::fromStdString(info.format);
}

QVariant RecordCellValue(int column, const AudioFileInfo& info, bool forSorting,
                         bool loudnessVoltMode)
{
    switch (column) {
    case ColumnSize: {
        // The cells keep their 32-bit view of the size: files of 2 GiB and more wrap.
        const auto size = static_cast<std::int32_t>(info.fileSize);
        return forSorting ? QVariant(size) : QVariant(FormatFileSize(size));
    }
    case ColumnModifyTime:
        return QString::fromStdString(info.modifyTime);
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
