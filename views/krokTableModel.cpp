#include "krokTableModel.h"

#include <QHash>

#include "AudioFileInfo.h"
#include "CellFormat.h"
#include "FileMetadata.h"
#include "KrokManager.h"
#include "MetadataColumns.h"
#include "TableFont.h"
#include "TeskManager.h"
#include "UcsCatalog.h"
#include "UcsName.h"
#include "WaveformStyledItem.h"

#include <QFont>
#include <QSharedPointer>

#include <algorithm>
#include <array>

namespace {

// Columns 2, 5-9, 11, 12 and 13 hold numbers and are right-aligned.
constexpr int kRightAlignedMask = 15332;
// Rows outside the sort specification sort after every listed row.
constexpr int kOutsideSortSpec = 0x20001;

QVector<std::int8_t> plotBytes(const PlotPoint* points, int count)
{
    QVector<std::int8_t> bytes(2 * count);
    for (int k = 0; k < count; ++k) {
        bytes[2 * k] = points[k].max;
        bytes[2 * k + 1] = points[k].min;
    }
    return bytes;
}

} // namespace

krokTableModel::krokTableModel(TeskManager* manager, QObject* parent)
    : QAbstractTableModel(parent)
    , manager(manager)
    , registry(manager ? manager->GetKrokManager() : nullptr)
{
    RegisterWaveformStyledItemMetaType();
}

krokTableModel::~krokTableModel() = default;

QStringList krokTableModel::columnHeaderLabels()
{
    // Shared with the command-line scanner, which prints the same headers.
    return TableColumnHeaderLabels() + MetadataColumnHeaderLabels();
}

QModelIndex krokTableModel::index(int row, int column, const QModelIndex& parent) const
{
    // The proxy asks for two indexes per comparison while it sorts; the base
    // class would ask the virtual row and column counts each time.
    if (parent.isValid() || row < 0 || column < 0 || row >= rowTotal ||
        column >= headerLabels.size()) {
        return {};
    }
    return createIndex(row, column);
}

int krokTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rowTotal;
}

int krokTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : headerLabels.size();
}

QVariant krokTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rows.size()) {
        return {};
    }
    const int row = index.row();
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return cellValue(row, column, false);
    case TableRoles::SortValue:
        return cellValue(row, column, true);
    case Qt::FontRole:
        return tableFont();
    case Qt::TextAlignmentRole: {
        const bool right = column < 14 && ((kRightAlignedMask >> column) & 1) != 0;
        return static_cast<int>((right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    }
    case Qt::ToolTipRole: {
        // A failed row says why on every cell; a metadata cell shows its full text.
        const QVariant error = errorToolTip(row);
        if (error.isValid() || !hasFiles || !IsMetadataColumn(column))
            return error;
        return metadataValue(row, column, role);
    }
    case TableRoles::FullPath:
        return rows[row].path;
    case TableRoles::Format:
        return cellValue(row, ColumnFormat, true);
    default:
        return {};
    }
}

QVariant krokTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    if (section < 0 || section >= headerLabels.size()) {
        return QString();
    }
    return headerLabels[section];
}

Qt::ItemFlags krokTableModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags f = QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled;
    // Clicks in the plot column seek instead of entering the cell.
    if (index.column() == ColumnPlots) {
        f &= ~Qt::ItemIsEnabled;
    }
    return f;
}

QVariant krokTableModel::tableFont() const
{
    if (!manager) {
        return {};
    }
    // Asked for every cell painted: the fitted size is measured only when the
    // settings or the row height have changed.
    const FontSettings* fonts = manager->GetFontSettings();
    const FontKey key{fonts->GetFamily(FontSettings::Table),
                      fonts->GetPointSize(FontSettings::Table), fonts->IsFitToCell(),
                      manager->GetRowHeight()};
    if (!(key == fontKey) || !cachedFont) {
        fontKey = key;
        cachedFont = TableFont(*fonts, key.rowHeight);
    }
    return *cachedFont;
}

QVariant krokTableModel::cellValue(int row, int column, bool forSorting) const
{
    if (!hasFiles) {
        return column == ColumnFile ? QVariant(tr("(no files)")) : QVariant();
    }
    const FileRowEntry& entry = rows[row];
    switch (column) {
    case ColumnFile:
        return fileName(row);
    case ColumnFullPath:
        return entry.path;
    case ColumnSortSpecification:
        if (entry.sortIndex < 0) {
            return forSorting ? QVariant(kOutsideSortSpec) : QVariant(QString());
        }
        return entry.sortIndex;
    case ColumnSortComments:
        return entry.sortComment;
    default:
        break;
    }
    if (IsMetadataColumn(column)) {
        return metadataValue(row, column, forSorting ? TableRoles::SortValue : Qt::DisplayRole);
    }
    if (!entry.detailAcquired) {
        return {};
    }
    if (!entry.record) {
        return column == ColumnFormat ? QVariant(QStringLiteral("ERROR")) : QVariant();
    }
    const AudioFileInfo& info = *entry.record;
    if (column == ColumnPlots) {
        // A failed row has no waveform to show, not even a flat one.
        return IsFailedRecord(info) ? QVariant() : plotItem(info, row);
    }
    return RecordCellValue(column, info, forSorting, loudnessVoltMode);
}

