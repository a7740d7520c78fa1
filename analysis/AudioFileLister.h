#pragma once

#include <QList>
#include <QString>

#include <functional>

// The file-list rules shared by the list worker and tesk-scan: files, FIFOs,
// sockets and dangling links (and hidden ones when asked) under `root`, subfolders only when
// recursive, kept when IsSupportedAudioFile says so, as absolute paths in the iterator's order.
// Names that are not valid UTF-8 are listed too, decoded with replacement characters. `cancelled`
// is asked before every step; when it answers true the walk stops at once, sets *wasCancelled and
// returns what it had.
QList<QString> ListAudioFiles(const QString& root, bool recursive, bool showHidden,
                              const std::function<bool()>& cancelled, bool* wasCancelled = nullptr);
