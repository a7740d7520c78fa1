#include "SearchRowMatcher.h"

#include "krokTableModel.h"

namespace {

QString cellText(const krokTableModel& model, int row, int column)
{
    return model.data(model.index(row, column), Qt::DisplayRole).toString();
}

std::uint32_t formatBit(const QString& format)
{
    const QString f = format.toLower();
    if (f == QLatin1String("wav")) {
        return SearchCriteriaStruct::FormatWav;
    }
    if (f == QLatin1String("aif") || f == QLatin1String("aiff")) {
        return SearchCriteriaStruct::FormatAiff;
    }
    if (f == QLatin1String("mp3")) {
        return SearchCriteriaStruct::FormatMp3;
    }
    if (f == QLatin1String("ogg") || f == QLatin1String("vorbis")) {
        return SearchCriteriaStruct::FormatOgg;
    }
    if (f == QLatin1String("flac")) {
        return SearchCriteriaStruct::FormatFlac;
    }
    if (f == QLatin1String("error") || f.isEmpty()) {
        return SearchCriteriaStruct::FormatError;
    }
    return 0;
}

bool integerCellPasses(const krokTableModel& model, int row, int column, int limit, int mode)
{
    bool ok = false;
    const int value = cellText(model, row, column).toInt(&ok);
    return ok && SearchRowMatcher::compare(value, limit, mode);
}

} // namespace

bool SearchRowMatcher::compare(int value, int limit, int mode)
{
    switch (mode) {
    case SearchCriteriaStruct::GreaterOrEqual:
        return value >= limit;
    case SearchCriteriaStruct::LessOrEqual:
        return value <= limit;
    default:
        return value == limit;
    }
}

bool SearchRowMatcher::parseDurationMs(const QString& text, int* ms)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    const int point = text.indexOf(QLatin1Char('.'));
    if (colon < 1 || point < 1) {
        return false;
    }
    bool okMin = false;
    bool okSec = false;
    bool okMs = false;
    const int minutes = text.left(colon).toInt(&okMin);
    const int seconds = text.mid(colon + 1, 2).toInt(&okSec);
    const int millis = text.mid(point + 1, 3).toInt(&okMs);
    if (!okMin || !okSec || !okMs) {
        return false;
    }
    *ms = (minutes * 60 + seconds) * 1000 + millis;
    return true;
}

bool SearchRowMatcher::matches(const krokTableModel& model, int row,
                               const SearchCriteriaStruct& criteria)
{
    // The file name letter case aside, as the descriptions and tags.
    if (!criteria.name.isEmpty() &&
        !model.fileNameRef(row).contains(criteria.name, Qt::CaseInsensitive) &&
        !model.metadataContains(row, criteria.name)) {
        return false;
    }
    if (!criteria.useDetail) {
        return true;
    }
    const std::uint32_t bit = formatBit(cellText(model, row, ColumnFormat));
    if (bit == 0 || (criteria.formatMask & bit) == 0) {
        return false;
    }
    if (criteria.useRate &&
        !integerCellPasses(model, row, ColumnSamplingRate, criteria.rate, criteria.rateMode)) {
        return false;
    }
    if (criteria.useChannels &&
        !integerCellPasses(model, row, ColumnChannels, criteria.channels, criteria.channelsMode)) {
        return false;
    }
    if (!criteria.description.isEmpty() &&
        !model.metadataColumnContains(row, ColumnDescription, criteria.description)) {
        return false;
    }
    if (criteria.useTime) {
        int ms = 0;
        if (!parseDurationMs(cellText(model, row, ColumnDuration), &ms) ||
            !compare(ms, criteria.timeMs, criteria.timeMode)) {
            return false;
        }
    }
    return true;
}
