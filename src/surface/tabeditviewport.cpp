// TabEditView, the viewport: which rows are shown and how large, paging between them, the
// scrolled offset, and what the render gate sends on to the views.

#include "tabeditview.h"

#include <algorithm>
#include <cmath>

// Render gate: the views' flags say a render is queued, the gate sends one per row and event.

void TabEditView::queueColumnRender(int shownRow, int column)
{
    TabColumnView &view = showingTabRows[shownRow].tabColumnViews[column];
    view.renderNeeded = true;
    renderGate.queueColumn(shownRow, column);
}

void TabEditView::queueChordNamesRender(int shownRow)
{
    showingTabRows[shownRow].chordNamesDisplay.renderNeeded = true;
    renderGate.queueChordNames(shownRow);
}

void TabEditView::columnsRendered(int shownRow, const QList<int> &columns)
{
    // Rows and columns may have gone since they were queued.
    if (shownRow < 0 || shownRow >= showingCount())
        return;
    QList<TabColumnView> &views = showingTabRows[shownRow].tabColumnViews;
    QList<int> due;
    for (int column : columns) {
        if (column >= 0 && column < views.size()) {
            views[column].renderNeeded = false;
            due.append(column);
        }
    }
    if (!due.isEmpty())
        Q_EMIT columnsNeedRender(shownRow, due);
}

void TabEditView::chordNamesRendered(int shownRow)
{
    if (shownRow < 0 || shownRow >= showingCount())
        return;
    showingTabRows[shownRow].chordNamesDisplay.render();
    Q_EMIT chordNamesNeedRender(shownRow);
}

// Scrolling

void TabEditView::scrollToShowFrame(const QRectF &frame)
{
    scrollToShowX(frame.left(), frame.right());
    scrollToShowY(frame.top(), frame.bottom());
}

void TabEditView::scrollToShowX(double minX, double maxX)
{
    double x = contentOffset.x();
    if (x > minX) {
        x = minX;
    } else {
        const double wanted = std::min(contentSize.width() - frameSize.width(),
                                       maxX - frameSize.width() + rightMarginWidth);
        if (wanted <= x)
            return;
        x = std::max(wanted, 0.0);
    }
    setContentOffset(QPointF(x, contentOffset.y()));
}

void TabEditView::scrollToShowY(double minY, double maxY)
{
    const double limit =
        std::min(contentSize.height() - frameSize.height(), maxY - frameSize.height());
    const double y = contentOffset.y();
    if (y > minY)
        setContentOffset(QPointF(contentOffset.x(), std::max(minY, 0.0)));
    else if (y < limit)
        setContentOffset(QPointF(contentOffset.x(), limit));
}

// Moving between rows

bool TabEditView::canShowTabRow(int row) const
{
    if (freeVerticalScroll)
        return row >= 0 && row < showingCount();
    return row >= 0 && row + showingCount() <= tabRows.size();
}

bool TabEditView::canMoveTabRow(int delta) const
{
    return canShowTabRow(tabRowIndex + delta);
}

void TabEditView::moveToTabRow(int row, bool exactTop, bool forceRefresh)
{
    // Typed text still waiting is written while its row is in view, before the rows move.
    if (pendingLyric)
        commitLyricsField();
    moveTabRowDelayTimer.stop();
    throttledRow.reset();
    if (!canShowTabRow(row))
        return;
    bool inView = tabRowIndex <= row && row < tabRowIndex + showingCount();
    if (inView && exactTop)
        inView = tabRowIndex == row;
    if (!freeVerticalScroll && !inView) {
        tabRowIndex = row;
        refreshShowingRows(false);
        notifyTabRowPosition();
        return;
    }
    if (forceRefresh) {
        refreshShowingRows(false);
        notifyTabRowPosition();
    }
    if (!freeVerticalScroll)
        return;
    editShowingTabRowIndex = row;
    placeEditHighlight();
    scrollToShowFrame(editColumnHighlight.value_or(editColumnFrame()));
}

void TabEditView::moveToTabRowThrottled(int row)
{
    const bool hadTimer = moveTabRowDelayTimer.isActive();
    moveTabRowDelayTimer.stop();
    throttledRow.reset();
    if (tabRowIndex == row)
        return;
    if (hadTimer) {
        throttledRow = row;
        moveTabRowDelayTimer.start();
        return;
    }
    moveToTabRow(row, true, false);
    // Started after the move, which stops any timer: the next call within 0.1 s then waits.
    moveTabRowDelayTimer.start();
}

void TabEditView::notifyTabRowPosition()
{
    if (tabRowChangeListener)
        tabRowChangeListener->tabRowPositionChanged(tabRowIndex, showingCount(),
                                                    int(tabRows.size()));
    Q_EMIT layoutChanged();
}

// Rows shown and their size

void TabEditView::setFreeVerticalScroll(bool free, double rowBandHeight, bool useDefaultHeight)
{
    freeVerticalScroll = free;
    baseTabRowHeightForFreeScroll = useDefaultHeight ? 200.0 : rowBandHeight - headerBandHeight();
    if (free) {
        rightMarginContentBlocker = true;
        rightMarginWidth = 20.0;
        contentSize.setWidth(tabWidth + 20.0);
    }
    layoutSubviews();
}

