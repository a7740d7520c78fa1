#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <memory>

// The CatID list of the Universal Category System as libraries ship it,
// exported from its spreadsheet as CSV or TSV: a header row naming the CatID,
// Category and SubCategory columns (in any order, among others), then one row
// per CatID. Commas, semicolons or tabs separate the cells; cells may be
// quoted. UTF-8 (with or without a byte-order mark), UTF-16 with a byte-order
// mark, or an 8-bit Western text.
class UcsCatalog final
{
public:
    struct Entry
    {
        QString catId; // as the list spells it
        QString category;
        QString subCategory;
    };

    // Null with a translated reason in `error` when the file cannot be read
    // or holds no CatID column or no CatID.
    static std::shared_ptr<const UcsCatalog> load(const QString& path, QString* error);
    static std::shared_ptr<const UcsCatalog> parse(const QByteArray& bytes, QString* error);

    // The entry of a CatID, letter case aside; null when the list has none.
    const Entry* find(const QString& catId) const;
    int size() const { return static_cast<int>(entries.size()); }

private:
    QHash<QString, Entry> entries; // keyed by the case-folded CatID
};
