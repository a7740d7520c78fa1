#pragma once

#include <QList>
#include <QPair>
#include <QString>

// One line of a sort CSV: first the file path (as written, later resolved),
// second the comment. A plain pair so that the table model can take the list
// without knowing this library.
using SortEntry = QPair<QString, QString>;
using SortEntryList = QList<SortEntry>;
