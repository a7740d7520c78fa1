#pragma once

#include "CellFormat.h"

#include <Qt>

// The item roles of the file table beyond Qt's own.
namespace TableRoles {
inline constexpr int SortValue = Qt::UserRole;    // 256: raw value for comparisons
inline constexpr int FullPath = Qt::UserRole + 1; // 257: the row's path, any column
inline constexpr int Format = Qt::UserRole + 2;   // 258: the format text, any column
} // namespace TableRoles
