#pragma once

#include "SortEntry.h"

#include <QVector>

// For each entry (a row of the Sort Settings result table), whether it is one
// of the entries that matched no listed file. Paths compare exactly, and each
// unmatched occurrence marks one row, so a path listed twice and missing twice
// marks both rows.
QVector<bool> UnmatchedRowMarks(const SortEntryList& entries, const SortEntryList& unmatched);
