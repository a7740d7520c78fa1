#include "UnmatchedRowMarks.h"

#include <QHash>

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
