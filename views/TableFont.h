#pragma once

#include <QFont>

class FontSettings;

// The font of the file table's cells. With "Fit to cell size" the text is
// sized in pixels from the row height, so that a 22-pixel row reads like the
// header on any screen; otherwise it has the size the user chose. The family
// is the table family, or the application font's.
QFont TableFont(const FontSettings& settings, int rowHeight);

// Three fifths of `rowHeight` in pixels, less where `font`'s line would not
// fit the row; at least 6.
int FittedPixelSize(const QFont& font, int rowHeight);
