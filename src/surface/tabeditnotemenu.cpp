// TabEditView, its side of the note menu: which cell a long press is on, and writing the
// choice there. The menu itself is TabNoteMenu.

#include "surfacemath.h"
#include "tabeditview.h"

using SurfaceMath::truncated;

void TabEditView::handleForceTouch(ForceLongPressGestureRecognizer::State state, QPointF location)
{
    noteMenu.handleForceTouch(state, location);
}

void TabEditView::openNoteContextMenu(QPointF location)
{
    noteMenu.openAt(location);
}

void TabEditView::forceContextMenuFinished(int selectedIndex)
{
    noteMenu.forceContextMenuFinished(selectedIndex);
}

std::optional<NoteMenuPlace> TabEditView::notePlaceAt(QPointF location) const
{
    const double x = location.x() - tabLeftInset();
    const double y = location.y();
    if (x > tabWidth)
        return std::nullopt;
    double top = headerBandHeight();
    int shown = -1;
    for (int i = 0; i < showingCount(); ++i) {
        if (y < top)
            return std::nullopt;
        if (y < top + tabRowHeight) {
            shown = i;
            break;
        }
        top += tabRowHeight + headerBandHeight() + tabRowVertSpacing;
    }
    if (shown < 0 || tabRowIndex + shown >= tabRows.size())
        return std::nullopt;
    const int column = truncated(x / tabColumnWidth);
    const TabRowData &row = tabRows[tabRowIndex + shown];
    if (x < 0 || column < 0 || column >= row.colDatas.size())
        return std::nullopt;
    const TabColumnData &data = row.colDatas[column];
    const double cellHeight = stringCount() > 0 ? tabRowHeight / stringCount() : 0.0;
    const int item = cellHeight > 0 ? truncated((y - top) / cellHeight) : -1;
    if (item < 0 || item >= data.columnItems.size())
        return std::nullopt;
    return NoteMenuPlace{NoteContextMenuSource{tabRowIndex + shown, column, item, shown},
                         data.columnItems[item],
                         stringNotes,
                         settings.notesOnTab,
                         location - contentOffset,
                         QRectF(QPointF(0, 0), frameSize)};
}

void TabEditView::noteMenuChose(const NoteContextMenuSource &source, const ColumnItemType &item)
{
    // The cell may be gone by now; a change that moves cells already cancelled the menu.
    if (source.tRowIndex < 0 || source.tRowIndex >= tabRows.size())
        return;
    setColumnItemAt(source.tRowIndex, source.colIndex, source.itemIndex, item, false);
    if (tabRowChangeListener)
        tabRowChangeListener->columnItemChanged();
}