const FileMetadata* krokTableModel::metadataOf(int row, std::int32_t* samplingRate) const
{
    const AudioFileInfo* info = hasFiles ? record(row) : nullptr;
    if (samplingRate) {
        *samplingRate = info ? info->samplingRate : 0;
    }
    return info ? info->metadata.get() : nullptr;
}

QVariant krokTableModel::metadataValue(int row, int column, int role) const
{
    // UCS blocks come from the name and show before the file is analysed.
    const UcsName ucs = IsUcsColumn(column) ? ucsName(row) : UcsName();
    std::int32_t samplingRate = 0;
    const FileMetadata* metadata = metadataOf(row, &samplingRate);
    if (role == Qt::ToolTipRole) {
        const QString tip = MetadataToolTip(column, metadata, samplingRate, ucs);
        return tip.isEmpty() ? QVariant() : QVariant(tip);
    }
    return MetadataCellValue(column, metadata, samplingRate, ucs, role == TableRoles::SortValue);
}

void krokTableModel::setUcsCatalog(std::shared_ptr<const UcsCatalog> catalog)
{
    ucsCatalog = std::move(catalog);
}

UcsName krokTableModel::ucsName(int row) const
{
    return ParseUcsName(fileNameRef(row).toString(), ucsCatalog.get());
}

bool krokTableModel::metadataContains(int row, const QString& needle) const
{
    if (!hasFiles || !rows[row].detailAcquired) {
        return false;
    }
    const FileMetadata* metadata = metadataOf(row);
    // Without a list the UCS blocks are all in the name, which the name filter reads.
    const UcsName ucs = ucsCatalog ? ucsName(row) : UcsName();
    return MetadataContains(metadata, ucs, needle);
}

bool krokTableModel::metadataColumnContains(int row, int column, const QString& needle) const
{
    if (!hasFiles || !rows[row].detailAcquired) {
        return false;
    }
    std::int32_t samplingRate = 0;
    const FileMetadata* metadata = metadataOf(row, &samplingRate);
    const UcsName ucs = IsUcsColumn(column) ? ucsName(row) : UcsName();
    for (const MetadataItem& item : MetadataItems(column, metadata, samplingRate, ucs)) {
        if (item.text.contains(needle, Qt::CaseInsensitive)) {
            return true;
        }
    }
    return false;
}

QVariant krokTableModel::errorToolTip(int row) const
{
    // A failed row says why on every cell.
    const AudioFileInfo* info = hasFiles ? record(row) : nullptr;
    if (!info) {
        return {};
    }
    const QString reason = ErrorReasonText(*info);
    return reason.isEmpty() ? QVariant() : QVariant(reason);
}

QVariant krokTableModel::plotItem(const AudioFileInfo& info, int row) const
{
    const double position = rows[row].path == playPath ? playPosition : 0.0;
    QSharedPointer<WaveformStyledItem> item;
    if (multiPlot && info.hasMultiPlot()) {
        // The record has room for eight channels; a wider file shows its first eight.
        static const std::array<PlotPoint, kPlotPoints> flat{};
        const int channels = std::clamp(info.channels, 0, kMaxPlotChannels);
        QVector<QVector<std::int8_t>> lanes;
        lanes.reserve(channels);
        for (int k = 0; k < channels; ++k) {
            const PlotPoint* lane = info.multiPlotLane(k);
            lanes.append(plotBytes(lane ? lane : flat.data(), kPlotPoints));
        }
        item = QSharedPointer<WaveformStyledItem>::create(std::move(lanes), position);
    } else {
        item = QSharedPointer<WaveformStyledItem>::create(plotBytes(info.plot.data(), kPlotPoints),
                                                          position);
    }
    return QVariant::fromValue(item);
}

void krokTableModel::setHeaderLabels(const QStringList& labels)
{
    beginResetModel();
    headerLabels = labels;
    endResetModel();
}

void krokTableModel::clearRows()
{
    beginResetModel();
    rowTotal = 0;
    hasFiles = false;
    rows.clear();
    sortSpecActive = false;
    commonPrefix = 0;
    pathOrder.clear();
    nameOrder.clear();
    endResetModel();
}

