// The page of TabViewController: rows made in batches, the first jump, the highlight box and
// the automatic scroll.
#include "tabviewcontroller.h"

#include <algorithm>

void TabViewController::setViewSize(double width, double height)
{
    if (width <= 0 || height <= 0)
        return;
    const bool sameSize = width == viewWidth && height == viewHeight;
    viewWidth = width;
    viewHeight = height;
    const double stack = std::max(1.0, width - 2 * sideMargin);
    if (sameSize && stack == rows->stackWidth)
        return;
    const bool firstSize = rows->stackWidth <= 0;
    rows->relayout(stack);
    ++layoutRevision;
    Q_EMIT entriesMoved();
    Q_EMIT entriesChanged();
    showHighlight();
    // Rows wait for a width: the first size starts them.
    if (firstSize && loaded && nextTabRowIndexToDisplay == 0)
        startDisplayRows();
}

void TabViewController::setIntroHeight(double height)
{
    const double h = height > 0 ? height + rows->spacing() : 0.0;
    if (h == rows->introHeight)
        return;
    rows->introHeight = h;
    rows->relayout(rows->stackWidth);
    ++layoutRevision;
    Q_EMIT entriesMoved();
    Q_EMIT entriesChanged();
    showHighlight();
}

void TabViewController::setScrollState(double contentY, bool dragging)
{
    pageContentY = contentY;
    userDragging = dragging;
}

double TabViewController::contentHeight() const
{
    return topMargin + rows->stackHeight() + bottomMargin;
}

QRectF TabViewController::entryFrame(int index) const
{
    if (index < 0 || index >= rows->entries.size())
        return {};
    return rows->entries[index].frame.translated(stackX(), stackTop());
}

int TabViewController::entryFirstRow(int index) const
{
    return index >= 0 && index < rows->entries.size() ? rows->entries[index].firstRow : -1;
}

int TabViewController::entryRowCount(int index) const
{
    return index >= 0 && index < rows->entries.size() ? rows->entries[index].rowCount : 0;
}

QRectF TabViewController::entryChildFrame(int index, int within) const
{
    if (index < 0 || index >= rows->entries.size() ||
        within >= rows->entries[index].childFrames.size() || within < 0)
        return {};
    return rows->entries[index].childFrames[within];
}

TabRowWithMarkupView TabViewController::rowViewForPaint(int entry, int within) const
{
    const ViewModeRowEntry &e = rows->entries[entry];
    const double width = e.childFrames[within].width();
    int lines = 0;
    if (rows->display.twoColumns) {
        for (int i = 0; i < e.rowCount; ++i)
            lines = std::max(lines,
                             int(rows->rowView(e.firstRow + i, width).lyricLines.size()));
    }
    return rows->rowView(e.firstRow + within, width, lines);
}

void TabViewController::startDisplayRows()
{
    // Nothing can be sized before the screen has a width; setViewSize starts the rows then.
    if (rows->stackWidth <= 0)
        return;
    displayBatch();
}

void TabViewController::displayBatch()
{
    displayDelayTimer.reset();
    if (nextTabRowIndexToDisplay == -1)
        return;
    const int rowCount = rows->rowCount();
    double h = 0.0;
    int pairs = 0;
    while (true) {
        if (nextTabRowIndexToDisplay >= rowCount) {
            nextTabRowIndexToDisplay = -1;
            showHighlight();
            std::weak_ptr<bool> guard = alive;
            timers->start(0.0, false, [this, guard] {
                if (const auto live = guard.lock(); live && *live)
                    firstJump();
            });
            return;
        }
        rows->append(rows->makeEntry(nextTabRowIndexToDisplay));
        const int index = int(rows->entries.size()) - 1;
        Q_EMIT entriesAppended(index, index);
        Q_EMIT entriesChanged();
        // A start in the middle of a long tab doesn't wait for the end of the building.
        if (nextTabRowIndexToDisplay > initialTabRowIndex + 4)
            firstJump();
        const double height = rows->entries[index].frame.height();
        h += height + rows->spacing();
        nextTabRowIndexToDisplay += twoColumns() ? 2 : 1;
        bool full = false;
        if (twoColumns()) {
            full = pairs > 3;
            pairs += 2;
        } else {
            full = viewHeight < h;
        }
        if (full) {
            showHighlight();
            displayDelayTimer = timers->start(batchDelay, false, [this] { displayBatch(); });
            return;
        }
    }
}

void TabViewController::firstJump()
{
    if (initialTabRowIndex == -1)
        return;
    const int index = initialTabRowIndex;
    initialTabRowIndex = -1;
    scrollToTabRowView(index);
    // Once more when the layout has settled.
    std::weak_ptr<bool> guard = alive;
    timers->start(firstJumpSettle, false, [this, guard, index] {
        if (const auto live = guard.lock(); live && *live)
            scrollToTabRowView(index);
    });
}

void TabViewController::scrollToTabRowView(int index)
{
    // The index counts entries; with two columns it isn't halved, so the page lands further
    // down than the row. Kept as the layout has always done it.
    if (index < 0 || index >= rows->entries.size())
        return;
    const double maxY = std::max(0.0, contentHeight() - viewHeight);
    const double y = std::clamp(stackTop() + rows->entries[index].frame.top() - 25.0, 0.0, maxY);
    pageContentY = y;
    Q_EMIT scrollRequested(y, false);
}

void TabViewController::showHighlight()
{
    const auto &point = sequence.lastHighlightIndex;
    if (!point || !viewConfigState.displayOptions.showTabContent)
        return;
    if (const auto rect = rows->columnRect(QPoint(int(point->x()), int(point->y()))))
        highlightFrame = *rect;
    Q_EMIT highlightChanged();
}

void TabViewController::scrollToHighlight()
{
    if (userDragging || highlightScrollInProgress || !highlightFrame)
        return;
    const QRectF box = highlightRect();
    // As long as the box is above the bottom of the page nothing moves; never back up.
    if (pageContentY + viewHeight >= box.bottom())
        return;
    const QPointF centre = highlightFrame->center();
    for (const ViewModeRowEntry &entry : std::as_const(rows->entries)) {
        if (!entry.frame.adjusted(-50, 0, 50, 0).contains(centre))
            continue;
        const double bottom = entry.frame.bottom() + stackTop();
        const double target = std::min(bottom - viewHeight + 20.0, contentHeight() - viewHeight);
        if (target > 0) {
            highlightScrollInProgress = true;
            pageContentY = target;
            Q_EMIT scrollRequested(target, true);
            std::weak_ptr<bool> guard = alive;
            timers->start(highlightScrollLock, false, [this, guard] {
                if (const auto live = guard.lock(); live && *live)
                    highlightScrollInProgress = false;
            });
        }
        return;
    }
}

void TabViewController::rebuildRows()
{
    nextTabRowIndexToDisplay = -1;
    initialTabRowIndex = -1;
    stopTimer(displayDelayTimer);
    rows->display = viewConfigState.displayOptions;
    rows->clear();
    rows->relayout(rows->stackWidth);
    ++layoutRevision;
    Q_EMIT entriesReset();
    Q_EMIT entriesMoved();
    Q_EMIT entriesChanged();
    nextTabRowIndexToDisplay = 0;
    startDisplayRows();
}
