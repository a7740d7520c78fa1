#include "DefaultWindowGeometry.h"

namespace {

constexpr int kWidth = 1350;
constexpr int kHeight = 600;

} // namespace

QRect DefaultWindowGeometry(const QRect& screen)
{
    int top = 0;
    int height = screen.height();
    if (screen.height() > kHeight) {
        top = (screen.height() - kHeight) / 2;
        height = kHeight;
    }
    int left = 0;
    int width = screen.width();
    if (screen.width() > kWidth) {
        left = (screen.width() - kWidth) / 2;
        width = kWidth;
    }
    return QRect(left, top, width, height);
}
