#pragma once

#include "model/tabdata.h"

// The tab every benchmark measures: 1,000 rows of 64 columns on six strings, with notes, marks,
// bars, chord names and two lyric lines a row, varied so that nothing is trivially repeated.
inline TabData makeBenchmarkTab(int rowCount = 1000, int columnCount = 64, int stringCount = 6)
{
    static const char16_t *chordNames[] = {u"Am", u"C", u"G7", u"Fmaj7", u"D/F#", u"Esus4"};
    static const ColumnItemType::Kind marks[] = {
        ColumnItemType::Kind::hammer,  ColumnItemType::Kind::pull,  ColumnItemType::Kind::slideUp,
        ColumnItemType::Kind::vibrato, ColumnItemType::Kind::muted, ColumnItemType::Kind::bend};
    QList<TabRowData> rows;
    rows.reserve(rowCount);
    quint32 seed = 12345;
    auto next = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    for (int r = 0; r < rowCount; ++r) {
        TabRowData row(columnCount, stringCount);
        for (int c = 0; c < columnCount; ++c) {
            TabColumnData &column = row.colDatas[c];
            if (c % 16 == 15) {
                column.setColumnItem(0, ColumnItemType::bar());
                continue;
            }
            for (int s = 0; s < stringCount; ++s) {
                const quint32 roll = next() % 10;
                if (roll < 3)
                    column.columnItems[s] = ColumnItemType::note(qint64(next() % 25));
                else if (roll == 3)
                    column.columnItems[s] = ColumnItemType(marks[next() % 6]);
            }
            if (c % 8 == 0)
                column.chordName = QString::fromUtf16(chordNames[next() % 6]);
        }
        row.lyricLines = {u"Row %1, the first line of the words"_qs.arg(r + 1),
                          u"and a second line to choose instead"_qs};
        rows.append(std::move(row));
    }
    QStringList tuning = standardStringNotes(stringCount);
    TabData tab(u"Benchmark"_qs, std::move(rows), std::move(tuning), 2, u"A long intro"_qs);
    tab.tempo = 112;
    tab.playbackOptions = ViewModePlaybackOptions{};
    return tab;
}
