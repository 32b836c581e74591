#include "tabeditview.h"

#include "music/notefromfretshelper.h"
#include "services/lgundomanager.h"
#include "surfacelog.h"

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcSurface, "lutegrid.surface")

namespace {

int clampIndex(int value, int low, int high)
{
    return high < low ? low : std::clamp(value, low, high);
}

int truncated(double value)
{
    return int(std::trunc(value));
}

} // namespace

TabEditView::TabEditView(QObject *parent) : QObject(parent)
{
    colChangeVisualTimer.setSingleShot(true);
    colChangeVisualTimer.setInterval(200);
    connect(&colChangeVisualTimer, &QTimer::timeout, this, &TabEditView::placeEditHighlight);
    moveTabRowDelayTimer.setSingleShot(true);
    moveTabRowDelayTimer.setInterval(100);
    connect(&moveTabRowDelayTimer, &QTimer::timeout, this, [this] {
        if (const std::optional<int> row = std::exchange(throttledRow, std::nullopt))
            moveToTabRow(*row, true, false);
    });
    lyricChangeTimer.setSingleShot(true);
    lyricChangeTimer.setInterval(1000);
    connect(&lyricChangeTimer, &QTimer::timeout, this, &TabEditView::commitLyricsField);
    connect(&forceGestureRecognizer, &ForceLongPressGestureRecognizer::stateChanged, this,
            &TabEditView::handleForceTouch);

    setNumTabColumns(32);
    // A placeholder row until a tab is loaded.
    tabRows.append(TabRowData(32, 6));
    editColumnHighlight = editColumnFrame();
}

TabEditView::~TabEditView() = default;

double TabEditView::headerBandHeight() const
{
    return lyricsHeightSpacing + (settings.hideColHeaders ? 0.0 : chordNamesDisplaySpacing);
}

double TabEditView::tabRowPitch() const
{
    return headerBandHeight() + tabRowHeight + tabRowVertSpacing;
}

double TabEditView::itemHeight() const
{
    return stringNotes.isEmpty() ? 0.0 : tabRowHeight / stringNotes.size();
}

double TabEditView::tabLeftInset() const
{
    if (!freeVerticalScroll)
        return 0.0;
    return std::max(0.0, (frameSize.width() - tabWidth - rightMarginWidth) * 0.5);
}

int TabEditView::shownIndexOfRow(int row) const
{
    const int shown = row - tabRowIndex;
    return shown >= 0 && shown < showingCount() ? shown : -1;
}

QRectF TabEditView::columnFrame(int row, int column) const
{
    Q_UNUSED(row);
    return SelectionBox(column, 1, 0, stringCount(), 0)
        .cellFrame(tabColumnWidth, itemHeight(), 0, 0)
        .adjusted(-2.0, -2.0, 2.0, 2.0);
}

// Position and content

void TabEditView::loadTabRows(const QList<TabRowData> &rows)
{
    tabRows = rows;
    tabRowIndex = 0;
    if (!tabRows.isEmpty())
        setNumTabColumns(int(tabRows.first().colDatas.size()));
    refreshShowingRows(false);
}

void TabEditView::replaceTabRows(const QList<TabRowData> &rows)
{
    tabRows = rows;
    if (!tabRows.isEmpty())
        setNumTabColumns(int(tabRows.first().colDatas.size()));
    while (tabRows.size() < showingTabRows.size())
        tabRows.append(TabRowData(numTabColumns, stringCount()));
    moveToTabRow(std::min(tabRowIndex, int(tabRows.size()) - showingCount()), false, true);
}

void TabEditView::setNumTabColumns(int count)
{
    if (count == numTabColumns)
        return;
    numTabColumns = count;
    tabWidth = tabColumnWidth * count;
    contentSize.setWidth(tabWidth + rightMarginWidth);
    rebuildShowingRowViews();
    editColIndex = std::min(editColIndex, count - 1);
    notifyColumnCountChange();
    Q_EMIT layoutChanged();
}

void TabEditView::notifyColumnCountChange()
{
    if (tabRowChangeListener)
        tabRowChangeListener->tabWidthChanged(tabWidth);
}

