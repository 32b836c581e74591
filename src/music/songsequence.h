#pragma once

#include "model/columnitemtype.h"
#include "model/tabdata.h"
#include "model/viewmodeoptions.h"

#include <QHash>
#include <QList>
#include <QPointF>
#include <QString>

#include <optional>

// One tick of playback. A real event names a column and carries a copy of its items; a rest
// event names nothing and carries nothing.
struct SongSequenceEvent {
    std::optional<int> trIndex;
    std::optional<int> colIndex;
    QList<ColumnItemType> colItems;

    static SongSequenceEvent rest() { return {}; }
    bool isRest() const { return !trIndex && !colIndex; }

    friend bool operator==(const SongSequenceEvent &, const SongSequenceEvent &) = default;
};

// The flat lists that playback walks, one event per tick, and the position in them. The tab
// has no note lengths: timing comes only from where columns stand between bar lines.
class SongSequence {
public:
    explicit SongSequence(TabData tabData,
                          std::optional<QPointF> lastHighlightIndex = std::nullopt);

    TabData tabData;

    // One event per non-bar column, in reading order.
    QList<SongSequenceEvent> songArray;
    // Every measure spread to evenMeasureLength ticks; only meaningful when the next is true.
    QList<SongSequenceEvent> songArrayWithEvenMeasures;
    bool songArrayEvenMeasuresSuccessful = false;
    // The least common multiple of the measure lengths. Kept when the evened list would be too
    // long; 0 when there was nothing to even or the multiple did not fit in 64 bits.
    qint64 evenMeasureLength = 0;
    // "row,col" of every bar column to the position in songArray of the first event after it.
    QHash<QString, int> barMapping;
    // Position in the active list of the event last played; -1 stands before the first.
    std::optional<int> lastSongIndex;
    // The highlighted column: x is the column (may be -1), y the row.
    std::optional<QPointF> lastHighlightIndex;

    // The evened list only when playing by measure and the evening succeeded.
    const QList<SongSequenceEvent> &activeSongArray(bool playbackByMeasure) const;

    // Fills the lists from tabData and syncs the index. Meant to run once for a screen: it
    // appends to what is there.
    void buildSongSequence(bool playbackByMeasure = false);
    // Maps lastHighlightIndex back into the active list.
    void syncSongIndex(bool playbackByMeasure);

    static QString barKey(int row, int column);

    // Seconds between two ticks when playing by measure: beat / (L / B), with L / B in whole
    // numbers. Nothing when B is 0 or below or L is smaller than B, which would divide by zero.
    static std::optional<double> measureTickLength(qint64 playbackSpeed, qint64 evenMeasureLength,
                                                   qint64 beatsPerMeasure);
    // Seconds between two ticks: by measure where that gives a value, else the columns in a
    // beat share it.
    static double tickLength(const ViewModePlaybackOptions &options, bool evenMeasuresSuccessful,
                             qint64 evenMeasureLength);
    double tickLength(const ViewModePlaybackOptions &options) const;

private:
    void evenMeasures(const QList<int> &measureLengths);
};
