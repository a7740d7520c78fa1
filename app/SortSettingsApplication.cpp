#include "SortSettingsApplication.h"

#include "WidgetTableBrowser.h"
#include "subFormSortSettings.h"

#include <QApplication>
#include <QMessageBox>

bool ApplySortSettings(subFormSortSettings* form, WidgetTableBrowser* browser)
{
    if (!form || !browser)
        return false;
    if (!form->isSortEnabled()) {
        browser->resetSortSpecification();
        return false;
    }
    // Checked but not analysed (or analysis failed): the table keeps its order.
    if (!form->isApplicable())
        return false;

    QApplication::setOverrideCursor(Qt::WaitCursor);
    QCoreApplication::processEvents();
    const SortEntryList entries = form->entries();
    const SortEntryList unmatched = browser->applySortSpecification(entries);
    form->markUnmatched(unmatched);
    QApplication::restoreOverrideCursor();

    if (!subFormSortSettings::nothingMatched(int(entries.size()), int(unmatched.size())))
        return false;
    QMessageBox::critical(form, subFormSortSettings::tr("Error"),
                          subFormSortSettings::noFilesToReorderMessage());
    return true;
}
