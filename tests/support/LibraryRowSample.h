#pragma once

#include "AnalysisLibrary.h"

#include <QStringList>

namespace fixtures {

// A library row with every field of the record set to a value no default
// has (a three-channel plot, metadata with line breaks), for the round trips
// through each backend.
LibraryRow FullLibraryRow(const LibraryKey& key);

// Every stored field of a row as text, so that QCOMPARE names the first one
// that differs.
QStringList LibraryRowFields(const LibraryRow& row);

} // namespace fixtures
