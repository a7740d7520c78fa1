#pragma once

#include "SearchCriteriaStruct.h"

class krokTableModel;

// Decides whether one row of the file table passes the search criteria,
// reading the row's cells as the user sees them.
class SearchRowMatcher final
{
public:
    static bool matches(const krokTableModel& model, int row, const SearchCriteriaStruct& criteria);
    // Milliseconds of a Duration cell such as "3:05.250"; false when the text is not one.
    static bool parseDurationMs(const QString& text, int* ms);
    static bool compare(int value, int limit, int mode);
};
