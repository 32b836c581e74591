// Figures for the music logic: the chord lists of every preset tuning, a semitone shift of a
// full row, and the song sequence of the benchmark tab.
#include "benchtab.h"
#include "benchutil.h"

#include "music/chordshortcutlibrary.h"
#include "music/guitartuning.h"
#include "music/semitoneshifthelper.h"
#include "services/saveddata.h"
#include "model/selectionbox.h"
#include "viewmode/songsequence.h"

#include <cstdio>

namespace {

SemitoneShiftHelper::Block blockOfRow(const TabRowData &row)
{
    SemitoneShiftHelper::Block block;
    block.reserve(row.colDatas.size());
    for (const TabColumnData &column : row.colDatas)
        block.append(column.columnItems);
    return block;
}

void benchChords()
{
    // A few of the user's chords, so the custom part of the list is measured too.
    for (int i = 0; i < 5; ++i) {
        ChordShortcut chord;
        chord.name = u"Mine %1"_qs.arg(i);
        chord.colItems = QList<ColumnItemType>(6, ColumnItemType::note(i));
        chord.isCustom = true;
        SavedData::shared().saveCustomChord(chord);
    }

    QList<QStringList> tunings;
    for (int strings = 4; strings <= 8; ++strings) {
        for (const GuitarTuning &preset : GuitarTunings::presetsFor(strings)) {
            if (preset.stringNotes)
                tunings.append(*preset.stringNotes);
        }
    }
    const ChordShortcutLibrary &library = ChordShortcutLibrary::shared();
    qsizetype chordCount = 0;
    const double all = bestOf(
        [&] {
            chordCount = 0;
            for (const QStringList &tuning : tunings)
                chordCount += library.chordsFor(tuning).size();
        },
        20);
    double slowest = 0;
    for (const QStringList &tuning : tunings) {
        slowest = std::max(slowest, bestOf([&] { library.chordsFor(tuning); }, 20));
    }
    std::printf("chordsFor: %lld preset tunings, %lld chords in all\n",
                static_cast<long long>(tunings.size()), static_cast<long long>(chordCount));
    printFigure("chordsFor, all presets", all, "ms");
    printFigure("chordsFor, slowest preset", slowest, "ms");
}

void benchShift(const TabData &tab)
{
    const SemitoneShiftHelper helper(tab.stringNotes);
    const SemitoneShiftHelper::Block block = blockOfRow(tab.tabRowDatas.first());

    for (const int semitones : {1, -1, 7, -7}) {
        bool shifted = false;
        const double time = bestOf(
            [&] {
                SelectionBox box(0, int(block.size()), 0, 6, 0);
                shifted = helper.shiftSemitones(semitones, block, box).has_value();
            },
            50);
        char label[64];
        std::snprintf(label, sizeof label, "shiftSemitones %+d, 64x6%s", semitones,
                      shifted ? "" : " (refused)");
        printFigure(label, time, "ms");
    }

    // A block where every note has to change string, so the moves themselves are measured.
    SemitoneShiftHelper::Block moving(64, QList<ColumnItemType>(6, ColumnItemType::blank()));
    for (qsizetype c = 0; c < moving.size(); ++c)
        moving[c][c % 3] = ColumnItemType::note(c % 2);
    bool shifted = false;
    const double time = bestOf(
        [&] {
            SelectionBox box(0, 64, 0, 3, 0);
            shifted = helper.shiftSemitones(-2, moving, box).has_value();
        },
        50);
    printFigure(shifted ? "shiftSemitones -2, all moving" : "shiftSemitones -2 (refused)", time,
                "ms");
}

void benchSequence(const TabData &tab)
{
    qsizetype events = 0;
    qsizetype evened = 0;
    const double time = bestOf(
        [&] {
            SongSequence sequence(tab, QPointF(10, 500));
            sequence.buildSongSequence(true);
            events = sequence.songArray.size();
            evened = sequence.songArrayWithEvenMeasures.size();
        },
        10);
    std::printf("buildSongSequence: %lld rows, %lld events, %lld evened\n",
                static_cast<long long>(tab.tabRowDatas.size()), static_cast<long long>(events),
                static_cast<long long>(evened));
    printFigure("buildSongSequence, 1000 rows", time, "ms");

    // The by-measure case where measures need rests: every other row opens with a measure of
    // 12 columns instead of 15, so the measures are evened to 60 ticks.
    TabData uneven = tab;
    for (qsizetype r = 0; r < uneven.tabRowDatas.size(); r += 2)
        uneven.tabRowDatas[r].colDatas.remove(3, 3);
    const double unevenTime = bestOf(
        [&] {
            SongSequence sequence(uneven, QPointF(10, 500));
            sequence.buildSongSequence(true);
            evened = sequence.songArrayWithEvenMeasures.size();
        },
        10);
    std::printf("uneven measures: %lld evened events\n", static_cast<long long>(evened));
    printFigure("buildSongSequence, uneven", unevenTime, "ms");
}

} // namespace

int main(int argc, char **argv)
{
    BenchEnvironment environment(argc, argv);
    const TabData tab = makeBenchmarkTab();
    benchChords();
    benchShift(tab);
    benchSequence(tab);
    std::printf("targets: chordsFor and shiftSemitones under 1 ms, buildSongSequence under "
                "20 ms\n");
    return 0;
}
