// TabEdits, blocks of a selection: reading, writing and moving a rectangle of cells and chord
// names in one step. The inverse of every block edit puts back whole columns, so an undo
// restores what the bar rule changed beside the box as well.

#include "tabedits.h"

#include <algorithm>
#include <set>

QList<ColumnItemType> TabEdits::readBlockItems(const SelectionBox &box) const
{
    QList<ColumnItemType> items;
    if (!box.hasCells() || box.tabRowIndex < 0 || box.tabRowIndex >= rows().size())
        return items;
    const QList<TabColumnData> &columns = rows()[box.tabRowIndex].colDatas;
    items.reserve(box.selectedCellCount());
    for (int c = box.colIndexStart; c <= box.colIndexEnd; ++c) {
        for (int i = box.itemIndexStart; i <= box.itemIndexEnd; ++i) {
            const bool inside =
                c >= 0 && c < columns.size() && i >= 0 && i < columns[c].columnItems.size();
            items.append(inside ? columns[c].columnItems[i] : ColumnItemType::blank());
        }
    }
    return items;
}

std::optional<TabEdits::Names> TabEdits::readBlockChordNames(const SelectionBox &box) const
{
    if (!box.hasHeaders() || box.tabRowIndex < 0 || box.tabRowIndex >= rows().size())
        return std::nullopt;
    const QList<TabColumnData> &columns = rows()[box.tabRowIndex].colDatas;
    Names names;
    for (int c = box.colHeaderStart; c <= box.colHeaderEnd; ++c)
        names.append(c >= 0 && c < columns.size() ? columns[c].chordName : std::nullopt);
    return names;
}

QList<TabEdits::ColumnPatch> TabEdits::snapshotColumns(const QList<SelectionBox> &boxes) const
{
    std::set<std::pair<int, int>> places;
    for (const SelectionBox &box : boxes) {
        if (box.hasCells()) {
            for (int c = box.colIndexStart; c <= box.colIndexEnd; ++c)
                places.insert({box.tabRowIndex, c});
        }
        if (box.hasHeaders()) {
            for (int c = box.colHeaderStart; c <= box.colHeaderEnd; ++c)
                places.insert({box.tabRowIndex, c});
        }
    }
    QList<ColumnPatch> patches;
    for (const auto &[row, column] : places) {
        if (validColumn(row, column))
            patches.append({row, column, rows()[row].colDatas[column].deepCopy()});
    }
    return patches;
}

void TabEdits::writeBlockCells(const SelectionBox &box, const QList<ColumnItemType> &items,
                               const std::optional<Names> &names)
{
    if (box.tabRowIndex < 0 || box.tabRowIndex >= rows().size())
        return;
    QList<TabColumnData> &columns = tabData->tabRowDatas[box.tabRowIndex].colDatas;
    if (!items.isEmpty() && box.hasCells()) {
        int k = 0;
        for (int c = box.colIndexStart; c <= box.colIndexEnd; ++c) {
            for (int i = box.itemIndexStart; i <= box.itemIndexEnd; ++i, ++k) {
                if (k >= items.size())
                    return;
                if (c >= 0 && c < columns.size() && i >= 0 && i < columns[c].columnItems.size())
                    columns[c].setColumnItem(i, items[k]);
            }
        }
    }
    if (names && box.hasHeaders()) {
        int k = 0;
        for (int c = box.colHeaderStart; c <= box.colHeaderEnd && k < names->size(); ++c, ++k) {
            if (c >= 0 && c < columns.size())
                columns[c].chordName = names->at(k);
        }
    }
}

void TabEdits::notifyBlock(const QList<ColumnPatch> &patches, const SelectionBox &block)
{
    // One notice per row, the block's own row last so that a selection lands there.
    std::map<int, QList<int>> byRow;
    for (const ColumnPatch &patch : patches)
        byRow[patch.row].append(patch.column);
    auto send = [&](int row, const QList<int> &columns, bool withBlock) {
        TabChange change;
        change.kind = TabChange::Kind::Columns;
        change.row = row;
        change.columns = columns;
        change.undoing = undo && (undo->isUndoing() || undo->isRedoing());
        if (withBlock)
            change.block = block;
        Q_EMIT tabChanged(change);
    };
    for (const auto &[row, columns] : byRow) {
        if (row != block.tabRowIndex)
            send(row, columns, false);
    }
    send(block.tabRowIndex, byRow[block.tabRowIndex], true);
}

void TabEdits::registerBlockInverse(const QList<ColumnPatch> &before,
                                    const SelectionBox &selectBefore,
                                    const SelectionBox &selectAfter)
{
    registerInverse([before, selectBefore, selectAfter](TabEdits &edits) {
        edits.restoreColumns(before, selectBefore, selectAfter);
    });
}

void TabEdits::restoreColumns(const QList<ColumnPatch> &patches, const SelectionBox &selectAfter,
                              const SelectionBox &selectBefore)
{
    QList<ColumnPatch> current;
    for (const ColumnPatch &patch : patches) {
        if (!validColumn(patch.row, patch.column))
            continue;
        current.append({patch.row, patch.column, rows()[patch.row].colDatas[patch.column]});
        writeColumn(patch.row, patch.column, patch.data);
    }
    registerBlockInverse(current, selectBefore, selectAfter);
    notifyBlock(current, selectAfter);
}

bool TabEdits::writeBlock(const SelectionBox &box, const QList<ColumnItemType> &items,
                          const std::optional<Names> &names)
{
    if (!tabData || box.tabRowIndex < 0 || box.tabRowIndex >= rows().size())
        return false;
    const QList<ColumnPatch> before = snapshotColumns({box});
    writeBlockCells(box, items, names);
    if (snapshotColumns({box}) == before)
        return false;
    registerBlockInverse(before, box, box);
    notifyBlock(before, box);
    return true;
}

bool TabEdits::moveBlock(const SelectionBox &source, const SelectionBox &destination)
{
    if (!tabData || source == destination || destination.tabRowIndex < 0 ||
        destination.tabRowIndex >= rows().size())
        return false;
    // Names that would land past the row's end are dropped; cells may not.
    const int columns = int(rows()[destination.tabRowIndex].colDatas.size());
    if (destination.hasCells() &&
        (destination.colIndexStart < 0 || destination.colIndexEnd >= columns))
        return false;
    const QList<ColumnItemType> items = readBlockItems(source);
    const std::optional<Names> names = readBlockChordNames(source);
    const QList<ColumnItemType> blanks(source.selectedCellCount(), ColumnItemType::blank());
    std::optional<Names> blankNames;
    if (names)
        blankNames = Names(names->size(), std::nullopt);
    const QList<ColumnPatch> before = snapshotColumns({source, destination});
    // The source goes first: where the two overlap, the block's own data wins.
    writeBlockCells(source, blanks, blankNames);
    writeBlockCells(destination, items, names);
    if (snapshotColumns({source, destination}) == before)
        return false;
    registerBlockInverse(before, source, destination);
    notifyBlock(before, destination);
    return true;
}
