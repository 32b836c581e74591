// TabEditView, where the cursor goes: the column highlight and the invisible item cursor (their
// state is TabEditCursor's), where a touch puts them, and what the cursor column holds.

#include "surfacemath.h"
#include "tabeditview.h"

#include <algorithm>
#include <cmath>

using SurfaceMath::clampIndex;
using SurfaceMath::truncated;

void TabEditView::setEditPosition(int column, int shownRow)
{
    if (preEditColumnData)
        return;
    cursor.moveTo(column, shownRow, numTabColumns, showingCount());
    placeEditHighlight();
    if (editHighlightListener)
        editHighlightListener->editHighlightMoved(cursor.atFirstColumn(),
                                                  cursor.atLastColumn(numTabColumns));
    scrollToShowFrame(editColumnHighlight.value_or(editColumnFrame()));
}

void TabEditView::setEditItem(int index)
{
    if (preEditColumnData)
        return;
    cursor.setItem(index, cursorGeometry());
}

void TabEditView::moveEditItem(int delta)
{
    // The sum is stored before the press is looked at: during a press it stays unclamped.
    editColItemIndex += delta;
    if (preEditColumnData)
        return;
    cursor.setItem(editColItemIndex, cursorGeometry());
}

CursorGeometry TabEditView::cursorGeometry() const
{
    return CursorGeometry{tabLeftInset(), headerBandHeight(), tabColumnWidth,
                          tabRowPitch(),  tabRowHeight,       stringCount()};
}

QRectF TabEditView::itemIndicatorFrame() const
{
    return cursor.itemIndicatorFrame(cursorGeometry());
}

QRectF TabEditView::editColumnFrame() const
{
    return cursor.columnFrame(cursorGeometry());
}

void TabEditView::placeEditHighlight()
{
    cursor.placeHighlight(cursorGeometry());
    highlightChordColumn();
    Q_EMIT highlightChanged();
}

void TabEditView::highlightChordColumn()
{
    // In magic edit only a selection marks chord names.
    if (magicEditMode)
        return;
    for (int i = 0; i < showingCount(); ++i) {
        ChordNamesDisplay &display = showingTabRows[i].chordNamesDisplay;
        const bool wasHighlighted = !display.highlightIndices.isEmpty();
        display.highlight(std::nullopt, true);
        if (i == editShowingTabRowIndex)
            display.highlight(editColIndex, false);
        if (wasHighlighted || i == editShowingTabRowIndex)
            Q_EMIT chordNamesNeedRender(i);
    }
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
        if (!preEditColumnData)
            cursor.setItem(item, cursorGeometry());
    }
}

void TabEditView::showColumnChange(int column)
{
    // A thin line between two columns shows where the column went.
    cursor.flashColumnChange(column, cursorGeometry());
    highlightChordColumn();
    Q_EMIT highlightChanged();
}

const TabColumnData *TabEditView::cursorColumn() const
{
    const int row = cursorTabRow();
    if (row < 0 || row >= tabRows.size() || editColIndex < 0 ||
        editColIndex >= tabRows[row].colDatas.size())
        return nullptr;
    return &tabRows[row].colDatas[editColIndex];
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
    // The tap selects the column; the dialog itself belongs to the editor screen.
    selectColumnOfChordDisplay(display, column);
    Q_EMIT chordNameDialogRequested(cursorTabRow(), editColIndex);
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
