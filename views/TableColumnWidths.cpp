#include "TableColumnWidths.h"

#include "CellFormat.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QStyle>

#include <array>

namespace {

struct ColumnSample
{
    const char* text;
    int floor;
};

// Values as the table shows them: an Ogg bit-rate range, a minute-long take,
// a common loudness. Floors where a typical value undersells the column.
constexpr std::array<ColumnSample, TableColumnCount> kSamples = {{
    {"footstep_gravel_run_01.wav", 150},
    // A path is cut at any width; it gets a fair share, not its length.
    {"", 240},
    {"123.45 KB", 0},
    {"2024/07/04 11:58:46", 0},
    {"Vorbis", 0},
    {"192000", 0},
    {"2", 0},
    {"12345678", 0},
    {"112 - 320", 0},
    {"12:34.567", 0},
    {"", 120},
    {"-23.45", 0},
    {"1", 0},
    {"1234", 0},
    {"", 0},
    // Description, Title/Name, Artist/Originator, Comment, Date, Tempo/Key,
    // CatID, Category, FX Name, Creator, Source: prose gets room, codes their length.
    {"", 260},
    {"", 160},
    {"", 130},
    {"", 200},
    {"2024-07-04", 0},
    {"120 BPM C#m", 0},
    {"DOORWood", 0},
    {"", 140},
    {"", 160},
    {"", 100},
    {"", 90},
}};

} // namespace

QString TypicalCellText(int column)
{
    if (column < 0 || column >= TableColumnCount)
        return {};
    return QString::fromLatin1(kSamples[static_cast<size_t>(column)].text);
}

QVector<int> DefaultColumnWidths(QHeaderView* header, const QFont& cellFont)
{
    // A header section keeps a margin on each side; the sort indicator takes
    // half the header's height at the right with a margin on each side of its
    // own, and the label is laid out in what is left.
    const QStyle* style = header->style();
    const int margin = style->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    const int indicator = header->sizeHint().height() / 2 + 2 * margin;
    const QFontMetrics labels(header->font());
    const QFontMetrics cells(cellFont);
    // The delegate keeps the focus frame's margin and one pixel on each side of the text.
    const int textMargin =
        2 * (style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, header) + 1);
    QVector<int> widths;
    const int columns = qMin(header->count(), int(TableColumnCount));
    for (int column = 0; column < columns; ++column) {
        const ColumnSample& sample = kSamples[static_cast<size_t>(column)];
        const QString label = header->model()
                                  ? header->model()->headerData(column, Qt::Horizontal).toString()
                                  : QString();
        // One pixel of slack each: text advances are rounded.
        int width =
            qMax(sample.floor, labels.horizontalAdvance(label) + 2 * margin + indicator + 1);
        const QString text = TypicalCellText(column);
        if (!text.isEmpty())
            width = qMax(width, cells.horizontalAdvance(text) + textMargin + 1);
        widths.append(width);
    }
    return widths;
}
