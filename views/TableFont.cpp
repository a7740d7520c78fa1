#include "TableFont.h"

#include "FontSettings.h"

#include <QFontMetrics>

namespace {

// Text three fifths of the row high reads like the header at the default row
// of 22 pixels (13-pixel text), whatever the screen's density.
constexpr double kTextShareOfRow = 0.6;
// A face with a tall line (many CJK faces) steps down until its line fits.
constexpr int kVerticalAir = 2;
constexpr int kSmallestPixelSize = 6;

} // namespace

int FittedPixelSize(const QFont& font, int rowHeight)
{
    QFont probe = font;
    int size = qMax(kSmallestPixelSize, qRound(rowHeight * kTextShareOfRow));
    for (; size > kSmallestPixelSize; --size) {
        probe.setPixelSize(size);
        if (QFontMetrics(probe).height() <= rowHeight - kVerticalAir)
            break;
    }
    return size;
}

QFont TableFont(const FontSettings& settings, int rowHeight)
{
    QFont font;
    const QString family = settings.GetFamily(FontSettings::Table);
    if (!family.isEmpty())
        font.setFamily(family);
    if (settings.IsFitToCell()) {
        font.setPixelSize(FittedPixelSize(font, rowHeight));
    } else if (settings.GetPointSize(FontSettings::Table) > 0) {
        font.setPointSize(settings.GetPointSize(FontSettings::Table));
    }
    return font;
}
