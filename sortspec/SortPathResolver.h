#pragma once

class QString;

// Turns a path as written in a sort CSV into the path of an existing file:
// one pair of enclosing double quotes is stripped, a relative path is taken
// against rootFolder, and a path without suffix tries ".wav", ".aif", ".aiff"
// and ".mp3". When nothing exists the unquoted text is returned as it stands.
QString ResolveSortPath(const QString& csvPath, const QString& rootFolder);
