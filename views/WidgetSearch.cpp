#include "WidgetSearch.h"

#include "TeskManager.h"
#include "subFormSearch.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTimer>
#include <QToolButton>

WidgetSearch::WidgetSearch(QWidget* parent)
    : QWidget(parent)
    , lineEdit(new QLineEdit(this))
    , button(new QToolButton(this))
    , typingPause(new QTimer(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    lineEdit->setClearButtonEnabled(true);
    button->setIcon(QIcon(QStringLiteral(":/images/search.png")));
    button->setIconSize(QSize(24, 24));
    button->setPopupMode(QToolButton::MenuButtonPopup);
    button->setStyleSheet(
        QStringLiteral("QToolButton{padding-right: 13px;}QToolButton::menu-button{border: none;}"));
    layout->addWidget(lineEdit);
    layout->addWidget(button);

    auto* menu = new QMenu(button);
    actionUseDetail = menu->addAction(tr("Use Advanced Search Settings"));
    actionUseDetail->setCheckable(true);
    actionOpenDetail = menu->addAction(tr("Open Advanced Settings..."));
    button->setMenu(menu);

    typingPause->setSingleShot(true);
    typingPause->setInterval(kTypingPauseMs);
    connect(typingPause, &QTimer::timeout, this, &WidgetSearch::SlotSearchExecute);
    // The user's edits only: text set from the advanced dialog is applied there.
    connect(lineEdit, &QLineEdit::textEdited, this, &WidgetSearch::textEdited);
    connect(button, &QToolButton::clicked, this, &WidgetSearch::SlotSearchButtonPushed);
    connect(actionUseDetail, &QAction::triggered, this,
            &WidgetSearch::SlotUseDetailSearchOrNotSelected);
    connect(actionOpenDetail, &QAction::triggered, this, &WidgetSearch::SlotSearchDetailSelected);
}

WidgetSearch::~WidgetSearch() = default;

void WidgetSearch::SetManager(TeskManager* manager)
{
    connect(this, &WidgetSearch::SigSearchCriteriaApplied, manager,
            &TeskManager::SlotSearchCriteriaApplied);
    connect(this, &WidgetSearch::SigSearchCriteriaRequired, manager,
            &TeskManager::SlotSearchCriteriaRequired, Qt::DirectConnection);
    // Off from the moment a new list is in until its analysis ends. Not on the
    // root change itself: a root that does not exist starts no analysis, and
    // nothing would switch the bar on again.
    connect(manager, &TeskManager::SigFilePathListAcquired, this,
            &WidgetSearch::SlotDisableSearchWidget);
    connect(manager, &TeskManager::SigEndGetDetailInfo, this,
            &WidgetSearch::SlotEnableSearchWidget);
}

SearchCriteriaStruct WidgetSearch::currentCriteria()
{
    SearchCriteriaStruct criteria;
    emit SigSearchCriteriaRequired(&criteria);
    return criteria;
}

void WidgetSearch::textEdited(const QString& text)
{
    // Clearing the box (its x or deleting the text) shows every file at once.
    if (text.isEmpty()) {
        SlotSearchExecute();
        return;
    }
    typingPause->start();
}

void WidgetSearch::SlotSearchExecute()
{
    typingPause->stop();
    const QString text = lineEdit->text();
    SearchCriteriaStruct criteria = currentCriteria();
    if (text == criteria.name)
        return;
    criteria.name = text;
    emit SigSearchCriteriaApplied(criteria, enabledFlag);
}

void WidgetSearch::SlotSearchButtonPushed()
{
    SlotSearchExecute();
}

void WidgetSearch::SlotUseDetailSearchOrNotSelected(bool checked)
{
    SearchCriteriaStruct criteria = currentCriteria();
    criteria.useDetail = checked;
    emit SigSearchCriteriaApplied(criteria, enabledFlag);
}

void WidgetSearch::SlotSearchDetailSelected()
{
    auto* dialog = new subFormSearch(currentCriteria(), this);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    const SearchCriteriaStruct criteria = dialog->GetCriteria();
    delete dialog;
    if (!accepted)
        return;
    lineEdit->setText(criteria.name);
    actionUseDetail->setChecked(criteria.useDetail);
    emit SigSearchCriteriaApplied(criteria, enabledFlag);
}

void WidgetSearch::SlotDisableSearchWidget()
{
    enabledFlag = false;
    button->setEnabled(false);
    lineEdit->setEnabled(false);
    SlotSearchExecute();
}

void WidgetSearch::SlotEnableSearchWidget()
{
    enabledFlag = true;
    button->setEnabled(true);
    lineEdit->setEnabled(true);
}

void WidgetSearch::SlotFocusSearchTextbox()
{
    lineEdit->setFocus(Qt::ShortcutFocusReason);
}

void WidgetSearch::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        SlotSearchExecute();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}