void TabEditView::refreshShowingRows(bool forceRender)
{
    const bool hideHeaders = settings.hideColHeaders;
    for (int i = 0; i < showingCount(); ++i) {
        const int row = tabRowIndex + i;
        if (row < 0 || row >= tabRows.size())
            continue;
        const TabRowData &model = tabRows[row];
        VisibeTabRowView &view = showingTabRows[i];
        view.lyricsField.text = model.lyricText().value_or(QString());

        ChordNamesDisplay::Names names;
        names.reserve(model.colDatas.size());
        for (const TabColumnData &column : model.colDatas)
            names.append(column.chordName);
        if (view.chordNamesDisplay.chordNames != names || forceRender)
            view.chordNamesDisplay.setChordNames(names);
        view.chordNamesDisplay.hidden = hideHeaders;
        if (view.chordNamesDisplay.renderNeeded)
            queueChordNamesRender(i);

        if (view.tabColumnViews.size() != model.colDatas.size()) {
            // A row of another width than the views: build them again for it.
            fillShownRow(view, row);
            for (int j = 0; j < view.tabColumnViews.size(); ++j)
                queueColumnRender(i, j);
        } else {
            for (int j = 0; j < view.tabColumnViews.size(); ++j) {
                TabColumnView &columnView = view.tabColumnViews[j];
                const bool renderNow =
                    forceRender || !columnView.tabColData.isSameColumn(model.colDatas[j]);
                columnView.tabColData = model.colDatas[j];
                columnView.fitSelection();
                if (renderNow)
                    queueColumnRender(i, j);
            }
        }
        Q_EMIT shownRowChanged(i);
    }
    if (magicEditMode && magicSelectionBox)
        showMagicSelection();
}

void TabEditView::fillShownRow(VisibeTabRowView &view, int row)
{
    view.tabColumnViews.clear();
    if (row < 0 || row >= tabRows.size())
        return;
    const TabRowData &model = tabRows[row];
    view.tabColumnViews.reserve(model.colDatas.size());
    for (const TabColumnData &column : model.colDatas)
        view.tabColumnViews.append(TabColumnView(column));
    ChordNamesDisplay::Names names;
    for (const TabColumnData &column : model.colDatas)
        names.append(column.chordName);
    view.chordNamesDisplay.setChordNames(names);
}

void TabEditView::setFrameSize(const QSizeF &size)
{
    if (size == frameSize)
        return;
    frameSize = size;
    layoutSubviews();
}

void TabEditView::setContentOffset(const QPointF &offset)
{
    if (offset == contentOffset)
        return;
    contentOffset = offset;
    Q_EMIT contentOffsetChanged();
}

// Render gate: many changes in one event give one redraw per column.

void TabEditView::queueColumnRender(int shownRow, int column)
{
    TabColumnView &view = showingTabRows[shownRow].tabColumnViews[column];
    if (view.renderNeeded)
        return;
    view.renderNeeded = true;
    queueFlush();
}

void TabEditView::queueChordNamesRender(int shownRow)
{
    showingTabRows[shownRow].chordNamesDisplay.renderNeeded = true;
    queueFlush();
}

void TabEditView::queueFlush()
{
    if (flushQueued)
        return;
    flushQueued = true;
    QMetaObject::invokeMethod(this, &TabEditView::flushRenders, Qt::QueuedConnection);
}

void TabEditView::flushRenders()
{
    flushQueued = false;
    for (int i = 0; i < showingCount(); ++i) {
        VisibeTabRowView &view = showingTabRows[i];
        QList<int> columns;
        for (int j = 0; j < view.tabColumnViews.size(); ++j) {
            if (view.tabColumnViews[j].renderNeeded) {
                view.tabColumnViews[j].renderNeeded = false;
                columns.append(j);
            }
        }
        if (!columns.isEmpty())
            Q_EMIT columnsNeedRender(i, columns);
        if (view.chordNamesDisplay.renderNeeded) {
            view.chordNamesDisplay.render();
            Q_EMIT chordNamesNeedRender(i);
        }
    }
}

// Cursor

void TabEditView::setEditPosition(int column, int shownRow)
{
    if (preEditColumnData)
        return;
    editColIndex = clampIndex(column, 0, numTabColumns - 1);
    editShowingTabRowIndex = clampIndex(shownRow, 0, showingCount() - 1);
    placeEditHighlight();
    if (editHighlightListener)
        editHighlightListener->editHighlightMoved(editColIndex < 1,
                                                  editColIndex >= numTabColumns - 1);
    scrollToShowFrame(editColumnHighlight.value_or(editColumnFrame()));
}

void TabEditView::scrollToShowFrame(const QRectF &frame)
{
    scrollToShowX(frame.left(), frame.right());
    scrollToShowY(frame.top(), frame.bottom());
}

void TabEditView::setEditItem(int index)
{
    if (preEditColumnData)
        return;
    editColItemIndex = clampIndex(index, 0, stringCount() - 1);
    if (editColumnItemIndicator)
        editColumnItemIndicator = itemIndicatorFrame();
}

void TabEditView::moveEditItem(int delta)
{
    // The sum is stored before the press is looked at: during a press it stays unclamped.
    editColItemIndex += delta;
    if (preEditColumnData)
        return;
    editColItemIndex = clampIndex(editColItemIndex, 0, stringCount() - 1);
    if (editColumnItemIndicator)
        editColumnItemIndicator = itemIndicatorFrame();
}

