#include "TableFontFit.h"

#include "FontSettings.h"

bool FitTableFontToRow(FontSettings& fonts, int cellHeight)
{
    if (!fonts.IsFitToCell())
        return false;
    const double size = cellHeight * 0.4;
    if (double(fonts.GetPointSize(FontSettings::Table)) == size)
        return false;
    fonts.SetPointSize(FontSettings::Table, int(size));
    return true;
}
