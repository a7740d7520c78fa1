#pragma once

#include "SearchCriteriaStruct.h"

#include <QWidget>

class QAction;
class QLineEdit;
class QTimer;
class QToolButton;
class TeskManager;

// The search bar: a name filter line and a button whose menu switches the
// advanced criteria on and off and opens their dialog.
class WidgetSearch final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WidgetSearch)
public:
    explicit WidgetSearch(QWidget* parent = nullptr);
    ~WidgetSearch() override;

    void SetManager(TeskManager* manager);

    QLineEdit* searchLine() const { return lineEdit; }
    QToolButton* searchButton() const { return button; }
    QAction* useDetailAction() const { return actionUseDetail; }
    QAction* openDetailAction() const { return actionOpenDetail; }
    bool isSearchEnabled() const { return enabledFlag; }
    // Typing waits this long for the next key before the table is filtered.
    static constexpr int kTypingPauseMs = 150;
    QTimer* typingTimer() const { return typingPause; }

signals:
    void SigSearchCriteriaApplied(SearchCriteriaStruct appliedCriteria, bool needRefresh);
    void SigSearchCriteriaRequired(SearchCriteriaStruct* criteria);

public slots:
    void SlotDisableSearchWidget();
    void SlotEnableSearchWidget();
    void SlotSearchExecute();
    void SlotFocusSearchTextbox();
    void SlotSearchButtonPushed();
    void SlotUseDetailSearchOrNotSelected(bool checked);
    void SlotSearchDetailSelected();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    SearchCriteriaStruct currentCriteria();
    void textEdited(const QString& text);

    QLineEdit* lineEdit;
    QToolButton* button;
    QAction* actionUseDetail;
    QAction* actionOpenDetail;
    QTimer* typingPause;
    bool enabledFlag = true;
};
