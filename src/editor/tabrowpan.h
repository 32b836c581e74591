#pragma once

#include <QObject>
#include <QRectF>
#include <QTimer>

#include <functional>

class TabEditView;
class TabScrollIndicator;

// The row pan: a vertical drag over the rows moves the window by one row at most, with the
// scroll indicator following. The screen shows the rows offset by panOffsetY and animates it
// home while panSettling; the surface itself moves only when the pan has settled. Rows that
// come or go at the window's edge slide the same way.
class TabRowPan : public QObject {
    Q_OBJECT
    Q_PROPERTY(double panOffsetY MEMBER panOffsetY NOTIFY panChanged)
    Q_PROPERTY(bool panSettling MEMBER panSettling NOTIFY panChanged)
    Q_PROPERTY(bool panning READ panning NOTIFY panChanged)
    Q_PROPERTY(int rowSlideFrom MEMBER rowSlideFrom NOTIFY rowSlideChanged)
    Q_PROPERTY(double rowSlideOffset MEMBER rowSlideOffset NOTIFY rowSlideChanged)
    Q_PROPERTY(bool rowSliding MEMBER rowSliding NOTIFY rowSlideChanged)

public:
    TabRowPan(TabEditView *surface, TabScrollIndicator *indicator, QObject *parent = nullptr);

    // Where a pan may start, in the surface's coordinates with the sideways scroll taken off;
    // empty while the editor's mode allows none.
    std::function<QRectF()> startArea;

    // The content's offset from its resting place; tabPanStartY is -1.0 when no pan runs.
    double tabPanStartY = -1.0;
    double panOffsetY = 0.0;
    bool panSettling = false;
    QTimer panSettleTimer;

    // A deleted row's slide: the shown rows from rowSlideFrom down stand rowSlideOffset lower
    // and come up over the gap while rowSliding.
    int rowSlideFrom = -1;
    double rowSlideOffset = 0.0;
    bool rowSliding = false;

    bool panning() const { return tabPanStartY >= 0; }

    // The gesture, in the surface's coordinates. Began answers whether the pan is taken.
    Q_INVOKABLE bool panBegan(double x, double y);
    Q_INVOKABLE void panMoved(double translationY);
    Q_INVOKABLE void panEnded(double velocityY);
    Q_INVOKABLE void panCancelled();
    void settleTabPan(int rowDelta, double targetOffset);

    // A row added below a window that can't grow: the rows come up from one row lower.
    void slideInFromBelow();
    // A row deleted from the shown row `shownRow`: the rows under it come up over the gap.
    void slideUpFrom(int shownRow);

Q_SIGNALS:
    void panChanged();
    void rowSlideChanged();

private:
    TabEditView *surface;
    TabScrollIndicator *indicator;
    int pendingRowDelta = 0;
};
