#pragma once

#include <QRect>

// The window's first rectangle on a screen: 600 high and `wantedWidth` wide
// (1350 at the least), centred, or the whole screen extent where the screen
// is smaller in that direction.
QRect DefaultWindowGeometry(const QRect& screen, int wantedWidth = 0);
