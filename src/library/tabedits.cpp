#include "tabedits.h"

#include "services/lgundomanager.h"

#include <algorithm>

TabEdits::TabEdits(TabData *tab, LgUndoManager *undoManager, QObject *parent)
    : QObject(parent), tabData(tab), undo(undoManager)
{
}

const QList<TabRowData> &TabEdits::rows() const
{
    static const QList<TabRowData> none;
    return tabData ? tabData->tabRowDatas : none;
}

int TabEdits::columnCount() const
{
    return rows().isEmpty() ? 0 : int(rows().first().colDatas.size());
}

bool TabEdits::validColumn(int row, int column) const
{
    return row >= 0 && row < rows().size() && column >= 0 && column < rows()[row].colDatas.size();
}

void TabEdits::registerInverse(std::function<void(TabEdits &)> inverse)
{
    if (!undo)
        return;
    QPointer<TabEdits> self(this);
    undo->registerUndo([self, inverse = std::move(inverse)] {
        if (self)
            inverse(*self);
    });
}

void TabEdits::notify(TabChange::Kind kind, int row, QList<int> columns)
{
    TabChange change;
    change.kind = kind;
    change.row = row;
    change.columns = std::move(columns);
    change.undoing = undo && (undo->isUndoing() || undo->isRedoing());
    Q_EMIT tabChanged(change);
}

void TabEdits::writeColumn(int row, int column, const TabColumnData &data)
{
    // Items and name are copied into the column in place: it stays the same column.
    TabColumnData &model = tabData->tabRowDatas[row].colDatas[column];
    model.columnItems = data.columnItems;
    model.chordName = data.chordName;
}

// Shape

TabEdits::Message TabEdits::insertColumn(int row, int column, const TabColumnData &columnData)
{
    if (columnCount() >= maxNumTabColumns)
        return u"Maximum column count "_qs + QString::number(maxNumTabColumns);
    if (row < 0 || row >= rows().size())
        return std::nullopt;
    column = std::clamp(column, 0, int(rows()[row].colDatas.size()));
    // Only one row gets the column; the others grow at their end so their music stays put.
    for (int r = 0; r < rows().size(); ++r) {
        TabRowData &model = tabData->tabRowDatas[r];
        if (r == row)
            model.colDatas.insert(column, columnData);
        else
            model.colDatas.append(TabColumnData(model.stringCount));
    }
    registerInverse([row, column](TabEdits &edits) { edits.removeColumn(row, column); });
    notify(TabChange::Kind::ColumnInserted, row, {column});
    return std::nullopt;
}

TabEdits::Message TabEdits::removeColumn(int row, int column)
{
    // One above the number the message names: 13 is the least that removing reaches.
    if (columnCount() <= minNumTabColumns + 1)
        return u"Minimum column count "_qs + QString::number(minNumTabColumns);
    if (!validColumn(row, column))
        return std::nullopt;
    for (int r = 0; r < rows().size(); ++r) {
        const TabRowData &model = rows()[r];
        if (r == row || model.colDatas.isEmpty())
            continue;
        const TabColumnData &last = model.colDatas.last();
        if (!last.isSameColumn(TabColumnData(int(last.columnItems.size()))))
            return u"Can't remove column because of notes at end of tab row "_qs +
                   QString::number(r + 1);
    }
    TabColumnData removed;
    for (int r = 0; r < rows().size(); ++r) {
        TabRowData &model = tabData->tabRowDatas[r];
        if (r == row)
            removed = model.colDatas.takeAt(column);
        else if (!model.colDatas.isEmpty())
            model.colDatas.removeLast();
    }
    // Refused at the maximum when undone: the step is spent all the same.
    registerInverse(
        [row, column, removed](TabEdits &edits) { edits.insertColumn(row, column, removed); });
    notify(TabChange::Kind::ColumnRemoved, row, {column});
    return std::nullopt;
}

bool TabEdits::insertTabRow(int index, const TabRowData &rowData)
{
    if (!tabData || index < 0 || index > rows().size())
        return false;
    tabData->tabRowDatas.insert(index, rowData);
    registerInverse([index](TabEdits &edits) { edits.removeTabRow(index); });
    notify(TabChange::Kind::RowInserted, index);
    return true;
}

bool TabEdits::removeTabRow(int index)
{
    if (!tabData || index < 0 || index >= rows().size())
        return false;
    const TabRowData removed = tabData->tabRowDatas.takeAt(index);
    registerInverse([index, removed](TabEdits &edits) { edits.insertTabRow(index, removed); });
    notify(TabChange::Kind::RowRemoved, index);
    return true;
}

// Column items