void krokTableModel::setFilePathList(const QList<QString>& paths)
{
    clearRows();
    if (paths.isEmpty()) {
        // One placeholder row that reads "(no files)".
        beginInsertRows(QModelIndex(), 0, 0);
        rows.append(FileRowEntry());
        rowTotal = 1;
        endInsertRows();
        return;
    }
    beginInsertRows(QModelIndex(), 0, paths.size() - 1);
    rowTotal = paths.size();
    rows.reserve(paths.size());
    const QString& first = paths.first();
    int prefix = first.size();
    for (const QString& path : paths) {
        FileRowEntry entry;
        entry.path = path;
        // Qt file APIs always separate with /.
        entry.nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
        prefix = std::min(prefix, path.size());
        while (prefix > 0 && QStringRef(&path, 0, prefix) != QStringRef(&first, 0, prefix)) {
            --prefix;
        }
        rows.append(std::move(entry));
    }
    commonPrefix = prefix;
    // The same order the list worker sorted the list in (PathRanking::sharedFolderLength).
    pathOrder.start(paths, prefix > 0 ? first.lastIndexOf(QLatin1Char('/'), prefix - 1) + 1 : 0);
    nameOrder.start(paths, 0);
    endInsertRows();
    hasFiles = true;
}

void krokTableModel::setDetailAcquired(int row, bool acquired)
{
    rows[row].detailAcquired = acquired;
    rows[row].record = acquired && registry ? registry->FindRecord(rows[row].path) : nullptr;
}

void krokTableModel::setRecord(int row, std::shared_ptr<const AudioFileInfo> record)
{
    rows[row].detailAcquired = true;
    rows[row].record = std::move(record);
}

void krokTableModel::setRowMatched(int row, bool matched)
{
    rows[row].matched = matched;
}

bool krokTableModel::isRowShown(int row) const
{
    if (sortSpecActive && !rows[row].inSortSpec) {
        return false;
    }
    return rows[row].matched;
}

QString krokTableModel::filePath(int row) const
{
    return rows[row].path;
}

QString krokTableModel::fileName(int row) const
{
    return fileNameRef(row).toString();
}

QStringRef krokTableModel::fileNameRef(int row) const
{
    return rows[row].path.midRef(rows[row].nameStart);
}

void krokTableModel::resetSortSpecification()
{
    for (FileRowEntry& entry : rows) {
        entry.inSortSpec = false;
        entry.sortIndex = -1;
        entry.sortComment.clear();
    }
    sortSpecActive = false;
}

QList<SortSpecEntry> krokTableModel::applySortSpecification(const QList<SortSpecEntry>& entries)
{
    resetSortSpecification();
    // The first row of each path, case-folded, so that a list of 100,000 entries
    // costs one hash lookup per entry rather than a scan of every row.
    QHash<QString, int> firstRowOfPath;
    firstRowOfPath.reserve(rows.size());
    for (int row = 0; row < rows.size(); ++row) {
        const QString key = rows[row].path.toCaseFolded();
        if (!firstRowOfPath.contains(key))
            firstRowOfPath.insert(key, row);
    }

    QList<SortSpecEntry> unmatched;
    for (int i = 0; i < entries.size(); ++i) {
        const SortSpecEntry& entry = entries[i];
        const auto found = firstRowOfPath.constFind(entry.first.toCaseFolded());
        if (found == firstRowOfPath.constEnd()) {
            unmatched.append(entry);
            continue;
        }
        // A later entry naming the same file takes the row over: the list's last
        // word on a file is its place. Positions count every entry, matched or not.
        FileRowEntry& row = rows[found.value()];
        row.sortIndex = i;
        row.sortComment = entry.second;
        row.inSortSpec = true;
        sortSpecActive = true;
    }
    return unmatched;
}

void krokTableModel::setPlaybackPosition(const QString& path, double ratio)
{
    playPath = path;
    playPosition = ratio;
    // Called every tick while a file plays: its row is looked for once.
    if (playRow < 0 || playRow >= rows.size() || rows[playRow].path != path) {
        playRow = -1;
        for (int row = 0; row < rows.size(); ++row) {
            if (rows[row].path == path) {
                playRow = row;
                break;
            }
        }
    }
    if (playRow >= 0) {
        emit dataChanged(index(playRow, 0), index(playRow, columnCount() - 1));
    }
}

void krokTableModel::refreshAll()
{
    if (rowTotal == 0 || columnCount() == 0) {
        return;
    }
    emit dataChanged(index(0, 0), index(rowTotal - 1, columnCount() - 1));
}

void krokTableModel::refreshRows(int from, int to)
{
    if (from > to || columnCount() == 0) {
        return;
    }
    emit dataChanged(index(from, 0), index(to, columnCount() - 1));
}
