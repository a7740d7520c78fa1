#pragma once

#include <QVector>

class QFont;
class QHeaderView;

// The file table's starting column widths, measured with the fonts in use:
// each column is at least as wide as its header with the sort indicator and
// as a typical value in the cell font, and a few keep a floor of their own
// (names, paths and the plot want room). `header` lends its labels, font and
// style.
QVector<int> DefaultColumnWidths(QHeaderView* header, const QFont& cellFont);

// A typical cell text of each column, as wide as most of that column's values.
QString TypicalCellText(int column);
