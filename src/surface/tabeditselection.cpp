// TabEditView, magic selection: the mode, drawing a box over one row, shrinking it to what
// stands in it, marking its cells, and the edits of a whole block (clear, semitone shift).
// Dragging and dropping a block is tabeditselectiondrag.cpp.

#include "tabeditview.h"

#include "music/semitoneshifthelper.h"

#include <algorithm>
#include <cmath>

namespace {

bool cellCounts(const ColumnItemType &item)
{
    return !item.isBlank() && !item.isBar();
}

} // namespace

void TabEditView::setMagicEditMode(bool on)
{
    magicEditMode = on;
    editColumnHighlightHidden = on;
    tabRowTouchesEnabled = !on;
    if (on) {
        // The cursor's chord name stops standing out: only a selection marks names now.
        for (int i = 0; i < showingCount(); ++i)
            resetChordLabels(i);
    } else {
        clearMagicSelection();
        highlightChordColumn();
    }
    Q_EMIT highlightChanged();
    Q_EMIT selectionChanged();
}

void TabEditView::resetChordLabels(int shownRow)
{
    ChordNamesDisplay &display = showingTabRows[shownRow].chordNamesDisplay;
    display.highlight(std::nullopt, true);
    queueChordNamesRender(shownRow);
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
    removeSelectionCover();
    stopDragScroll();
    Q_EMIT selectionChanged();
}

void TabEditView::showMagicSelection()
{
    if (magicSelectionBox)
        showSelection(*magicSelectionBox);
}

void TabEditView::showSelection(const SelectionBox &box)
{
    const int shown = shownIndexOfRow(box.tabRowIndex);
    for (int i = 0; i < showingCount(); ++i) {
        VisibeTabRowView &view = showingTabRows[i];
        for (int j = 0; j < view.tabColumnViews.size(); ++j) {
            TabColumnView &column = view.tabColumnViews[j];
            column.fitSelection();
            for (int k = 0; k < column.selectedColItems.size(); ++k) {
                const bool selected = i == shown && box.containsColumn(j) && box.containsItem(k);
                if (column.selectedColItems[k] != selected) {
                    column.selectedColItems[k] = selected;
                    queueColumnRender(i, j);
                }
            }
        }
        ChordNamesDisplay &display = view.chordNamesDisplay;
        display.highlight(std::nullopt, true);
        display.overlayChordNames.reset();
        display.overlayBlanksStartIndex.reset();
        if (i == shown && box.hasHeaders()) {
            for (int c = box.colHeaderStart; c <= box.colHeaderEnd; ++c)
                display.highlightIndices.append(c);
        }
        queueChordNamesRender(i);
    }
    Q_EMIT selectionChanged();
}

bool TabEditView::selectRect(double x, double y, double width, double height)
{
    stopDragScroll();
    const double contentY = contentOffset.y() + y;
    const double pitch = tabRowPitch();
    if (showingCount() == 0 || pitch <= 0 || itemHeight() <= 0)
        return false;
    int r = 0;
    while (r < showingCount() && !(contentY < pitch * (r + 1)))
        ++r;
    if (r == showingCount())
        return false;
    const double minX = contentOffset.x() + x - tabLeftInset();
    const double maxX = minX + width;
    const double minY = contentY - pitch * r - headerBandHeight();
    const double maxY = minY + height;
    const int lastColumn = numTabColumns - 1;
    const int lastItem = stringCount() - 1;
    SelectionBox box;
    box.colIndexStart = std::clamp(int(std::trunc(minX / tabColumnWidth)), 0, lastColumn);
    box.colIndexEnd = std::clamp(int(std::trunc(maxX / tabColumnWidth)), 0, lastColumn);
    box.itemIndexStart = std::clamp(int(std::trunc(minY / itemHeight())), 0, lastItem);
    box.itemIndexEnd = std::min(int(std::trunc(maxY / itemHeight())), lastItem);
    box.tabRowIndex = tabRowIndex + r;
    // A band that starts well above the string lines takes the chord names too.
    if (minY < -16.0) {
        box.colHeaderStart = box.colIndexStart;
        box.colHeaderEnd = box.colIndexEnd;
        if (maxY < 0) {
            box.itemIndexStart = -1;
            box.itemIndexEnd = -1;
        }
    }
    return commitSelection(box);
}

