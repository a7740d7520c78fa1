#include "FitWindowGeometry.h"

#include <QtGlobal>

#include <algorithm>

namespace {

// Overlap of [a0, a0 + aLength) and [b0, b0 + bLength).
qint64 Overlap(qint64 a0, qint64 aLength, qint64 b0, qint64 bLength)
{
    return std::max<qint64>(0, std::min(a0 + aLength, b0 + bLength) - std::max(a0, b0));
}

} // namespace

QRect FitWindowGeometry(int left, int top, int width, int height, const QList<QRect>& screens)
{
    width = std::max(width, 1);
    height = std::max(height, 1);
    if (screens.isEmpty()) {
        constexpr int kFar = 1 << 20;
        return QRect(qBound(-kFar, left, kFar), qBound(-kFar, top, kFar), std::min(width, kFar),
                     std::min(height, kFar));
    }
    QRect screen = screens.first();
    qint64 best = 0;
    for (const QRect& candidate : screens) {
        const qint64 area = Overlap(left, width, candidate.left(), candidate.width()) *
                            Overlap(top, height, candidate.top(), candidate.height());
        if (area > best) {
            best = area;
            screen = candidate;
        }
    }
    width = std::min(width, screen.width());
    height = std::min(height, screen.height());
    const int x =
        int(qBound<qint64>(screen.left(), left, qint64(screen.left()) + screen.width() - width));
    const int y =
        int(qBound<qint64>(screen.top(), top, qint64(screen.top()) + screen.height() - height));
    return QRect(x, y, width, height);
}
