// TabEditView, the note menu: a long press on a cell opens a ring of what the cell may become.

#include "surfacemath.h"
#include "tabeditview.h"

using SurfaceMath::truncated;

NoteMenuEntries TabEditView::noteMenuEntries(const ColumnItemType &current, int itemIndex,
                                             const QStringList &tuning, bool notesOnTab)
{
    return NoteMenuEntries::forItem(current, itemIndex, tuning, notesOnTab);
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
