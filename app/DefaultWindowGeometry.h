#pragma once

#include <QRect>

// The window's first rectangle on a screen: 1350 x 600 centred, or the whole
// screen extent where the screen is smaller in that direction.
QRect DefaultWindowGeometry(const QRect& screen);