QRectF TabEditView::itemIndicatorFrame() const
{
    if (tabRowHeight == 0)
        return QRectF();
    if (stringCount() == 0)
        return QRectF(0, 0, 0, 0);
    return QRectF(0, tabRowHeight * (editColItemIndex + 1) / stringCount() - editColBorderWidth,
                  editColBorderWidth + tabColumnWidth, editColBorderWidth);
}

QRectF TabEditView::editColumnFrame() const
{
    return QRectF(tabLeftInset() + tabColumnWidth * editColIndex - editColBorderWidth * 0.5,
                  headerBandHeight() + tabRowPitch() * editShowingTabRowIndex,
                  editColBorderWidth + tabColumnWidth, tabRowHeight);
}

void TabEditView::placeEditHighlight()
{
    if (editColumnHighlight)
        editColumnHighlight = editColumnFrame();
    for (int i = 0; i < showingCount(); ++i) {
        ChordNamesDisplay &display = showingTabRows[i].chordNamesDisplay;
        const bool wasHighlighted = !display.highlightIndices.isEmpty();
        display.highlight(std::nullopt, true);
        if (i == editShowingTabRowIndex)
            display.highlight(editColIndex, false);
        if (wasHighlighted || i == editShowingTabRowIndex)
            Q_EMIT chordNamesNeedRender(i);
    }
    Q_EMIT highlightChanged();
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

void TabEditView::touchesBegan(const QList<QPointF> &points)
{
    const double h = headerBandHeight();
    const double p = tabRowPitch();
    for (const QPointF &point : points) {
        if (magicEditMode || p <= 0)
            continue;
        const double x = point.x();
        const double y = point.y();
        // The lyric and chord bands above a row are not the row.
        if (y < h + p * std::floor(y / p))
            continue;
        const int column = truncated((x - tabLeftInset()) / tabColumnWidth);
        const int shownRow = truncated(y / p);
        setEditPosition(column, shownRow);
        const double itemH = itemHeight();
        const int item = itemH > 0 ? truncated((y - (h + p * shownRow)) / itemH) : 0;
        if (!preEditColumnData) {
            editColItemIndex = clampIndex(item, 0, stringCount() - 1);
            if (editColumnItemIndicator)
                editColumnItemIndicator = itemIndicatorFrame();
        }
    }
}

// Shape

TabEditView::Message TabEditView::addColumnAtCursor()
{
    return insertColumn(cursorTabRow(), editColIndex, TabColumnData(stringCount()));
}

TabEditView::Message TabEditView::insertColumn(int row, int column, const TabColumnData &columnData)
{
    if (numTabColumns >= maxNumTabColumns)
        return u"Maximum column count "_qs + QString::number(maxNumTabColumns);
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (row < 0 || row >= tabRows.size())
        return std::nullopt;
    for (int r = 0; r < tabRows.size(); ++r) {
        TabRowData &model = tabRows[r];
        if (r == row)
            model.colDatas.insert(std::clamp(column, 0, int(model.colDatas.size())), columnData);
        else
            model.colDatas.append(TabColumnData(model.stringCount));
    }
    editShowingTabRowIndex =
        std::max(0, std::min(showingCount() - 1, std::max(row - tabRowIndex, 0)));
    showColumnChange(column);
    setNumTabColumns(numTabColumns + 1);
    registerSurfaceUndo(row, columnFrame(row, column),
                        [row, column](TabEditView &view) { view.removeColumn(row, column); });
    return std::nullopt;
}

TabEditView::Message TabEditView::removeColumn(int row, int column)
{
    // One above the number the message names: 13 is the least that removing reaches.
    if (numTabColumns <= minNumTabColumns + 1)
        return u"Minimum column count "_qs + QString::number(minNumTabColumns);
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (row < 0 || row >= tabRows.size() || column < 0 || column >= tabRows[row].colDatas.size())
        return std::nullopt;
    for (int r = 0; r < tabRows.size(); ++r) {
        if (r == row)
            continue;
        const TabRowData &model = tabRows[r];
        if (model.colDatas.isEmpty())
            continue;
        const TabColumnData &last = model.colDatas.last();
        if (!last.isSameColumn(TabColumnData(int(last.columnItems.size()))))
            return u"Can't remove column because of notes at end of tab row "_qs +
                   QString::number(r + 1);
    }
    TabColumnData removed;
    for (int r = 0; r < tabRows.size(); ++r) {
        TabRowData &model = tabRows[r];
        if (r == row)
            removed = model.colDatas.takeAt(column);
        else if (!model.colDatas.isEmpty())
            model.colDatas.removeLast();
    }
    editShowingTabRowIndex =
        std::max(0, std::min(showingCount() - 1, std::max(row - tabRowIndex, 0)));
    showColumnChange(column);
    setNumTabColumns(numTabColumns - 1);
    registerSurfaceUndo(row, columnFrame(row, column), [row, column, removed](TabEditView &view) {
        // Refused at the maximum: the step is spent all the same.
        view.insertColumn(row, column, removed);
    });
    return std::nullopt;
}

void TabEditView::showColumnChange(int column)
{
    colChangeVisualTimer.stop();
    editColIndex = column;
    placeEditHighlight();
    if (editColumnHighlight) {
        // A thin line between two columns shows where the column went.
        editColumnHighlight->setWidth(editColBorderWidth);
        Q_EMIT highlightChanged();
    }
    colChangeVisualTimer.start();
}

void TabEditView::insertTabRow(int index, const TabRowData &rowData)
{
    if (index < 0 || index > tabRows.size())
        return;
    const int count = int(tabRows.size());
    tabRows.insert(index, rowData);
    if (count < visibleTabRowCountPotential && tabRowChangeListener)
        tabRowChangeListener->tabRowCountChanged();
    const int target = freeVerticalScroll ? index : std::max(index - showingCount() + 1, 0);
    moveToTabRow(target, true, true);
    registerSurfaceUndo(std::nullopt, std::nullopt,
                        [index](TabEditView &view) { view.removeTabRow(index); });
}

void TabEditView::removeTabRow(int index)
{
    if (index < 0 || index >= tabRows.size())
        return;
    const TabRowData removed = tabRows.takeAt(index);
    if (tabRows.size() < showingTabRows.size() && tabRowChangeListener)
        tabRowChangeListener->tabRowCountChanged();
    const int last = int(tabRows.size()) - showingCount();
    moveToTabRow(freeVerticalScroll || last >= index ? index : last, false, true);
    registerSurfaceUndo(std::nullopt, std::nullopt,
                        [index, removed](TabEditView &view) { view.insertTabRow(index, removed); });
}

void TabEditView::appendBlankTabRow()
{
    tabRows.append(TabRowData(numTabColumns, stringCount()));
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
    if (editColumnItemIndicator)
        editColumnItemIndicator = itemIndicatorFrame();
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

// Undo

void TabEditView::registerSurfaceUndo(std::optional<int> row, std::optional<QRectF> scrollFrame,
                                      UndoHandler handler)
{
    if (row && !freeVerticalScroll)
        moveToTabRow(*row, false, false);
    if (scrollFrame) {
        QRectF frame = *scrollFrame;
        if (freeVerticalScroll)
            frame.moveTop(headerBandHeight() + tabRowPitch() * row.value_or(tabRowIndex));
        scrollToShowFrame(frame);
    }
    if (docUndoManager) {
        QPointer<TabEditView> target(this);
        docUndoManager->registerUndo([target, handler = std::move(handler)] {
            if (target)
                handler(*target);
        });
    }
    if (undoListener)
        undoListener->undoStateChanged();
}

void TabEditView::undoEdit()
{
    if (!docUndoManager || !docUndoManager->canUndo())
        return;
    docUndoManager->undo();
    if (undoListener)
        undoListener->undoStateChanged();
}

void TabEditView::redoEdit()
{
    if (!docUndoManager || !docUndoManager->canRedo())
        return;
    docUndoManager->redo();
    if (undoListener)
        undoListener->undoStateChanged();
}

// Column items

TabColumnData *TabEditView::cursorColumn()
{
    const int row = cursorTabRow();
    if (row < 0 || row >= tabRows.size() || editColIndex < 0 ||
        editColIndex >= tabRows[row].colDatas.size())
        return nullptr;
    return &tabRows[row].colDatas[editColIndex];
}

const TabColumnData *TabEditView::cursorColumn() const
{
    const int row = cursorTabRow();
    if (row < 0 || row >= tabRows.size() || editColIndex < 0 ||
        editColIndex >= tabRows[row].colDatas.size())
        return nullptr;
    return &tabRows[row].colDatas[editColIndex];
}

void TabEditView::writeColumn(int row, int column, const TabColumnData &data)
{
    TabColumnData &model = tabRows[row].colDatas[column];
    model.columnItems = data.columnItems;
    model.chordName = data.chordName;
    const int shown = shownIndexOfRow(row);
    if (shown < 0 || column >= showingTabRows[shown].tabColumnViews.size())
        return;
    if (showingTabRows[shown].tabColumnViews[column].setColumnData(data))
        queueColumnRender(shown, column);
}

std::optional<ColumnItemType> TabEditView::pressFret(int stringNumber, qint64 fret)
{
    const TabColumnData *column = cursorColumn();
    if (!column)
        return std::nullopt;
    // A second finger during the same press keeps the first snapshot: one undo step.
    if (!preEditColumnData)
        preEditColumnData = column->deepCopy();
    const int index = stringNumber - 1;
    if (index < 0 || index >= column->columnItems.size())
        return std::nullopt;
    const ColumnItemType pressed = ColumnItemType::note(fret);
    const ColumnItemType item =
        column->columnItems[index] == pressed ? ColumnItemType::blank() : pressed;
    if (column->columnItems[index] != item) {
        TabColumnData changed = *column;
        changed.setColumnItem(index, item);
        writeColumn(cursorTabRow(), editColIndex, changed);
    }
    return item;
}

bool TabEditView::commitFretPress()
{
    if (!preEditColumnData)
        return false;
    const TabColumnData snapshot = *std::exchange(preEditColumnData, std::nullopt);
    const TabColumnData *column = cursorColumn();
    if (!column || column->isSameColumn(snapshot))
        return false;
    bool added = false;
    for (int i = 0; i < column->columnItems.size(); ++i) {
        const ColumnItemType &item = column->columnItems[i];
        if (!item.isBlank() &&
            (i >= snapshot.columnItems.size() || snapshot.columnItems[i] != item))
            added = true;
    }
    const int row = cursorTabRow();
    const int col = editColIndex;
    registerSurfaceUndo(row, columnFrame(row, col), [row, col, snapshot](TabEditView &view) {
        view.replaceColumn(row, col, snapshot);
    });
    return added;
}

void TabEditView::cancelFretPress()
{
    if (!preEditColumnData)
        return;
    const TabColumnData snapshot = *std::exchange(preEditColumnData, std::nullopt);
    if (cursorColumn())
        writeColumn(cursorTabRow(), editColIndex, snapshot);
}

void TabEditView::putItemAtCursor(const QString &text)
{
    if (magicEditMode || editColItemIndex < 0 || editColItemIndex >= stringCount())
        return;
    const TabColumnData *column = cursorColumn();
    if (!column || editColItemIndex >= column->columnItems.size())
        return;
    setColumnItemAt(cursorTabRow(), editColIndex, editColItemIndex, ColumnItemType::fromText(text),
                    true);
}

void TabEditView::setColumnItemAt(int row, int column, int itemIndex, const ColumnItemType &item,
                                  bool moveCursor)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (row < 0 || row >= tabRows.size() || column < 0 || column >= tabRows[row].colDatas.size() ||
        itemIndex < 0 || itemIndex >= tabRows[row].colDatas[column].columnItems.size())
        return;
    const ColumnItemType old = tabRows[row].colDatas[column].columnItems[itemIndex];
    if (old == item)
        return;
    TabColumnData changed = tabRows[row].colDatas[column];
    changed.setColumnItem(itemIndex, item);
    writeColumn(row, column, changed);
    if (moveCursor) {
        setEditPosition(column, row - tabRowIndex);
        setEditItem(itemIndex);
    }
    registerSurfaceUndo(row, columnFrame(row, column),
                        [row, column, itemIndex, old, moveCursor](TabEditView &view) {
                            view.setColumnItemAt(row, column, itemIndex, old, moveCursor);
                        });
}

void TabEditView::replaceColumn(int row, int column, const TabColumnData &newColumn)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (row < 0 || row >= tabRows.size() || column < 0 || column >= tabRows[row].colDatas.size())
        return;
    const TabColumnData old = tabRows[row].colDatas[column].deepCopy();
    if (newColumn.isSameColumn(old))
        return;
    writeColumn(row, column, newColumn);
    const int shown = shownIndexOfRow(row);
    if (shown >= 0) {
        showingTabRows[shown].chordNamesDisplay.setChordName(newColumn.chordName, column, false);
        Q_EMIT chordNamesNeedRender(shown);
    }
    moveToTabRow(row, false, false);
    setEditPosition(column, row - tabRowIndex);
    if (magicSelectionBox)
        clearMagicSelection();
    registerSurfaceUndo(row, columnFrame(row, column), [row, column, old](TabEditView &view) {
        view.replaceColumn(row, column, old);
    });
}

