#pragma once

#include "AnalysisLibrary.h"

namespace fixtures {

// A library row with every field of the record set to a value no default
// has (a three-channel plot, metadata with line breaks, a non-ASCII path with
// a comma), for the round trips through each backend.
LibraryRow FullLibraryRow(const LibraryKey& key);

// Compares every stored field of two rows with QCOMPARE; the caller checks
// QTest::currentTestFailed() afterwards.
void CompareLibraryRows(const LibraryRow& actual, const LibraryRow& expected);

} // namespace fixtures
