#pragma once

#include "SortEntry.h"

// Reads a sort CSV: split at every comma, no quoting, every line must have the
// first line's field count and hold both columns (1-based). Any violation, a
// missing file or a column below 1 gives an empty list; a partial list would
// silently reorder only some of the files.
SortEntryList ReadSortCsv(const QString& csvPath, int pathColumn, int commentColumn,
                          bool ignoreFirstLine);