bool TabEdits::setColumnItem(int row, int column, int itemIndex, const ColumnItemType &item)
{
    if (!validColumn(row, column))
        return false;
    const TabColumnData &current = rows()[row].colDatas[column];
    if (itemIndex < 0 || itemIndex >= current.columnItems.size())
        return false;
    const ColumnItemType old = current.columnItems[itemIndex];
    if (old == item)
        return false;
    TabColumnData changed = current;
    changed.setColumnItem(itemIndex, item);
    writeColumn(row, column, changed);
    // Undone through the bar rule as well: undoing a typed bar restores the one cell typed on.
    registerInverse([row, column, itemIndex, old](TabEdits &edits) {
        edits.setColumnItem(row, column, itemIndex, old);
    });
    notify(TabChange::Kind::Columns, row, {column});
    return true;
}

bool TabEdits::replaceColumn(int row, int column, const TabColumnData &newColumn)
{
    if (!validColumn(row, column))
        return false;
    const TabColumnData old = rows()[row].colDatas[column].deepCopy();
    if (newColumn.isSameColumn(old))
        return false;
    writeColumn(row, column, newColumn);
    registerInverse([row, column, old](TabEdits &edits) { edits.replaceColumn(row, column, old); });
    notify(TabChange::Kind::Columns, row, {column});
    return true;
}

bool TabEdits::setColumnChordName(int row, int column, const std::optional<QString> &name)
{
    if (!validColumn(row, column))
        return false;
    const std::optional<QString> oldName = rows()[row].colDatas[column].chordName;
    if (oldName == name)
        return false;
    tabData->tabRowDatas[row].colDatas[column].chordName = name;
    registerInverse([row, column, oldName](TabEdits &edits) {
        edits.setColumnChordName(row, column, oldName);
    });
    notify(TabChange::Kind::Columns, row, {column});
    return true;
}

bool TabEdits::moveStringItems(int fromItem, int toItem, int row)
{
    if (row < 0 || row >= rows().size())
        return false;
    QList<TabColumnData> &columns = tabData->tabRowDatas[row].colDatas;
    const bool inRange = std::all_of(columns.cbegin(), columns.cend(), [&](const auto &column) {
        const qsizetype count = column.columnItems.size();
        return fromItem >= 0 && fromItem < count && toItem >= 0 && toItem < count;
    });
    if (!inRange || columns.isEmpty())
        return false;
    QList<int> changed;
    for (int c = 0; c < columns.size(); ++c) {
        columns[c].columnItems.move(fromItem, toItem);
        changed.append(c);
    }
    registerInverse(
        [fromItem, toItem, row](TabEdits &edits) { edits.moveStringItems(toItem, fromItem, row); });
    notify(TabChange::Kind::Columns, row, changed);
    return true;
}

bool TabEdits::previewColumn(int row, int column, const TabColumnData &data)
{
    if (!validColumn(row, column) || rows()[row].colDatas[column].isSameColumn(data))
        return false;
    writeColumn(row, column, data);
    notify(TabChange::Kind::Columns, row, {column});
    return true;
}

bool TabEdits::commitColumn(int row, int column, const TabColumnData &before)
{
    if (!validColumn(row, column) || rows()[row].colDatas[column].isSameColumn(before))
        return false;
    registerInverse(
        [row, column, before](TabEdits &edits) { edits.replaceColumn(row, column, before); });
    return true;
}

// Lyric lines

bool TabEdits::setLyricLines(int row, const QStringList &lines, int selected)
{
    TabRowData &data = tabData->tabRowDatas[row];
    if (data.lyricLines == lines && data.selectedLyricLineIndex == selected)
        return false;
    // The inverse puts back the row's lines as they were, so an undo leaves no empty line.
    const QStringList oldLines = data.lyricLines;
    const int oldSelected = data.selectedLyricLineIndex;
    data.lyricLines = lines;
    data.selectedLyricLineIndex = selected;
    registerInverse([row, oldLines, oldSelected](TabEdits &edits) {
        if (row < edits.rows().size())
            edits.setLyricLines(row, oldLines, oldSelected);
    });
    notify(TabChange::Kind::Lyrics, row);
    return true;
}

bool TabEdits::setLyricLine(int row, int line, const QString &text)
{
    if (!tabData || row < 0 || row >= rows().size())
        return false;
    TabRowData changed = rows()[row];
    if (line >= 0 && line < changed.lyricLines.size())
        changed.selectedLyricLineIndex = line;
    if (changed.lyricText().value_or(QString()) == text) {
        // Choosing the line is no edit.
        selectLyricLine(row, changed.selectedLyricLineIndex);
        return false;
    }
    changed.setLyricText(text);
    return setLyricLines(row, changed.lyricLines, changed.selectedLyricLineIndex);
}

