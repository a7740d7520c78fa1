#include "SortEntryMatcher.h"

#include <QHash>

SortMatchResult MatchSortEntries(const QStringList& rowPaths, const SortEntryList& entries)
{
    SortMatchResult result;
    result.order.fill(-1, rowPaths.size());
    for (int i = 0; i < rowPaths.size(); ++i)
        result.comments.append(QString());

    // A hash keeps this linear on 100,000 rows; insert() would let a later
    // row replace an earlier one, so only the first row of a path is kept.
    QHash<QString, int> rowOfPath;
    rowOfPath.reserve(rowPaths.size());
    for (int row = 0; row < rowPaths.size(); ++row) {
        const QString key = rowPaths.at(row).toCaseFolded();
        if (!rowOfPath.contains(key))
            rowOfPath.insert(key, row);
    }

    for (int i = 0; i < entries.size(); ++i) {
        const SortEntry& entry = entries.at(i);
        const auto it = rowOfPath.constFind(entry.first.toCaseFolded());
        if (it == rowOfPath.constEnd()) {
            result.unmatched.append(entry);
            continue;
        }
        result.order[it.value()] = i;
        result.comments[it.value()] = entry.second;
    }
    return result;
}

QVector<bool> UnmatchedRowMarks(const SortEntryList& entries, const SortEntryList& unmatched)
{
    // Counting occurrences is the same as removing one match per hit from a
    // working copy, without the quadratic scan on long lists.
    QHash<QString, int> remaining;
    for (const SortEntry& entry : unmatched)
        ++remaining[entry.first];

    QVector<bool> marks(entries.size(), false);
    for (int row = 0; row < entries.size(); ++row) {
        const auto it = remaining.find(entries.at(row).first);
        if (it != remaining.end() && it.value() > 0) {
            --it.value();
            marks[row] = true;
        }
    }
    return marks;
}
