#pragma once

#include "AudioFileInfo.h"

#include <QMetaType>
#include <QString>
#include <QVector>

#include <memory>

// A file an analysis pass has finished, as handed to the table: its index in
// the pass's list, its path and its record (the registry's own, shared).
struct AnalyzedRow
{
    int row = -1;
    QString path;
    std::shared_ptr<const AudioFileInfo> record;
};

// Finished files in increasing row order; cheap to pass by value (shared).
using AnalyzedRows = QVector<AnalyzedRow>;

Q_DECLARE_METATYPE(AnalyzedRows)
