#pragma once

#include "SortEntry.h"

#include <QStringList>
#include <QVector>

// What a sort specification does to the listed files: per row the CSV position
// (-1 when not listed) and the comment, plus the entries that named no row.
struct SortMatchResult
{
    QVector<int> order;
    QStringList comments;
    SortEntryList unmatched;
};

// Matches entries against the rows' full paths without regard to case; the
// first row with an equal path wins, and a path listed twice keeps the later
// entry's position and comment.
SortMatchResult MatchSortEntries(const QStringList& rowPaths, const SortEntryList& entries);

// For each entry (a row of the dialog's result table), whether it is one of
// the unmatched ones. Each unmatched occurrence marks exactly one row, so a
// path listed twice and missing twice marks both rows.
QVector<bool> UnmatchedRowMarks(const SortEntryList& entries, const SortEntryList& unmatched);