void TabEditView::setVisibleTabRowCount(int count)
{
    Q_ASSERT(count >= 1);
    count = std::max(count, 1);
    const double h = headerBandHeight();
    const double v = tabRowVertSpacing;
    const double oldHeight = tabRowHeight;
    if (freeVerticalScroll)
        tabRowHeight = baseTabRowHeightForFreeScroll;
    else
        tabRowHeight = (frameSize.height() - v * (count - 1)) / count - h;
    if (freeVerticalScroll)
        contentSize.setHeight((tabRowHeight + h) * count + v * (count - 1));

    const bool hideHeaders = settings.hideColHeaders;
    const bool headersChanged = std::any_of(
        showingTabRows.cbegin(), showingTabRows.cend(),
        [&](const VisibeTabRowView &view) { return view.chordNamesDisplay.hidden != hideHeaders; });
    if (showingCount() == count && tabRowHeight == oldHeight && !headersChanged)
        return;

    if (showingCount() < count && !freeVerticalScroll)
        moveToTabRow(std::max(std::min(int(tabRows.size()) - count, tabRowIndex), 0), false, false);

    while (showingCount() > count) {
        showingTabRows.removeLast();
        if (magicSelectionBox && magicSelectionBox->tabRowIndex == tabRowIndex + showingCount())
            clearMagicSelection();
    }

    double y = 0.0;
    for (VisibeTabRowView &view : showingTabRows) {
        view.tabRowFrame = QRectF(view.tabRowFrame.x(), y + h, tabWidth, tabRowHeight);
        view.lyricsField.frame.moveTop(y);
        view.chordNamesDisplay.frame.moveTop(y + lyricsHeightSpacing - 5.0);
        view.chordNamesDisplay.hidden = hideHeaders;
        view.chordNamesDisplay.requestRender();
        y += h + tabRowHeight + v;
    }
    for (int i = 0; i < showingCount(); ++i) {
        queueChordNamesRender(i);
        for (int j = 0; j < showingTabRows[i].tabColumnViews.size(); ++j)
            queueColumnRender(i, j);
    }

    const double inset = tabLeftInset();
    while (showingCount() < count) {
        const int row = tabRowIndex + showingCount();
        if (row == tabRows.size())
            appendBlankTabRow();
        const double top = showingCount() * tabRowPitch();
        VisibeTabRowView view;
        view.lyricsField.frame = QRectF(inset, top, tabWidth, 40.0);
        view.lyricsField.text = tabRows[row].lyricText().value_or(QString());
        view.lyricsField.fontSize = 24.0 * lyricsSizePercentage / 100.0;
        view.chordNamesDisplay.frame =
            QRectF(inset, top + lyricsHeightSpacing - 5.0, tabWidth, chordNamesDisplaySpacing);
        view.chordNamesDisplay.listener = this;
        view.chordNamesDisplay.hidden = hideHeaders;
        view.tabRowFrame = QRectF(inset, top + h, tabWidth, tabRowHeight);
        fillShownRow(view, row);
        showingTabRows.append(view);
        const int shown = showingCount() - 1;
        queueChordNamesRender(shown);
        for (int j = 0; j < showingTabRows[shown].tabColumnViews.size(); ++j)
            queueColumnRender(shown, j);
    }
    // The views are values: the listener must point at where they live now.
    for (VisibeTabRowView &view : showingTabRows)
        view.chordNamesDisplay.listener = this;

    editShowingTabRowIndex = std::min(showingCount() - 1, editShowingTabRowIndex);
    placeEditHighlight();
    if (cursor.editColumnItemIndicator)
        cursor.editColumnItemIndicator = itemIndicatorFrame();
    notifyTabRowPosition();
}

void TabEditView::rebuildShowingRowViews()
{
    for (int i = 0; i < showingCount(); ++i) {
        VisibeTabRowView &view = showingTabRows[i];
        view.tabRowFrame.setWidth(tabWidth);
        view.lyricsField.frame.setWidth(tabWidth);
        view.chordNamesDisplay.frame.setWidth(tabWidth);
        fillShownRow(view, tabRowIndex + i);
        queueChordNamesRender(i);
        for (int j = 0; j < view.tabColumnViews.size(); ++j)
            queueColumnRender(i, j);
    }
}

double TabEditView::trailingContentGap() const
{
    if (!freeVerticalScroll)
        return 0.0;
    return std::max(rightMarginWidth, frameSize.width() - tabLeftInset() - tabWidth);
}

void TabEditView::layoutSubviews()
{
    if (freeVerticalScroll) {
        const double inset = tabLeftInset();
        for (VisibeTabRowView &view : showingTabRows) {
            view.tabRowFrame.moveLeft(inset);
            view.lyricsField.frame.moveLeft(inset);
            view.chordNamesDisplay.frame.moveLeft(inset);
        }
        placeEditHighlight();
    }
    Q_EMIT layoutChanged();
}
