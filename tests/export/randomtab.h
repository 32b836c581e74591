#pragma once

#include "model/tabdata.h"

#include <QRandomGenerator>

// Random tabs for round trips: 4 to 8 strings in standard tuning, every row with a note on
// it, chord names that read as chord names, lyrics in lower case.
struct RandomTabOptions {
    bool marks = true;
    bool chordsOnBars = true;
};

inline TabData randomTab(QRandomGenerator &random, RandomTabOptions options = {})
{
    static const QStringList chords{u"C"_qs, u"Am"_qs, u"G7"_qs, u"F#m"_qs, u"Bb"_qs,
                                    u"Dm7"_qs, u"E"_qs, u"A7"_qs};
    static const QStringList words{u"la"_qs, u"love"_qs, u"rain"_qs, u"and"_qs, u"the"_qs};
    const int strings = 4 + random.bounded(5);
    const int width = 12 + random.bounded(20);
    QList<TabRowData> rows;
    for (int r = 0, count = 1 + random.bounded(4); r < count; ++r) {
        QList<TabColumnData> columns;
        for (int c = 0; c < width; ++c) {
            TabColumnData column(strings);
            const int roll = random.bounded(10);
            if (roll == 0) {
                column.columnItems.fill(ColumnItemType::bar());
            } else if (roll < 7) {
                for (ColumnItemType &item : column.columnItems) {
                    const int what = random.bounded(8);
                    if (what < 3)
                        item = ColumnItemType::note(random.bounded(25));
                    else if (what == 3 && options.marks)
                        item = ColumnItemType(ColumnItemType::Kind(2 + random.bounded(11)));
                }
            }
            if (random.bounded(6) == 0 && (options.chordsOnBars || !column.hasBar()))
                column.chordName = chords[random.bounded(chords.size())];
            columns.append(column);
        }
        // Every row has something on it: a row of nothing is no block in text.
        columns[random.bounded(width)].setColumnItem(0, ColumnItemType::note(3));
        QStringList lyrics;
        for (int l = 0, lines = random.bounded(3); l < lines; ++l) {
            QStringList line;
            for (int w = 0, n = 1 + random.bounded(6); w < n; ++w)
                line.append(words[random.bounded(words.size())]);
            lyrics.append(line.join(u' '));
        }
        rows.append(TabRowData(columns, lyrics));
    }
    std::optional<QString> intro;
    if (random.bounded(2))
        intro = u"Play it slowly\nthen faster"_qs;
    return TabData(u"Song "_qs + QString::number(random.bounded(100)), rows,
                   standardStringNotes(strings), random.bounded(2) ? random.bounded(8) : 0,
                   intro);
}