bool TabEdits::insertLyricLine(int row, int line, const QString &text)
{
    if (!tabData || row < 0 || row >= rows().size())
        return false;
    QStringList lines = rows()[row].lyricLines;
    line = std::clamp(line, 0, int(lines.size()));
    lines.insert(line, text);
    // The field keeps the line it shows: a new line is chosen only by the user.
    int selected = rows()[row].selectedLyricLineIndex;
    if (line <= selected && lines.size() > 1)
        ++selected;
    return setLyricLines(row, lines, std::clamp(selected, 0, int(lines.size()) - 1));
}

bool TabEdits::removeLyricLine(int row, int line)
{
    if (!tabData || row < 0 || row >= rows().size())
        return false;
    QStringList lines = rows()[row].lyricLines;
    if (line < 0 || line >= lines.size())
        return false;
    lines.removeAt(line);
    int selected = rows()[row].selectedLyricLineIndex;
    if (selected == line && line - 1 >= 0)
        selected = line - 1;
    selected = std::clamp(selected, 0, std::max(0, int(lines.size()) - 1));
    return setLyricLines(row, lines, selected);
}

bool TabEdits::selectLyricLine(int row, int line)
{
    if (!tabData || row < 0 || row >= rows().size())
        return false;
    TabRowData &data = tabData->tabRowDatas[row];
    if (line < 0 || line >= data.lyricLines.size() || data.selectedLyricLineIndex == line)
        return false;
    data.selectedLyricLineIndex = line;
    notify(TabChange::Kind::Lyrics, row);
    return true;
}

// The tab's values

TabValues TabEdits::tabValues() const
{
    if (!tabData)
        return {};
    return {tabData->stringNotes, tabData->capoFret, tabData->lyricSize, tabData->introText};
}

bool TabEdits::setTabValues(const TabValues &values)
{
    return applyTabValues(values, Conversion());
}

bool TabEdits::applyTabValues(const TabValues &values, const Conversion &conversion)
{
    if (!tabData || values.stringNotes.isEmpty())
        return false;
    const TabValues old = tabValues();
    if (old == values)
        return false;
    const bool countChanged = values.stringNotes.size() != old.stringNotes.size();
    Conversion inverse;
    if (countChanged)
        inverse = convertStringCount(int(values.stringNotes.size()), conversion);
    tabData->stringNotes = values.stringNotes;
    tabData->capoFret = values.capoFret;
    tabData->lyricSize = values.lyricSize;
    tabData->introText = values.introText;
    registerInverse([old, inverse](TabEdits &edits) { edits.applyTabValues(old, inverse); });
    if (countChanged)
        notify(TabChange::Kind::Rows, -1);
    Q_EMIT tabValuesChanged(countChanged);
    return true;
}

TabEdits::Conversion TabEdits::convertStringCount(int count, const Conversion &conversion)
{
    using Kind = Conversion::Kind;
    Conversion inverse;
    for (int r = 0; r < tabData->tabRowDatas.size(); ++r) {
        TabRowData &row = tabData->tabRowDatas[r];
        row.stringCount = count;
        QList<QList<ColumnItemType>> rowDropped;
        for (int c = 0; c < row.colDatas.size(); ++c) {
            QList<ColumnItemType> &items = row.colDatas[c].columnItems;
            const qsizetype extra = count - items.size();
            const QList<ColumnItemType> back = conversion.items.value(r).value(c);
            if (conversion.kind == Kind::RestoreTop && extra > 0 && back.size() == extra) {
                // The highest strings return with what they held.
                items = back + items;
            } else if (conversion.kind == Kind::TrimBottom && extra < 0) {
                items.resize(count);
            } else {
                if (extra < 0)
                    rowDropped.append(items.mid(0, -extra));
                row.colDatas[c].setStringCount(count);
            }
            if (rowDropped.size() <= c)
                rowDropped.append(QList<ColumnItemType>());
        }
        inverse.items.append(rowDropped);
    }
    const bool grew = conversion.kind == Kind::RestoreTop;
    const bool shrank = conversion.kind == Kind::TrimBottom;
    if (grew || shrank)
        inverse.kind = Kind::Convert;
    else
        inverse.kind = count > tabData->stringCount() ? Kind::TrimBottom : Kind::RestoreTop;
    return inverse;
}

// Outside the undo stack

void TabEdits::replaceRows(const QList<TabRowData> &newRows)
{
    if (!tabData)
        return;
    tabData->tabRowDatas = newRows;
    notify(TabChange::Kind::Rows, -1);
}

void TabEdits::appendBlankRows(int count, int columns, int strings)
{
    if (!tabData || count <= 0)
        return;
    const int first = int(rows().size());
    for (int i = 0; i < count; ++i)
        tabData->tabRowDatas.append(TabRowData(columns, strings));
    notify(TabChange::Kind::RowsAppended, first);
}
