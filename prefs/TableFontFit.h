#pragma once

class FontSettings;

// "Fit to cell size": while the fit flag is on, the table font size follows
// 40 % of the row height. The stored size is an integer and is compared with
// the unrounded value, so a height whose 40 % is fractional stores again on
// every call; the truncated size is the same each time. Returns whether it stored.
bool FitTableFontToRow(FontSettings& fonts, int cellHeight);