bool TabEditView::commitSelection(const SelectionBox &roughBox)
{
    const int row = roughBox.tabRowIndex;
    if (row < 0 || row >= tabRows.size())
        return false;
    const QList<TabColumnData> &columns = tabRows[row].colDatas;
    SelectionBox box;
    box.tabRowIndex = row;
    if (roughBox.hasCells()) {
        for (int c = std::max(roughBox.colIndexStart, 0);
             c <= roughBox.colIndexEnd && c < columns.size(); ++c) {
            const QList<ColumnItemType> &items = columns[c].columnItems;
            for (int i = std::max(roughBox.itemIndexStart, 0);
                 i <= roughBox.itemIndexEnd && i < items.size(); ++i) {
                if (!cellCounts(items[i]))
                    continue;
                if (box.colIndexStart == -1)
                    box.colIndexStart = c;
                box.colIndexEnd = c;
                box.itemIndexStart = box.itemIndexStart == -1 ? i : std::min(box.itemIndexStart, i);
                box.itemIndexEnd = std::max(box.itemIndexEnd, i);
            }
        }
    }
    if (roughBox.hasHeaders()) {
        for (int c = roughBox.colHeaderStart; c <= roughBox.colHeaderEnd; ++c) {
            if (c < 0 || c >= columns.size() || !columns[c].chordName)
                continue;
            if (box.colHeaderStart == -1)
                box.colHeaderStart = c;
            box.colHeaderEnd = c;
        }
    }
    if (box.colIndexStart == -1) {
        box.itemIndexStart = -1;
        box.itemIndexEnd = -1;
        box.colIndexEnd = -1;
    }
    if (box.colIndexStart == -1 && box.colHeaderStart == -1)
        return false;
    magicSelectionBox = box;
    showSelection(box);
    return true;
}

void TabEditView::selectWholeString(int stringNumber, int shownRow)
{
    clearMagicSelection();
    if (stringNumber < 1 || stringNumber > stringCount() || shownRow < 0 ||
        shownRow >= showingCount())
        return;
    // Not shrunk: the blanks at both ends of the string stay in the box.
    magicSelectionBox = SelectionBox(0, numTabColumns, stringNumber - 1, 1, tabRowIndex + shownRow);
    showSelection(*magicSelectionBox);
}

void TabEditView::followBlock(const SelectionBox &block)
{
    // The selection moves with the block it was and shrinks anew to what it holds.
    if (shownIndexOfRow(block.tabRowIndex) < 0)
        return;
    clearMagicSelection();
    commitSelection(block);
}

QPointF TabEditView::clampToRowBand(double startX, double startY, bool selecting, double x,
                                    double y) const
{
    Q_UNUSED(startX);
    const double pitch = tabRowPitch();
    double bottom = 0.0;
    for (int r = 0; r < showingCount(); ++r) {
        bottom += pitch;
        const VisibeTabRowView &view = showingTabRows[r];
        if (selecting) {
            // A band can't start on a lyric field: the field keeps its own touches.
            const QRectF field = view.lyricsField.frame.adjusted(0, -5.0, 0, 5.0);
            if (field.contains(QPointF(x, y)))
                return QPointF(x, field.bottom() - 5.0);
        } else if (bottom > startY) {
            const double top = view.chordNamesDisplay.frame.top();
            return QPointF(x, std::clamp(y, top, std::max(top, view.tabRowFrame.bottom())));
        }
    }
    return QPointF(x, y);
}

void TabEditView::clearSelectedItems()
{
    if (!magicSelectionBox)
        return;
    const SelectionBox box = *magicSelectionBox;
    const QList<ColumnItemType> blanks(box.selectedCellCount(), ColumnItemType::blank());
    std::optional<TabEdits::Names> names;
    if (box.hasHeaders())
        names = TabEdits::Names(box.headerCount(), std::nullopt);
    tabEdits()->writeBlock(box, blanks, names);
    clearMagicSelection();
}

void TabEditView::shiftSelection(int semitones)
{
    if (!magicSelectionBox || semitones == 0 || !magicSelectionBox->hasCells())
        return;
    SelectionBox box = *magicSelectionBox;
    box.colHeaderStart = -1;
    box.colHeaderEnd = -1;
    const int row = box.tabRowIndex;
    if (row < 0 || row >= tabRows.size())
        return;
    SemitoneShiftHelper::Block block;
    for (int c = box.colIndexStart; c <= box.colIndexEnd && c < tabRows[row].colDatas.size(); ++c)
        block.append(tabRows[row].colDatas[c].columnItems);
    const std::optional<SemitoneShiftHelper::Block> shifted =
        SemitoneShiftHelper(stringNotes, stringCount()).shiftSemitones(semitones, block, box);
    if (!shifted)
        return;
    // The box may have grown by a string on either side: its strings are written back.
    QList<ColumnItemType> items;
    for (const QList<ColumnItemType> &column : *shifted) {
        for (int i = box.itemIndexStart; i <= box.itemIndexEnd; ++i)
            items.append(column.value(i, ColumnItemType::blank()));
    }
    tabEdits()->writeBlock(box, items, std::nullopt);
}
