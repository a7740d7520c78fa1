#pragma once

class QObject;
class QString;

// Shows a file or folder selected in the desktop's file manager: Explorer
// "/select," on Windows, the freedesktop FileManager1 service elsewhere,
// falling back to opening the containing folder when no file manager answers.
// Returns at once; the D-Bus answer is handled in `context`'s thread.
void RevealInFileManager(const QString& path, QObject* context);
