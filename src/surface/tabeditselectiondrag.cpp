// TabEditView, dragging a selection: where the dragged block snaps, the cover that hides its
// source during a move, the edge scroll near the frame's edges, and the drop.

#include "tabeditview.h"

#include <algorithm>
#include <cmath>

std::optional<QRectF> TabEditView::makeSelectionDragView(QPointF point) const
{
    if (!magicSelectionBox)
        return std::nullopt;
    const SelectionBox &box = *magicSelectionBox;
    const int shown = shownIndexOfRow(box.tabRowIndex);
    if (shown < 0)
        return std::nullopt;
    const QRectF cells =
        box.cellFrame(tabColumnWidth, itemHeight(), 0, headerBandHeight() + tabRowPitch() * shown);
    const QPointF content(point.x() + contentOffset.x() - tabLeftInset(),
                          point.y() + contentOffset.y());
    // A drag starts only from inside the box.
    if (!cells.contains(content))
        return std::nullopt;
    return QRectF(cells.x() - contentOffset.x() + tabLeftInset(), cells.y() - contentOffset.y(),
                  cells.width() + 3.0, cells.height());
}

void TabEditView::makeSelectionCover(const QRectF &frame)
{
    magicSelectionMoveCover = frame.translated(contentOffset.x(), contentOffset.y());
    magicSelectionMoveCoverShown = false;
    Q_EMIT selectionChanged();
}

void TabEditView::showSelectionCover(bool show)
{
    if (!magicSelectionBox)
        return;
    const SelectionBox &box = *magicSelectionBox;
    const int shown = shownIndexOfRow(box.tabRowIndex);
    magicSelectionMoveCoverShown = show && shown >= 0 && magicSelectionMoveCover.has_value();
    if (magicSelectionMoveCoverShown) {
        magicSelectionMoveCover->moveTop(showingTabRows[shown].tabRowFrame.top() +
                                         itemHeight() * box.itemIndexStart);
    }
    if (shown >= 0) {
        // During a move the source's names show as gone; a copy leaves them.
        ChordNamesDisplay &display = showingTabRows[shown].chordNamesDisplay;
        if (show && box.hasHeaders())
            display.showOverlayBlanks(box.colHeaderStart);
        else
            display.clearOverlayBlanks();
        queueChordNamesRender(shown);
    }
    Q_EMIT selectionChanged();
}

void TabEditView::removeSelectionCover()
{
    if (!magicSelectionMoveCover)
        return;
    magicSelectionMoveCover.reset();
    magicSelectionMoveCoverShown = false;
    Q_EMIT selectionChanged();
}

QPointF TabEditView::dragSelectionMoved(double x, double y, double width, double height)
{
    const double inset = tabLeftInset();
    const double tx = x - inset;
    const double contentY = y + contentOffset.y();
    const double ih = itemHeight();
    const QRectF dragged(tx, contentY, width, height);
    int row = -1;
    for (int r = 0; r < showingCount() && row < 0; ++r) {
        const QRectF band =
            showingTabRows[r].tabRowFrame.adjusted(-8000.0 - inset, -ih / 2, 8000.0, ih / 2);
        if (band.contains(dragged))
            row = r;
    }
    QPointF result(x, y);
    if (row >= 0 && y >= -2.0 && y + height <= frameSize.height() + 2.0) {
        int column = std::max(0, int(std::round((contentOffset.x() + tx) / tabColumnWidth)));
        const double excess = tabColumnWidth * column + width - tabWidth;
        const bool allColumns = magicSelectionBox && magicSelectionBox->colIndexStart == 0 &&
                                magicSelectionBox->colIndexEnd == numTabColumns - 1;
        if (excess > 0) {
            column -= int(std::round(excess / tabColumnWidth));
            stopDragScroll();
        } else if (allColumns) {
            // Such a block can't move sideways: the scroll is left as it is.
        } else if (tx + width <= frameSize.width()) {
            if (tx < 0 && contentOffset.x() > 0)
                startDragScroll(DragScrollDirection::left);
            else
                stopDragScroll();
        } else if (contentOffset.x() < contentSize.width() - frameSize.width()) {
            startDragScroll(DragScrollDirection::right);
        }
        if (magicSelectionBox && magicSelectionBox->hasCells() && magicSelectionBox->hasHeaders()) {
            const SelectionBox &box = *magicSelectionBox;
            // The names shown are read from the row under the drag, as they stand there.
            ChordNamesDisplay &display = showingTabRows[row].chordNamesDisplay;
            const ChordNamesDisplay::Names &there = display.chordNames;
            ChordNamesDisplay::Names names;
            for (int c = box.colHeaderStart; c <= box.colHeaderEnd; ++c)
                names.append(c >= 0 && c < there.size() ? there[c] : std::nullopt);
            display.showOverlay(column + (box.colHeaderStart - box.colIndexStart), names);
            queueChordNamesRender(row);
        }
        const double rowTop = headerBandHeight() + tabRowPitch() * row;
        const int item = ih > 0 ? std::max(0, int(std::round((contentY - rowTop) / ih))) : 0;
        result = QPointF(tabColumnWidth * column - contentOffset.x() + inset,
                         rowTop + ih * item - contentOffset.y());
    } else {
        if (dragDir == DragScrollDirection::left || dragDir == DragScrollDirection::right)
            stopDragScroll();
        if (tx < frameSize.width()) {
            if (y + height > frameSize.height())
                startDragScroll(DragScrollDirection::down);
            else if (y < headerBandHeight())
                startDragScroll(DragScrollDirection::up);
            else
                stopDragScroll();
        }
    }
    if (!magicSelectionBox) {
        for (int r = 0; r < showingCount(); ++r) {
            showingTabRows[r].chordNamesDisplay.overlayChordNames.reset();
            showingTabRows[r].chordNamesDisplay.highlightIndices.clear();
            queueChordNamesRender(r);
        }
    }
    return result;
}

