#include "tabdata.h"


#include <algorithm>

TabColumnData::TabColumnData(int stringCount)
    : columnItems(std::max(stringCount, 0), ColumnItemType::blank())
{
}

TabColumnData::TabColumnData(QList<ColumnItemType> items, std::optional<QString> chordName)
    : chordName(std::move(chordName)), columnItems(std::move(items))
{
}

void TabColumnData::setColumnItem(qsizetype index, ColumnItemType item)
{
    Q_ASSERT(index >= 0 && index < columnItems.size());
    if (index < 0 || index >= columnItems.size() || columnItems[index] == item)
        return;
    columnItems[index] = item;
    if (item.isBar()) {
        std::fill(columnItems.begin(), columnItems.end(), ColumnItemType::bar());
        return;
    }
    for (ColumnItemType &other : columnItems) {
        if (other.isBar())
            other = ColumnItemType::blank();
    }
}

void TabColumnData::setStringCount(int count)
{
    count = std::max(count, 0);
    if (columnItems.size() > count)
        columnItems.remove(0, columnItems.size() - count);
    while (columnItems.size() < count) {
        const bool barColumn = !columnItems.isEmpty() && columnItems.last().isBar();
        columnItems.append(barColumn ? ColumnItemType::bar() : ColumnItemType::blank());
    }
}

bool TabColumnData::isSameColumn(const TabColumnData &other) const
{
    return columnItems == other.columnItems && chordName == other.chordName;
}

bool TabColumnData::hasBar() const
{
    return std::any_of(columnItems.begin(), columnItems.end(),
                       [](const ColumnItemType &item) { return item.isBar(); });
}

bool TabColumnData::isAllBlank() const
{
    return std::all_of(columnItems.begin(), columnItems.end(),
                       [](const ColumnItemType &item) { return item.isBlank(); });
}

TabRowData::TabRowData(int columnCount, int stringCount)
    : stringCount(stringCount), colDatas(std::max(columnCount, 0), TabColumnData(stringCount))
{
    Q_ASSERT(columnCount >= 0 && stringCount >= 0);
}

TabRowData::TabRowData(QList<TabColumnData> columns, QStringList lines)
    : stringCount(columns.isEmpty() ? 0 : int(columns.first().columnItems.size())),
      colDatas(std::move(columns)), lyricLines(std::move(lines))
{
}

std::optional<QString> TabRowData::lyricText() const
{
    if (selectedLyricLineIndex >= 0 && selectedLyricLineIndex < lyricLines.size())
        return lyricLines[selectedLyricLineIndex];
    if (!lyricLines.isEmpty())
        return lyricLines.first();
    return std::nullopt;
}

void TabRowData::setLyricText(const std::optional<QString> &text)
{
    if (selectedLyricLineIndex == 0 && lyricLines.isEmpty() && text)
        lyricLines.append(QString());
    if (selectedLyricLineIndex < 0 || selectedLyricLineIndex >= lyricLines.size())
        return;
    lyricLines[selectedLyricLineIndex] = text.value_or(QString());
}

QStringList standardStringNotes(int stringCount)
{
    if (stringCount <= 4)
        return {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs};
    switch (stringCount) {
    case 5:
        return {u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs};
    case 6:
        return {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
    case 7:
        return {u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
    default:
        return {u"F#"_qs, u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
    }
}

TabData::TabData(const QString &title, int stringCount)
    : title(title), stringNotes(standardStringNotes(std::clamp(stringCount, 0, 8)))
{
}

TabData::TabData(const QString &title, QList<TabRowData> rows, QStringList notes,
                 std::optional<qint64> capo, std::optional<QString> intro)
    : title(title), tabRowDatas(std::move(rows)), stringNotes(std::move(notes)),
      capoFret(capo.value_or(0)), introText(std::move(intro))
{
}