void TabEditView::clearCursorColumn()
{
    replaceColumn(cursorTabRow(), editColIndex, TabColumnData(stringCount()));
}

void TabEditView::putColumnAtCursor(const std::optional<QString> &chordName,
                                    const QList<ColumnItemType> &items)
{
    TabColumnData column(items, chordName);
    if (chordName && editShowingTabRowIndex >= 0 && editShowingTabRowIndex < showingCount()) {
        // A chord put down again right after itself shows its name once.
        const ChordNamesDisplay::Names &names =
            showingTabRows[editShowingTabRowIndex].chordNamesDisplay.chordNames;
        auto nameAt = [&names](int c) {
            return c >= 0 && c < names.size() ? names[c] : std::nullopt;
        };
        if (nameAt(editColIndex - 1) == chordName || nameAt(editColIndex - 2) == chordName)
            column.chordName.reset();
    }
    replaceColumn(cursorTabRow(), editColIndex, column);
}

void TabEditView::toggleBarColumn()
{
    const TabColumnData *column = cursorColumn();
    if (!column)
        return;
    const bool allBars = std::all_of(column->columnItems.cbegin(), column->columnItems.cend(),
                                     [](const ColumnItemType &item) { return item.isBar(); });
    if (allBars)
        clearCursorColumn();
    else
        putColumnAtCursor(std::nullopt,
                          QList<ColumnItemType>(stringCount(), ColumnItemType::bar()));
}

