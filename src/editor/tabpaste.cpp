#include "tabpaste.h"

#include "services/lgundomanager.h"

namespace {

// The pasted lines from the top; a tab with more strings gets blanks below, one with fewer
// loses the lowest lines.
TabColumnData fitted(const TabColumnData &column, int strings)
{
    TabColumnData result(strings);
    result.chordName = column.chordName;
    if (column.hasBar()) {
        result.columnItems.fill(ColumnItemType::bar());
        return result;
    }
    for (int i = 0; i < strings && i < column.columnItems.size(); ++i)
        result.columnItems[i] = column.columnItems[i];
    return result;
}

bool isEmpty(const TabColumnData &column)
{
    return column.isAllBlank() && !column.chordName;
}

} // namespace

std::optional<QString> TabPaste::pasteRows(TabEdits &edits, int row, int column,
                                           const QList<TabRowData> &rows)
{
    const TabData *tab = edits.tab();
    const int width = edits.columnCount();
    if (!tab || row < 0 || row >= edits.rows().size() || width <= 0)
        return u"There is no row to paste into."_qs;
    const int strings = edits.rows()[row].stringCount > 0 ? edits.rows()[row].stringCount
                                                          : tab->stringCount();

    // The pasted rows less the blank columns that only pad them out.
    QList<QList<TabColumnData>> pieces;
    QList<QStringList> lyrics;
    for (const TabRowData &pasted : rows) {
        QList<TabColumnData> columns;
        for (const TabColumnData &source : pasted.colDatas)
            columns.append(fitted(source, strings));
        while (!columns.isEmpty() && isEmpty(columns.last()))
            columns.removeLast();
        if (columns.isEmpty() && pasted.lyricLines.isEmpty())
            continue;
        pieces.append(columns);
        lyrics.append(pasted.lyricLines);
    }
    if (pieces.isEmpty())
        return u"The pasted tab has nothing in it."_qs;

    UndoGroupGuard step(edits.undoManager());
    column = std::clamp(column, 0, width - 1);
    if (pieces.size() == 1 && lyrics.first().isEmpty() && column + pieces.first().size() <= width) {
        for (qsizetype k = 0; k < pieces.first().size(); ++k)
            edits.replaceColumn(row, column + int(k), pieces.first()[k]);
        return std::nullopt;
    }
    int at = row + 1;
    for (qsizetype p = 0; p < pieces.size(); ++p) {
        const QList<TabColumnData> &columns = pieces[p];
        for (qsizetype from = 0; from < std::max<qsizetype>(columns.size(), 1); from += width) {
            TabRowData inserted(width, strings);
            for (qsizetype k = 0; k < width && from + k < columns.size(); ++k)
                inserted.colDatas[k] = columns[from + k];
            if (from == 0)
                inserted.lyricLines = lyrics[p];
            edits.insertTabRow(at++, inserted);
        }
    }
    return std::nullopt;
}
