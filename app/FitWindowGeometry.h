#pragma once

#include <QList>
#include <QRect>

// A stored window rectangle placed on the screens there are now: on the screen
// it overlaps most (the first screen when it overlaps none), no larger than
// that screen's available area and wholly inside it. Without screens it is
// only kept within reach. The stored numbers may come from a damaged file, so
// they are taken as plain integers: a QRect could not hold every such value.
QRect FitWindowGeometry(int left, int top, int width, int height, const QList<QRect>& screens);
