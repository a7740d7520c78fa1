#include "DefaultWindowGeometry.h"

#include <QtGlobal>

namespace {

constexpr int kWidth = 1350;
constexpr int kHeight = 600;

} // namespace

QRect DefaultWindowGeometry(const QRect& screen, int wantedWidth)
{
    const int wide = qMax(kWidth, wantedWidth);
    int top = 0;
    int height = screen.height();
    if (screen.height() > kHeight) {
        top = (screen.height() - kHeight) / 2;
        height = kHeight;
    }
    int left = 0;
    int width = screen.width();
    if (screen.width() > wide) {
        left = (screen.width() - wide) / 2;
        width = wide;
    }
    return QRect(screen.left() + left, screen.top() + top, width, height);
}
