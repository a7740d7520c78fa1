#include "SearchRowMatcher.h"

#include "AudioFileInfo.h"
#include "CellFormat.h"
#include "krokTableModel.h"

#include <string>

namespace {

std::uint32_t formatBit(std::string format)
{
    for (char& c : format) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    if (format == "wav") {
        return SearchCriteriaStruct::FormatWav;
    }
    if (format == "aif" || format == "aiff") {
        return SearchCriteriaStruct::FormatAiff;
    }
    if (format == "mp3") {
        return SearchCriteriaStruct::FormatMp3;
    }
    if (format == "ogg" || format == "vorbis") {
        return SearchCriteriaStruct::FormatOgg;
    }
    if (format == "flac") {
        return SearchCriteriaStruct::FormatFlac;
    }
    if (format == "error" || format.empty()) {
        return SearchCriteriaStruct::FormatError;
    }
    return 0;
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
    const int minutes = text.leftRef(colon).toInt(&okMin);
    const int seconds = text.midRef(colon + 1, 2).toInt(&okSec);
    const int millis = text.midRef(point + 1, 3).toInt(&okMs);
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
    // The fields are tested in the row's record, as its cells show them: a row
    // not analysed shows no format (which counts as an error) and no numbers;
    // a failed one shows "ERROR" and no numbers.
    const bool analysed = model.hasRows() && model.isDetailAcquired(row);
    const AudioFileInfo* info = analysed ? model.record(row) : nullptr;
    const bool failed = !info || IsFailedRecord(*info);
    const std::uint32_t bit = formatBit(!analysed ? std::string()
                                        : failed  ? std::string("error")
                                                  : info->format.str());
    if (bit == 0 || (criteria.formatMask & bit) == 0) {
        return false;
    }
    if (criteria.useRate &&
        (failed || !compare(info->samplingRate, criteria.rate, criteria.rateMode))) {
        return false;
    }
    if (criteria.useChannels &&
        (failed || !compare(info->channels, criteria.channels, criteria.channelsMode))) {
        return false;
    }
    if (!criteria.description.isEmpty() &&
        !model.metadataColumnContains(row, ColumnDescription, criteria.description)) {
        return false;
    }
    if (criteria.useTime) {
        int ms = 0;
        if (failed || !parseDurationMs(FormatDuration(info->samples, info->samplingRate), &ms) ||
            !compare(ms, criteria.timeMs, criteria.timeMode)) {
            return false;
        }
    }
    return true;
}
