#pragma once

#include "AnalysisLibrary.h"

#include <QStringList>

class QSqlQuery;

// The stored form of a library row: one column per record field. The only
// place that knows both the record and the columns, so that a new field is
// one more entry here (and one more schema step in the store).
class LibraryRowCodec final
{
public:
    // Column names in the order Bind binds and Read reads them; the key column first.
    static const QStringList& Columns();
    static int KeyColumn() { return 0; }

    // Binds the row positionally, in the order of Columns(), after whatever is bound already.
    static void Bind(QSqlQuery& query, const LibraryRow& row, int analysisVersion);
    // Reads the columns of the current result row, starting at column 0.
    static void Read(const QSqlQuery& query, LibraryRow& row);
    static QString ReadKey(const QSqlQuery& query);
};
