#include "BookmarkNameDialog.h"

#include <QCoreApplication>
#include <QInputDialog>

bool AskBookmarkName(QWidget* parent, const QString& defaultName, QString* name)
{
    bool ok = false;
    const QString text = QInputDialog::getText(
        parent, QStringLiteral("Vex Tesk"),
        QCoreApplication::translate("subFormBookmark", "Bookmark Name"), QLineEdit::Normal,
        defaultName, &ok, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    if (ok && name)
        *name = text;
    return ok;
}
