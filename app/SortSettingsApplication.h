#pragma once

class WidgetTableBrowser;
class subFormSortSettings;

// Hands the Sort Settings window's analysed list to the file table, marks the
// entries that named no listed file, and explains when none matched. With
// "Use CSV file for sorting" unchecked the table drops its sort specification.
// Returns whether the "No files to reorder." box was shown.
bool ApplySortSettings(subFormSortSettings* form, WidgetTableBrowser* browser);
