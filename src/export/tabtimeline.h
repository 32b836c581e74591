#pragma once

#include "model/tabdata.h"

#include <QList>

// When each column of a tab sounds and for how long, in whole ticks, as playback times it: by
// evened measures when the tab plays by measure and they even out, else a tick a column.
struct TabTimeline {
    struct Slot {
        int row = 0;
        int column = 0;
        qint64 start = 0;
        qint64 duration = 1;
    };

    // Ticks in a quarter note (a beat): what MusicXML calls divisions and MIDI pulses.
    qint64 ticksPerQuarter = 1;
    // Quarter notes a minute.
    qint64 tempo = 80;
    // The ticks of every measure when the measures were evened, else 0.
    qint64 measureTicks = 0;
    qint64 totalTicks = 0;
    // Every column that is no bar, in reading order.
    QList<Slot> slots;

    static TabTimeline of(const TabData &tab);
};
