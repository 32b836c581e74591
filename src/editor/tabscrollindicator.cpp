#include "tabscrollindicator.h"

#include "surface/tabeditview.h"

#include <algorithm>
#include <cmath>

TabScrollIndicator::TabScrollIndicator(TabEditView *surfaceView, QObject *parent)
    : QObject(parent), surface(surfaceView)
{
    indicatorFadeTimer.setSingleShot(true);
    indicatorFadeTimer.setInterval(1000);
    connect(&indicatorFadeTimer, &QTimer::timeout, this, [this] {
        indicatorShown = false;
        Q_EMIT indicatorChanged();
    });
    connect(surface, &TabEditView::layoutChanged, this, &TabScrollIndicator::indicatorChanged);
}

bool TabScrollIndicator::indicatorVisible() const
{
    return !surface->freeVerticalScroll && surface->tabRows.size() > surface->showingCount();
}

double TabScrollIndicator::scrubberHeight() const
{
    const int total = int(surface->tabRows.size());
    if (total < 1)
        return viewHeight;
    return std::max(36.0, viewHeight * surface->showingCount() / total);
}

double TabScrollIndicator::singlePositionHeight() const
{
    const int positions = int(surface->tabRows.size()) - surface->showingCount();
    if (positions < 1)
        return 0.0;
    return (viewHeight - scrubberHeight()) / positions;
}

double TabScrollIndicator::scrubberY() const
{
    if (dragScrubberY >= 0)
        return std::clamp(dragScrubberY, 0.0, std::max(viewHeight - scrubberHeight(), 0.0));
    return surface->tabRowIndex * singlePositionHeight();
}

void TabScrollIndicator::showIndicatorThenFade()
{
    indicatorShown = true;
    indicatorFadeTimer.start();
    Q_EMIT indicatorChanged();
}

void TabScrollIndicator::rowPositionChanged()
{
    if (!touchScrollStartLoc)
        lastStaticPosY = scrubberY();
    Q_EMIT indicatorChanged();
}

void TabScrollIndicator::holdForPan()
{
    indicatorFadeTimer.stop();
    indicatorShown = true;
    dragScrubberY = lastStaticPosY;
    Q_EMIT indicatorChanged();
}

void TabScrollIndicator::followPan(double translationY, double rowPitch)
{
    if (rowPitch > 0)
        dragScrubberY = lastStaticPosY - translationY / rowPitch * singlePositionHeight();
    Q_EMIT indicatorChanged();
}

void TabScrollIndicator::releaseAfterPan()
{
    dragScrubberY = -1.0;
    showIndicatorThenFade();
}

void TabScrollIndicator::indicatorTouchBegan(double y)
{
    if (surface->freeVerticalScroll || touchScrollStartLoc || !indicatorVisible())
        return;
    touchScrollStartLoc = y;
    lastStaticPosY = scrubberY();
    dragScrubberY = lastStaticPosY;
    indicatorFadeTimer.stop();
    indicatorShown = true;
    Q_EMIT indicatorChanged();
}

void TabScrollIndicator::indicatorTouchMoved(double y)
{
    if (!touchScrollStartLoc)
        return;
    dragScrubberY = lastStaticPosY + y - *touchScrollStartLoc;
    const double single = singlePositionHeight();
    if (single > 0) {
        const int row = int(std::round(scrubberY() / single));
        surface->moveToTabRowThrottled(row);
    }
    Q_EMIT indicatorChanged();
}

void TabScrollIndicator::indicatorTouchEnded()
{
    if (!touchScrollStartLoc)
        return;
    const double single = singlePositionHeight();
    const int row = single > 0 ? int(std::round(scrubberY() / single)) : surface->tabRowIndex;
    touchScrollStartLoc.reset();
    dragScrubberY = -1.0;
    surface->moveToTabRow(row, true, false);
    lastStaticPosY = scrubberY();
    showIndicatorThenFade();
}

void TabScrollIndicator::indicatorTouchCancelled()
{
    if (!touchScrollStartLoc)
        return;
    touchScrollStartLoc.reset();
    dragScrubberY = -1.0;
    showIndicatorThenFade();
}
