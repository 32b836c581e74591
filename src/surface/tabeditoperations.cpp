// TabEditView, the edit operations: each finds what to change from the cursor and the shown
// rows, hands the change itself to TabEdits, and moves the cursor where the edit wants it.
// The views follow on TabEdits' change notice (tabChanged), after an undo as after the edit.

#include "tabeditview.h"

#include "services/lgundomanager.h"

#include <algorithm>

// Shape

TabEditView::Message TabEditView::addColumnAtCursor()
{
    return insertColumn(cursorTabRow(), editColIndex, TabColumnData(stringCount()));
}

TabEditView::Message TabEditView::insertColumn(int row, int column, const TabColumnData &columnData)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    return tabEdits()->insertColumn(row, column, columnData);
}

TabEditView::Message TabEditView::removeColumn(int row, int column)
{
    return tabEdits()->removeColumn(row, column);
}

void TabEditView::insertTabRow(int index, const TabRowData &rowData)
{
    tabEdits()->insertTabRow(index, rowData);
}

void TabEditView::removeTabRow(int index)
{
    tabEdits()->removeTabRow(index);
}

void TabEditView::appendBlankTabRow()
{
    tabEdits()->appendBlankRows(1, numTabColumns, stringCount());
}

// Undo

void TabEditView::undoEdit()
{
    LgUndoManager *undo = docUndoManager();
    if (undo && undo->canUndo())
        undo->undo();
}

void TabEditView::redoEdit()
{
    LgUndoManager *undo = docUndoManager();
    if (undo && undo->canRedo())
        undo->redo();
}

// Column items

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
        tabEdits()->previewColumn(cursorTabRow(), editColIndex, changed);
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
    tabEdits()->commitColumn(row, col, snapshot);
    showEditedPlace(row, columnFrame(row, col));
    return added;
}

void TabEditView::cancelFretPress()
{
    if (!preEditColumnData)
        return;
    // Written back while the press still holds the cursor, then the press ends.
    if (cursorColumn())
        tabEdits()->previewColumn(cursorTabRow(), editColIndex, *preEditColumnData);
    preEditColumnData.reset();
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
    if (!tabEdits()->setColumnItem(row, column, itemIndex, item))
        return;
    if (moveCursor) {
        setEditPosition(column, row - tabRowIndex);
        setEditItem(itemIndex);
    }
}

void TabEditView::replaceColumn(int row, int column, const TabColumnData &newColumn)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    if (!tabEdits()->replaceColumn(row, column, newColumn))
        return;
    moveToTabRow(row, false, false);
    setEditPosition(column, row - tabRowIndex);
    if (magicSelectionBox)
        clearMagicSelection();
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
    tabEdits()->setColumnChordName(row, column, name);
}

void TabEditView::moveStringItems(int fromItem, int toItem, int row)
{
    Q_ASSERT(row >= 0 && row < tabRows.size());
    tabEdits()->moveStringItems(fromItem, toItem, row);
}

// Lyric lines

void TabEditView::setLyricLine(int row, int line, const QString &text)
{
    tabEdits()->setLyricLine(row, line, text);
}

void TabEditView::insertLyricLine(int shownRow, int line, const QString &text)
{
    tabEdits()->insertLyricLine(tabRowIndex + shownRow, line, text);
}

void TabEditView::removeLyricLine(int shownRow, int line)
{
    tabEdits()->removeLyricLine(tabRowIndex + shownRow, line);
}

void TabEditView::selectLyricLine(int shownRow, int line)
{
    tabEdits()->selectLyricLine(tabRowIndex + shownRow, line);
}

void TabEditView::lyricsFieldTextChanged(int shownRow, const QString &text)
{
    if (shownRow < 0 || shownRow >= showingCount())
        return;
    const int row = tabRowIndex + shownRow;
    // Typing moves to another row: what waits for the first one is written first.
    if (pendingLyric && pendingLyric->row != row)
        commitLyricsField();
    showingTabRows[shownRow].lyricsField.text = text;
    // Kept by model row and text, not by field: the rows shown may move before it is written.
    pendingLyric = PendingLyric{row, text};
    lyricChangeTimer.start();
    if (tabRowChangeListener)
        tabRowChangeListener->lyricsFieldEdited();
}

void TabEditView::commitLyricsField()
{
    lyricChangeTimer.stop();
    const std::optional<PendingLyric> pending = std::exchange(pendingLyric, std::nullopt);
    if (!pending || pending->row < 0 || pending->row >= tabRows.size())
        return;
    setLyricLine(pending->row, tabRows[pending->row].selectedLyricLineIndex, pending->text);
}