void TabEditView::dropSelection(bool copy, double x, double y, double width, double height)
{
    Q_UNUSED(width);
    stopDragScroll();
    removeSelectionCover();
    if (!magicSelectionBox)
        return;
    const SelectionBox source = *magicSelectionBox;
    const double rowHeight = tabRowHeight;
    double top = headerBandHeight() - contentOffset.y();
    int row = 0;
    while (row < showingCount() && top + rowHeight <= y) {
        ++row;
        top += rowHeight + headerBandHeight() + tabRowVertSpacing;
    }
    // The tolerances are the only grace: a drop elsewhere leaves the tab and the selection.
    const double localY = y - top;
    if (row >= showingCount() || localY < -5.0 || localY + height > rowHeight + 5.0 || y < -8.0 ||
        y + height > frameSize.height() + 8.0 || itemHeight() <= 0) {
        showSelection(source);
        return;
    }
    // The 2.0 absorbs rounding: the dragged view was snapped to the cells.
    const int column =
        int(std::trunc((contentOffset.x() + x - tabLeftInset() + 2.0) / tabColumnWidth));
    const int item = int(std::trunc((localY + 2.0) / itemHeight()));
    SelectionBox destination(column, source.columnCount(), item, source.itemCount(),
                             tabRowIndex + row);
    if (!source.hasCells())
        destination.itemIndexStart = destination.itemIndexEnd = -1;
    if (source.hasHeaders()) {
        destination.colHeaderStart = column + source.colHeaderStart - source.colIndexStart;
        destination.colHeaderEnd = destination.colHeaderStart + source.headerCount() - 1;
    }
    if (destination == source || destination.colIndexStart < 0 ||
        destination.colIndexEnd >= numTabColumns) {
        showSelection(source);
        return;
    }
    bool changed = false;
    if (copy) {
        changed = tabEdits()->writeBlock(destination, tabEdits()->readBlockItems(source),
                                         tabEdits()->readBlockChordNames(source));
    } else {
        changed = tabEdits()->moveBlock(source, destination);
    }
    if (!changed)
        showSelection(source);
}

void TabEditView::edgeScrollForPoint(double x)
{
    const double shownX = x - contentOffset.x();
    if (shownX > frameSize.width() - rightMarginWidth) {
        // Beyond the right edge with the end reached: whatever runs, runs on.
        if (contentOffset.x() < contentSize.width() - frameSize.width())
            startDragScroll(DragScrollDirection::right);
    } else if (shownX < 0 && contentOffset.x() > 0) {
        startDragScroll(DragScrollDirection::left);
    } else {
        stopDragScroll();
    }
}

void TabEditView::startDragScroll(DragScrollDirection direction)
{
    // A change of direction takes effect in the running timer.
    dragDir = direction;
    if (dragScrollStartTime != -1.0)
        return;
    dragScrollStartTime = uptime();
    const bool sideways =
        direction == DragScrollDirection::left || direction == DragScrollDirection::right;
    dragScrollTimer.setInterval(freeVerticalScroll ? 200 : sideways ? 300 : 520);
    dragScrollTimer.start();
}

void TabEditView::stopDragScroll()
{
    dragScrollStartTime = -1.0;
    dragScrollTimer.stop();
    dragDir.reset();
}

void TabEditView::dragScrollTick()
{
    if (dragScrollStartTime == -1.0 || !dragDir)
        return;
    // The block must hover at the edge a while before anything moves.
    if (uptime() - dragScrollStartTime < 0.9)
        return;
    const DragScrollDirection direction = *dragDir;
    auto step = [this](double from, double delta, double end, bool horizontal) {
        const double to = from + delta;
        if (!(to > 0 && to < end))
            stopDragScroll();
        const double limited = std::max(0.0, std::min(to, end));
        setContentOffset(horizontal ? QPointF(limited, contentOffset.y())
                                    : QPointF(contentOffset.x(), limited));
    };
    switch (direction) {
    case DragScrollDirection::left:
    case DragScrollDirection::right:
        step(contentOffset.x(),
             direction == DragScrollDirection::left ? -tabColumnWidth : tabColumnWidth,
             contentSize.width() - frameSize.width(), true);
        break;
    case DragScrollDirection::up:
    case DragScrollDirection::down:
        if (freeVerticalScroll) {
            step(contentOffset.y(), direction == DragScrollDirection::up ? -25.0 : 25.0,
                 contentSize.height() - frameSize.height(), false);
        } else {
            moveToTabRow(tabRowIndex + (direction == DragScrollDirection::up ? -1 : 1), true,
                         false);
        }
        break;
    }
}
