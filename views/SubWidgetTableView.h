#pragma once

#include <QList>
#include <QTableView>
#include <QUrl>

#include <functional>

class GacManager;
class QAction;
class QMenu;
class QMimeData;

// The file table itself: keys, context menu, clipboard copy and the drag of
// files out of the program. Whether "Open with Nuendo" is offered is asked of
// the Nuendo connection manager (0 not connected, 1 waiting, 2 connected).
class SubWidgetTableView final : public QTableView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubWidgetTableView)
public:
    using ConnectionStateQuery = std::function<int()>;

    // `gac` may be null: then Nuendo is never offered.
    explicit SubWidgetTableView(GacManager* gac, QWidget* parent = nullptr);
    explicit SubWidgetTableView(ConnectionStateQuery nuendoState, QWidget* parent = nullptr);
    ~SubWidgetTableView() override;

    void setUpdateInformationEnabled(bool enabled);
    bool isUpdateInformationEnabled() const;

    // The menu offered on a right click, built anew for the current row; the
    // caller owns it.
    QMenu* createContextMenu(QWidget* parent);

    // The selected rows' full paths as local-file URLs; false when one of them
    // does not make a URL.
    bool selectedFileUrls(QList<QUrl>* urls) const;

    // What a copy puts on the clipboard for `urls`: the URI list, and outside
    // Windows also the list GNOME-family file managers paste from and the paths
    // as text. The caller owns it.
    static QMimeData* clipboardData(const QList<QUrl>& urls);

    // Where the last mouse press hit the viewport; a click in a plot cell seeks there.
    QPoint lastPressPosition() const { return pressPosition; }

signals:
    void SigPressSpaceKey();
    void SigPressEscKey();
    void SigPressRightKey();
    void SigPressAltUpKey();
    void SigPressAltDownKey();
    void SigPressUpKey();
    void SigPressDownKey();
    void SigShowInExplorer();
    void SigUpdateFilesCalled(QStringList files);
    void SigOpenByUsingExternal();
    void SigOpenByNuendo();

public slots:
    void SlotShowInExplorer();
    void SlotCopyToClip();
    void SlotUpdate();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;

private:
    ConnectionStateQuery connectionState;
    QPoint pressPosition;
    QAction* actShowInExplorer;
    QAction* actOpenExternal;
    QAction* actCopy;
    QAction* actUpdate;
    QAction* actOpenNuendo;
};