void TabEditView::setColumnChordName(int row, int column, const std::optional<QString> &name)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (row < 0 || row >= tabRows.size() || column < 0 || column >= tabRows[row].colDatas.size())
        return;
    TabColumnData copy = tabRows[row].colDatas[column].deepCopy();
    const std::optional<QString> oldName = copy.chordName;
    if (oldName == name)
        return;
    copy.chordName = name;
    writeColumn(row, column, copy);
    const int shown = shownIndexOfRow(row);
    if (shown >= 0) {
        showingTabRows[shown].chordNamesDisplay.setChordName(name, column, false);
        Q_EMIT chordNamesNeedRender(shown);
    }
    registerSurfaceUndo(row, columnFrame(row, column), [row, column, oldName](TabEditView &view) {
        view.setColumnChordName(row, column, oldName);
    });
}

void TabEditView::setLyricLine(int row, int line, const QString &text)
{
    if (row < 0 || row >= tabRows.size())
        return;
    TabRowData &data = tabRows[row];
    if (line >= 0 && line < data.lyricLines.size())
        data.selectedLyricLineIndex = line;
    const QString old = data.lyricText().value_or(QString());
    if (old == text)
        return;
    data.setLyricText(text);
    const int shown = shownIndexOfRow(row);
    if (shown >= 0) {
        showingTabRows[shown].lyricsField.text = data.lyricText().value_or(QString());
        Q_EMIT shownRowChanged(shown);
    }
    const int selected = data.selectedLyricLineIndex;
    registerSurfaceUndo(row, std::nullopt, [row, selected, old](TabEditView &view) {
        view.setLyricLine(row, selected, old);
    });
}

