#pragma once

#include <QString>

class QWidget;

// The one prompt for a bookmark's name, used by the menu, the star toggle and
// the bookmark manager: titled "Vex Tesk", without a help button. Returns
// false when the user cancels; the name may still be empty when confirmed.
bool AskBookmarkName(QWidget* parent, const QString& defaultName, QString* name);
