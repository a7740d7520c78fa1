#pragma once

#include "AnalysisLibrary.h"

#include <QStringList>

class QSqlQuery;
class QVariant;

// The stored form of a library row: one column per record field. The only
// place that knows both the record and the columns, shared by every backend,
// so that a new field is one more entry here (and one more schema step in
// LibrarySql).
class LibraryRowCodec final
{
public:
    // Column names in the order Bind binds and Read reads them; the two key
    // columns (root, path) first.
    static const QStringList& Columns();
    static constexpr int kKeyColumns = 2;

    // Binds the row positionally, in the order of Columns(), after whatever is bound already.
    static void Bind(QSqlQuery& query, const LibraryRow& row, int analysisVersion);
    // Reads the columns of the current result row, starting at column 0.
    static void Read(const QSqlQuery& query, LibraryRow& row);
    static LibraryKey ReadKey(const QSqlQuery& query);
    // A key part as a value to bind: the empty root is '', never NULL.
    static QVariant KeyValue(const QString& part);
};