void TabEditView::insertLyricLine(int shownRow, int line, const QString &text)
{
    const int row = tabRowIndex + shownRow;
    if (row < 0 || row >= tabRows.size())
        return;
    TabRowData &data = tabRows[row];
    line = std::clamp(line, 0, int(data.lyricLines.size()));
    data.lyricLines.insert(line, text);
    data.selectedLyricLineIndex = line;
    if (shownRow >= 0 && shownRow < showingCount()) {
        showingTabRows[shownRow].lyricsField.text = text;
        Q_EMIT shownRowChanged(shownRow);
    }
    registerSurfaceUndo(row, std::nullopt, [shownRow, line](TabEditView &view) {
        view.removeLyricLine(shownRow, line);
    });
}

void TabEditView::removeLyricLine(int shownRow, int line)
{
    const int row = tabRowIndex + shownRow;
    if (row < 0 || row >= tabRows.size())
        return;
    TabRowData &data = tabRows[row];
    if (line < 0 || line >= data.lyricLines.size())
        return;
    const QString old = data.lyricLines.takeAt(line);
    if (data.selectedLyricLineIndex == line && line - 1 >= 0)
        data.selectedLyricLineIndex = line - 1;
    data.selectedLyricLineIndex =
        std::clamp(data.selectedLyricLineIndex, 0, std::max(0, int(data.lyricLines.size()) - 1));
    if (shownRow >= 0 && shownRow < showingCount()) {
        showingTabRows[shownRow].lyricsField.text = data.lyricText().value_or(QString());
        Q_EMIT shownRowChanged(shownRow);
    }
    registerSurfaceUndo(row, std::nullopt, [shownRow, line, old](TabEditView &view) {
        view.insertLyricLine(shownRow, line, old);
    });
}

void TabEditView::selectLyricLine(int shownRow, int line)
{
    const int row = tabRowIndex + shownRow;
    if (row < 0 || row >= tabRows.size())
        return;
    TabRowData &data = tabRows[row];
    if (line < 0 || line >= data.lyricLines.size())
        return;
    data.selectedLyricLineIndex = line;
    if (shownRow >= 0 && shownRow < showingCount()) {
        showingTabRows[shownRow].lyricsField.text = data.lyricText().value_or(QString());
        Q_EMIT shownRowChanged(shownRow);
    }
}

