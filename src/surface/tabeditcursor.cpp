// TabEditView, the cursor: the column highlight, the invisible item cursor, where a touch
// puts them, and what the cursor column holds.

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
    editColIndex = clampIndex(column, 0, numTabColumns - 1);
    editShowingTabRowIndex = clampIndex(shownRow, 0, showingCount() - 1);
    placeEditHighlight();
    if (editHighlightListener)
        editHighlightListener->editHighlightMoved(editColIndex < 1,
                                                  editColIndex >= numTabColumns - 1);
    scrollToShowFrame(editColumnHighlight.value_or(editColumnFrame()));
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
