#include "editor/tabrowpan.h"

#include "editor/tabscrollindicator.h"
#include "surface/tabeditview.h"

#include <algorithm>
#include <cmath>

TabRowPan::TabRowPan(TabEditView *surfaceView, TabScrollIndicator *scrollIndicator, QObject *parent)
    : QObject(parent), surface(surfaceView), indicator(scrollIndicator)
{
    panSettleTimer.setSingleShot(true);
    panSettleTimer.setInterval(100);
    connect(&panSettleTimer, &QTimer::timeout, this, [this] {
        panSettling = false;
        panOffsetY = 0.0;
        surface->moveTabRowDelayTimer.stop();
        if (const int delta = std::exchange(pendingRowDelta, 0))
            surface->moveToTabRow(surface->tabRowIndex + delta, true, false);
        Q_EMIT panChanged();
    });
}

bool TabRowPan::panBegan(double x, double y)
{
    if (surface->freeVerticalScroll || panSettling)
        return false;
    const QRectF area = startArea ? startArea() : QRectF();
    x -= surface->contentOffset.x();
    if (area.isEmpty() || y <= area.top() || y >= area.bottom() || x < area.left() ||
        x >= area.right())
        return false;
    tabPanStartY = 0.0;
    indicator->holdForPan();
    Q_EMIT panChanged();
    return true;
}

void TabRowPan::panMoved(double translationY)
{
    if (!panning())
        return;
    panOffsetY = translationY;
    indicator->followPan(translationY, surface->tabRowPitch());
    Q_EMIT panChanged();
}

void TabRowPan::panEnded(double velocityY)
{
    if (!panning())
        return;
    const double pitch = surface->tabRowPitch();
    // A flick counts an eighth of a second of its speed, and a pan moves one row at most.
    int d = pitch > 0 ? int(std::round((velocityY * 0.125 + panOffsetY) / pitch)) : 0;
    d = std::clamp(d, -1, 1);
    if (!surface->canMoveTabRow(-d))
        d = 0;
    indicator->releaseAfterPan();
    tabPanStartY = -1.0;
    settleTabPan(-d, pitch * d);
}

void TabRowPan::panCancelled()
{
    if (!panning())
        return;
    indicator->releaseAfterPan();
    tabPanStartY = -1.0;
    settleTabPan(0, 0.0);
}

void TabRowPan::settleTabPan(int rowDelta, double targetOffset)
{
    // The screen animates the offset to its target over the settle time, then the rows move.
    panSettleTimer.stop();
    pendingRowDelta = rowDelta;
    panSettling = true;
    panOffsetY = targetOffset;
    Q_EMIT panChanged();
    panSettleTimer.start();
}

void TabRowPan::slideInFromBelow()
{
    panSettleTimer.stop();
    panOffsetY = surface->tabRowPitch();
    Q_EMIT panChanged();
    settleTabPan(0, 0.0);
}

void TabRowPan::slideUpFrom(int shownRow)
{
    rowSlideFrom = shownRow;
    rowSlideOffset = surface->tabRowPitch();
    rowSliding = false;
    Q_EMIT rowSlideChanged();
    // The screen shows the rows one row lower first, then animates them home over the settle
    // time of a pan.
    QTimer::singleShot(0, this, [this] {
        rowSliding = true;
        rowSlideOffset = 0.0;
        Q_EMIT rowSlideChanged();
        QTimer::singleShot(panSettleTimer.interval(), this, [this] {
            rowSliding = false;
            rowSlideFrom = -1;
            Q_EMIT rowSlideChanged();
        });
    });
}
