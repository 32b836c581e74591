#include "importedrows.h"

#include "library/tabedits.h"

QList<QList<TabColumnData>> ImportedRows::fit(const QList<TabColumnData> &columns, int widest)
{
    QList<QList<TabColumnData>> rows;
    qsizetype at = 0;
    while (columns.size() - at > widest) {
        qsizetype cut = at + widest;
        for (qsizetype k = at + widest; k > at + widest / 2; --k) {
            if (columns[k - 1].hasBar()) {
                cut = k;
                break;
            }
        }
        rows.append(columns.mid(at, cut - at));
        at = cut;
    }
    rows.append(columns.mid(at));
    return rows;
}

QList<TabRowData> ImportedRows::evened(QList<QList<TabColumnData>> columns,
                                       const QList<QStringList> &lyrics, int stringCount)
{
    qsizetype width = TabEdits::minNumTabColumns;
    for (const QList<TabColumnData> &row : columns)
        width = std::max(width, row.size());
    QList<TabRowData> rows;
    for (qsizetype r = 0; r < columns.size(); ++r) {
        QList<TabColumnData> &row = columns[r];
        for (TabColumnData &column : row) {
            if (column.columnItems.size() != stringCount)
                column.setStringCount(stringCount);
        }
        while (row.size() < width)
            row.append(TabColumnData(stringCount));
        TabRowData rowData(row, lyrics.value(r));
        rowData.stringCount = stringCount;
        rows.append(rowData);
    }
    return rows;
}
