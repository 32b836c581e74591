#pragma once

#include "model/columnitemtype.h"

#include <QList>
#include <QStringList>

#include <optional>

struct SelectionBox;

// The items on one string that move together: notes joined by marks never split over strings.
struct NoteGroup {
    QList<ColumnItemType> notes;

    bool hasNote() const;
};

// Raises or lowers a block of columns by semitones. A note that runs out of frets moves to the
// neighbouring string at the fret of the same pitch and pushes whatever stood there on, so the
// phrase stays playable. Made for one operation; the block is worked on as a copy.
class SemitoneShiftHelper {
public:
    // Each column is a list of items in top-to-bottom order, one per string.
    using Block = QList<QList<ColumnItemType>>;

    // The highest fret a shifted note may reach, whatever the neck has.
    static constexpr qint64 highestFret = 25;
    // Only the six top strings take part: the lower strings of a seven- or eight-string tab stay.
    static constexpr int lastWalkedString = 5;

    // `tuning` is the tab's stringNotes, lowest first; the string count follows it.
    explicit SemitoneShiftHelper(QStringList tuning);
    SemitoneShiftHelper(QStringList tuning, int stringCount);

    QStringList tuning;
    int stringCount = 0;

    // The shifted block, or nothing when the shift can't be done or found no note to shift.
    // `box` is the caller's own copy: it is widened by up to one string on each side when notes
    // move out of it, and the caller writes back the strings of the widened box.
    std::optional<Block> shiftSemitones(int semitones, Block columns, SelectionBox &box) const;

    // Reads the group that starts on `string` at `column`: marks join, a note joins only after a
    // mark, a vibrato closes the group, a blank or bar ends it outside.
    static NoteGroup collectGroup(const Block &columns, int string, int column);
    static bool groupFits(const NoteGroup &group, int semitones);

private:
    bool moveGroup(Block &columns, const NoteGroup &group, int string, int column, int semitones,
                   int boxStart, int boxEnd, SelectionBox &box) const;
    // The fret on `target` that sounds like `fret` on the adjacent string `source`, or -1 when
    // either open string is no note.
    qint64 sameFretOnString(qint64 fret, int source, int target) const;
    std::optional<int> openNotePosition(int string) const;
};
