#include "tabtimeline.h"

#include "music/songsequence.h"

TabTimeline TabTimeline::of(const TabData &tab)
{
    // As view mode reads them: the stored options whole, or the tab's tempo and the defaults.
    ViewModePlaybackOptions playback;
    playback.playbackSpeed = tab.tempo;
    if (tab.playbackOptions)
        playback = *tab.playbackOptions;

    TabTimeline timeline;
    timeline.tempo = playback.playbackSpeed > 0 ? playback.playbackSpeed : 80;
    SongSequence sequence(tab);
    sequence.buildSongSequence(playback.playbackByMeasure);

    const qint64 beats = playback.playbackBeatsPerMeasure;
    if (playback.playbackByMeasure && sequence.songArrayEvenMeasuresSuccessful && beats > 0
        && sequence.evenMeasureLength >= beats) {
        const qint64 length = sequence.evenMeasureLength;
        // Whole ticks a beat, as playback counts them.
        timeline.ticksPerQuarter = length / beats;
        timeline.measureTicks = length;
        const QList<SongSequenceEvent> &events = sequence.songArrayWithEvenMeasures;
        for (qsizetype tick = 0; tick < events.size(); ++tick) {
            if (events[tick].isRest() || !events[tick].trIndex || !events[tick].colIndex)
                continue;
            // A column rings until the next one or the end of its measure; the rests that
            // lead into a measure's first column stay rests.
            const qint64 measureEnd = (tick / length + 1) * length;
            qint64 next = tick + 1;
            while (next < measureEnd && next < events.size() && events[next].isRest())
                ++next;
            timeline.slots.append({*events[tick].trIndex, *events[tick].colIndex, tick,
                                   next - tick});
        }
        timeline.totalTicks = events.size();
        return timeline;
    }

    timeline.ticksPerQuarter = std::max<qint64>(playback.playbackColumnsInBeat, 1);
    for (const SongSequenceEvent &event : sequence.songArray) {
        if (!event.trIndex || !event.colIndex)
            continue;
        timeline.slots.append({*event.trIndex, *event.colIndex, timeline.totalTicks, 1});
        ++timeline.totalTicks;
    }
    return timeline;
}
