#include "stringpitches.h"

#include "musicnote.h"

#include <QPair>

#include <algorithm>

namespace {

// Where C sits among the notes counted from A.
constexpr int placeOfC = 3;

} // namespace

QList<int> StringPitches::openStringOctaves(const QStringList &stringNotes)
{
    const int count = int(stringNotes.size());
    if (count == 0)
        return {};

    MusicNote assumedNote = MusicNote::E;
    int startOctave = 3;
    switch (count) {
    case 4:
        startOctave = 1;
        break;
    case 5:
        assumedNote = MusicNote::B;
        startOctave = 0;
        break;
    case 6:
        if (stringNotes.mid(0, 3) == QStringList{u"B"_qs, u"E"_qs, u"A"_qs}) {
            assumedNote = MusicNote::B;
            startOctave = 0;
        } else {
            startOctave = 2;
        }
        break;
    case 7:
        assumedNote = MusicNote::B;
        startOctave = 1;
        break;
    case 8:
        assumedNote = MusicNote::Fsharp;
        startOctave = 1;
        break;
    default:
        return QList<int>(count, 3);
    }

    auto reversed = [](QList<int> octaves) {
        std::reverse(octaves.begin(), octaves.end());
        return octaves;
    };
    // Re-entrant and same-note tunings, which a rising walk can't describe.
    static const QList<QPair<QStringList, QList<int>>> fixedTunings = {
        {{u"G"_qs, u"C"_qs, u"E"_qs, u"A"_qs}, {4, 4, 4, 4}},
        {{u"A"_qs, u"D"_qs, u"F#"_qs, u"B"_qs}, {4, 4, 4, 4}},
        {QStringList(6, u"E"_qs), {2, 2, 3, 3, 4, 4}},
        {QStringList(6, u"D"_qs), {2, 3, 3, 3, 4, 4}},
    };
    for (const auto &[tuning, octaves] : fixedTunings) {
        if (stringNotes == tuning)
            return reversed(octaves);
    }

    // Places on a scale of the twelve notes laid out three times, A first; the middle copy
    // starts at 12.
    auto isC = [](int place) { return place % 12 == placeOfC; };
    auto middlePlace = [](MusicNote note) { return 12 + MusicNotes::position(note); };

    // The first string lies within 6 semitones of the instrument's ordinary lowest note.
    const int assumedPlace = middlePlace(assumedNote);
    int firstPlace = middlePlace(MusicNotes::fromText(stringNotes[0]).value_or(assumedNote));
    if (assumedPlace - firstPlace >= 7)
        firstPlace += 12;
    else if (assumedPlace - firstPlace <= -7)
        firstPlace -= 12;
    int octave = startOctave;
    if (firstPlace < assumedPlace) {
        for (int place = firstPlace + 1; place <= assumedPlace; ++place) {
            if (isC(place)) {
                --octave;
                break;
            }
        }
    } else if (firstPlace > assumedPlace) {
        for (int place = assumedPlace + 1; place <= firstPlace; ++place) {
            if (isC(place)) {
                ++octave;
                break;
            }
        }
    }

    QList<int> octaves{octave};
    for (int string = 1; string < count; ++string) {
        const auto previous = MusicNotes::fromText(stringNotes[string - 1]);
        const auto current = MusicNotes::fromText(stringNotes[string]);
        if (!previous || !current)
            continue;
        // Up to the next place of this note, at least one on; crossing a C raises the octave.
        int place = middlePlace(*previous);
        bool crossedC = false;
        do {
            ++place;
            crossedC = crossedC || isC(place);
        } while (place % 12 != MusicNotes::position(*current));
        if (crossedC)
            ++octave;
        octaves.append(octave);
    }
    return reversed(octaves);
}

std::optional<int> StringPitches::midiPitch(MusicNote note, int octave)
{
    const int n = MusicNotes::position(note);
    // Octaves turn over at C; MIDI's 60 is C4.
    const int pitch = 12 * (octave + 1) + (n < placeOfC ? n + 9 : n - placeOfC);
    if (pitch < 0 || pitch > 127)
        return std::nullopt;
    return pitch;
}

QList<std::optional<int>> StringPitches::openStringMidiPitches(const QStringList &stringNotes)
{
    const QList<int> octaves = openStringOctaves(stringNotes);
    const qsizetype count = stringNotes.size();
    QList<std::optional<int>> pitches(count);
    for (qsizetype line = 0; line < count; ++line) {
        const auto note = MusicNotes::fromText(stringNotes[count - 1 - line]);
        if (note && line < octaves.size())
            pitches[line] = midiPitch(*note, octaves[line]);
    }
    return pitches;
}