void TabEditView::lyricsFieldTextChanged(int shownRow, const QString &text)
{
    if (shownRow < 0 || shownRow >= showingCount())
        return;
    // Typing moves to another row: what waits for the first one is written first.
    if (lyricEditShownRow >= 0 && lyricEditShownRow != shownRow)
        commitLyricsField();
    showingTabRows[shownRow].lyricsField.text = text;
    lyricEditShownRow = shownRow;
    lyricChangeTimer.start();
    if (tabRowChangeListener)
        tabRowChangeListener->lyricsFieldEdited();
}

void TabEditView::commitLyricsField()
{
    lyricChangeTimer.stop();
    const int shown = std::exchange(lyricEditShownRow, -1);
    if (shown < 0 || shown >= showingCount())
        return;
    const int row = tabRowIndex + shown;
    if (row < 0 || row >= tabRows.size())
        return;
    setLyricLine(row, tabRows[row].selectedLyricLineIndex, showingTabRows[shown].lyricsField.text);
}

void TabEditView::moveStringItems(int fromItem, int toItem, int row)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (row < 0 || row >= tabRows.size())
        return;
    for (int c = 0; c < tabRows[row].colDatas.size(); ++c) {
        TabColumnData copy = tabRows[row].colDatas[c].deepCopy();
        if (fromItem < 0 || fromItem >= copy.columnItems.size() || toItem < 0 ||
            toItem >= copy.columnItems.size())
            return;
        copy.columnItems.move(fromItem, toItem);
        writeColumn(row, c, copy);
    }
    registerSurfaceUndo(row, std::nullopt, [fromItem, toItem, row](TabEditView &view) {
        view.moveStringItems(toItem, fromItem, row);
    });
}

void TabEditView::selectColumnOfChordDisplay(ChordNamesDisplay *display, int column)
{
    for (int i = 0; i < showingCount(); ++i) {
        if (&showingTabRows[i].chordNamesDisplay == display)
            editShowingTabRowIndex = i;
    }
    editColIndex = clampIndex(column, 0, numTabColumns - 1);
    placeEditHighlight();
}

void TabEditView::openChordNameDialog(ChordNamesDisplay *display, int column)
{
    // The chord-name dialog belongs to the editor screen; until it exists a tap selects.
    selectColumnOfChordDisplay(display, column);
}

void TabEditView::chordNameTapped(ChordNamesDisplay *display, int column)
{
    openChordNameDialog(display, column);
}

QList<ColumnItemType> TabEditView::currentColumnItems() const
{
    const TabColumnData *column = cursorColumn();
    return column ? column->columnItems : QList<ColumnItemType>();
}

QList<FretPosition> TabEditView::currentFretPositions() const
{
    QList<FretPosition> positions;
    if (magicEditMode || !editColumnHighlight || editColumnHighlightHidden ||
        showingTabRows.isEmpty())
        return positions;
    const TabColumnData *column = cursorColumn();
    if (!column)
        return positions;
    for (int i = 0; i < column->columnItems.size(); ++i) {
        if (column->columnItems[i].isNote())
            positions.append({i + 1, int(column->columnItems[i].fret())});
    }
    return positions;
}

bool TabEditView::currentColumnIsBlank() const
{
    if (!editColumnHighlight || editColumnHighlightHidden || showingTabRows.isEmpty())
        return true;
    const TabColumnData *column = cursorColumn();
    return !column || column->isSameColumn(TabColumnData(int(column->columnItems.size())));
}

// The note menu

NoteMenuEntries TabEditView::noteMenuEntries(const ColumnItemType &current, int itemIndex,
                                             const QStringList &tuning, bool notesOnTab)
{
    using Kind = ColumnItemType::Kind;
    NoteMenuEntries entries;
    auto label = [&](const ColumnItemType &item) {
        return displayText(item, itemIndex, &tuning, notesOnTab);
    };
    entries.results = {current,       Kind::plus,    Kind::slap,  Kind::slideDown, Kind::pull,
                       Kind::release, Kind::vibrato, Kind::hold,  Kind::bend,      Kind::hammer,
                       Kind::slideUp, Kind::tap,     Kind::muted, Kind::star};
    for (const ColumnItemType &item : std::as_const(entries.results))
        entries.labels.append(label(item));
    if (current.isNote()) {
        const qint64 fret = current.fret();
        if (fret >= 1) {
            entries.results.prepend(ColumnItemType::note(fret - 1));
            entries.labels.prepend(label(entries.results.first()));
            entries.startIndex = 1;
        }
        if (fret <= 24) {
            entries.results.append(ColumnItemType::note(fret + 1));
            entries.labels.append(label(entries.results.last()));
        }
        return entries;
    }
    for (int i = 1; i < entries.results.size(); ++i) {
        if (entries.results[i] == current) {
            entries.results.removeAt(i);
            entries.labels.removeAt(i);
            break;
        }
    }
    return entries;
}

