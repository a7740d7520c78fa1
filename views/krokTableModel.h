#pragma once

#include "PathRanking.h"
#include "TableRoles.h"

#include <QAbstractTableModel>
#include <QFont>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <cstdint>
#include <memory>
#include <optional>

class FileMetadata;
class KrokManager;
class TeskManager;
class UcsCatalog;
struct AudioFileInfo;
struct UcsName;

// One row of the file table: the path, the file's analysis record and the
// flags of search and sort specification. The record is the registry's own,
// shared and never changed (a new analysis hands over a new one), so cells
// read it in place: no copy, no lock, no lookup.
struct FileRowEntry
{
    QString path;
    QString sortComment;
    std::shared_ptr<const AudioFileInfo> record;
    std::int32_t sortIndex = -1;
    // Where the file name starts in path, so that name sorting needs no search.
    std::int32_t nameStart = 0;
    bool detailAcquired = false;
    bool matched = true;
    bool inSortSpec = false;
};

// A sort specification entry as the CSV reader delivers it: file path, comment.
using SortSpecEntry = QPair<QString, QString>;

// The model behind the file table: one row per listed file, fifteen fixed
// columns and the metadata columns after them, values looked up in the
// analysis registry by full path on demand.
class krokTableModel final : public QAbstractTableModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(krokTableModel)
public:
    krokTableModel(TeskManager* manager, QObject* parent = nullptr);
    ~krokTableModel() override;

    // The header texts in column order; the browser, the column menu and the
    // manager all take them from here so that they agree.
    static QStringList columnHeaderLabels();

    QModelIndex index(int row, int column,
                      const QModelIndex& parent = QModelIndex()) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // What TableRoles::SortValue gives, without an index.
    QVariant sortValue(int row, int column) const { return cellValue(row, column, true); }

    void setHeaderLabels(const QStringList& labels);
    void setFilePathList(const QList<QString>& paths);
    void clearRows();
    // Marks the row analysed and takes its record from the registry.
    void setDetailAcquired(int row, bool acquired);
    // Marks the row analysed with the record a worker handed over.
    void setRecord(int row, std::shared_ptr<const AudioFileInfo> record);
    // The row's record; null before the row is analysed, or when the registry
    // had none for it.
    const AudioFileInfo* record(int row) const
    {
        return rows[row].detailAcquired ? rows[row].record.get() : nullptr;
    }
    bool isDetailAcquired(int row) const { return rows[row].detailAcquired; }
    void setRowMatched(int row, bool matched);
    bool isRowMatched(int row) const { return rows[row].matched; }
    bool isRowShown(int row) const;
    bool hasRows() const { return hasFiles; }
    QString filePath(int row) const;
    QString fileName(int row) const;
    // The file-name part of the row's path without a copy.
    QStringRef fileNameRef(int row) const;
    const QString& filePathRef(int row) const { return rows[row].path; }
    // Every path of the list starts with this many equal characters (the root
    // folder); comparisons of paths may skip them.
    int commonPathPrefixLength() const { return commonPrefix; }
    // Rank of each row's path in path order, one per row (empty for the
    // placeholder). Worked out off the GUI thread after the list arrives; asked
    // before that has finished, it is worked out at once.
    const QVector<int>& pathRanks() const { return pathOrder.ranks(); }
    // Rank of each row's file name by FileNameCollator(), worked out the same way.
    const QVector<int>& nameRanks() const { return nameOrder.ranks(); }

    QList<SortSpecEntry> applySortSpecification(const QList<SortSpecEntry>& entries);
    void resetSortSpecification();

    // The CatID list that validates UCS names and names their categories; null
    // for none. The caller refreshes the rows.
    void setUcsCatalog(std::shared_ptr<const UcsCatalog> catalog);
    // The UCS blocks of the row's file name.
    UcsName ucsName(int row) const;
    // Whether the row's metadata or UCS category names contain `needle`
    // (letter case aside); false for a row not analysed.
    bool metadataContains(int row, const QString& needle) const;
    // Whether one of the fields a metadata column gathers contains `needle`.
    bool metadataColumnContains(int row, int column, const QString& needle) const;

    void setLoudnessVoltMode(bool on) { loudnessVoltMode = on; }
    void setMultiPlot(bool on) { multiPlot = on; }
    void setPlaybackPosition(const QString& path, double ratio);

    void refreshAll();
    void refreshRows(int from, int to);

private:
    QVariant cellValue(int row, int column, bool forSorting) const;
    // Display, sort value (TableRoles::SortValue) or tooltip of a metadata column.
    QVariant metadataValue(int row, int column, int role) const;
    QVariant errorToolTip(int row) const;
    QVariant plotItem(const AudioFileInfo& info, int row) const;
    const FileMetadata* metadataOf(int row, std::int32_t* samplingRate = nullptr) const;
    QVariant tableFont() const;

    TeskManager* manager;
    KrokManager* registry;
    bool hasFiles = false;
    std::int32_t rowTotal = 0;
    QVector<FileRowEntry> rows;
    QStringList headerLabels;
    QString playPath;
    double playPosition = 0.0;
    // The row of playPath when last found (checked before use).
    int playRow = -1;
    bool loudnessVoltMode = false;
    bool multiPlot = false;
    bool sortSpecActive = false;
    int commonPrefix = 0;
    mutable PathRanking pathOrder;
    mutable PathRanking nameOrder{PathRanking::Order::Name};
    std::shared_ptr<const UcsCatalog> ucsCatalog;
    struct FontKey
    {
        QString family;
        int pointSize = -1;
        bool fit = false;
        int rowHeight = 0;
        bool operator==(const FontKey& o) const
        {
            return family == o.family && pointSize == o.pointSize && fit == o.fit &&
                   rowHeight == o.rowHeight;
        }
    };
    mutable FontKey fontKey;
    mutable std::optional<QFont> cachedFont;
};