void TabEditView::handleForceTouch(ForceLongPressGestureRecognizer::State state, QPointF location)
{
    using State = ForceLongPressGestureRecognizer::State;
    if (state == State::began) {
        openNoteContextMenu(location);
        return;
    }
    if (!noteContextMenu)
        return;
    if (state == State::changed) {
        noteContextMenu->moved(location - contentOffset);
        Q_EMIT menuChanged();
    } else if (state == State::ended) {
        noteContextMenu->ended(location - contentOffset);
    } else if (state == State::cancelled || state == State::failed) {
        noteContextMenu->cancelled();
    }
}

void TabEditView::openNoteContextMenu(QPointF location)
{
    const double x = location.x() - tabLeftInset();
    const double y = location.y();
    if (x > tabWidth)
        return;
    double top = headerBandHeight();
    int shown = -1;
    for (int i = 0; i < showingCount(); ++i) {
        if (y < top)
            return;
        if (y < top + tabRowHeight) {
            shown = i;
            break;
        }
        top += tabRowHeight + headerBandHeight() + tabRowVertSpacing;
    }
    if (shown < 0)
        return;
    const int column = truncated(x / tabColumnWidth);
    const TabRowData &row = tabRows[tabRowIndex + shown];
    if (x < 0 || column < 0 || column >= row.colDatas.size())
        return;
    const TabColumnData &data = row.colDatas[column];
    const double cellHeight = stringCount() > 0 ? tabRowHeight / stringCount() : 0.0;
    const int item = cellHeight > 0 ? truncated((y - top) / cellHeight) : -1;
    if (item < 0 || item >= data.columnItems.size())
        return;
    noteContextMenuSource = NoteContextMenuSource{tabRowIndex + shown, column, item, shown};
    const QPointF origin = location - contentOffset;
    noteContextMenu =
        std::make_unique<ForceContextMenu>(origin, QRectF(QPointF(0, 0), frameSize), this);
    const NoteMenuEntries entries =
        noteMenuEntries(data.columnItems[item], item, stringNotes, settings.notesOnTab);
    noteContextMenuItemResults = entries.results;
    noteContextMenu->setItems(entries.labels, entries.startIndex);
    noteContextMenu->selectedIndex = entries.startIndex;
    Q_EMIT menuChanged();
}

void TabEditView::forceContextMenuFinished(int selectedIndex)
{
    if (!noteContextMenuSource)
        return;
    const NoteContextMenuSource source = *noteContextMenuSource;
    const QList<ColumnItemType> results =
        noteContextMenuItemResults.value_or(QList<ColumnItemType>());
    noteContextMenuSource.reset();
    noteContextMenuItemResults.reset();
    // The menu is on the call stack: it is kept aside until the next menu, or the view, ends.
    finishedContextMenu = std::move(noteContextMenu);
    if (selectedIndex != -1 && selectedIndex >= 0 && selectedIndex < results.size()) {
        setColumnItemAt(source.tRowIndex, source.colIndex, source.itemIndex, results[selectedIndex],
                        false);
        if (tabRowChangeListener)
            tabRowChangeListener->columnItemChanged();
    }
    Q_EMIT menuChanged();
}

// Magic mode

void TabEditView::setMagicEditMode(bool on)
{
    magicEditMode = on;
    editColumnHighlightHidden = on;
    tabRowTouchesEnabled = !on;
    if (!on)
        clearMagicSelection();
    Q_EMIT highlightChanged();
}

void TabEditView::clearMagicSelection()
{
    magicSelectionBox.reset();
    for (int i = 0; i < showingCount(); ++i) {
        VisibeTabRowView &view = showingTabRows[i];
        for (int j = 0; j < view.tabColumnViews.size(); ++j) {
            TabColumnView &column = view.tabColumnViews[j];
            if (column.selectedColItems.contains(true)) {
                column.selectedColItems.fill(false);
                queueColumnRender(i, j);
            }
        }
        view.chordNamesDisplay.overlayChordNames.reset();
        view.chordNamesDisplay.highlightIndices.clear();
        view.chordNamesDisplay.overlayBlanksStartIndex.reset();
        queueChordNamesRender(i);
    }
}

void TabEditView::showMagicSelection()
{
    const int shown = shownIndexOfRow(magicSelectionBox->tabRowIndex);
    for (int i = 0; i < showingCount(); ++i) {
        VisibeTabRowView &view = showingTabRows[i];
        for (int j = 0; j < view.tabColumnViews.size(); ++j) {
            TabColumnView &column = view.tabColumnViews[j];
            for (int k = 0; k < column.selectedColItems.size(); ++k) {
                const bool selected = i == shown && magicSelectionBox->containsColumn(j) &&
                                      magicSelectionBox->containsItem(k);
                if (column.selectedColItems[k] != selected) {
                    column.selectedColItems[k] = selected;
                    queueColumnRender(i, j);
                }
            }
        }
    }
}
