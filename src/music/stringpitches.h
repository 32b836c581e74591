#pragma once

#include "musicnote.h"

#include <QList>
#include <QStringList>

#include <optional>

// The sounding pitch of each open string, worked out from the note names alone: the first
// string near the instrument's usual lowest note, each next one at the nearest note above.
namespace StringPitches {

// The octave of each open string, top line first. Strings whose names aren't notes may leave
// no entry, as may the string above them.
QList<int> openStringOctaves(const QStringList &stringNotes);
// The MIDI note number (60 is middle C), or nothing outside 0 to 127.
std::optional<int> midiPitch(MusicNote note, int octave);
// The MIDI pitch of each open string, top line first; nothing where the name is no note.
QList<std::optional<int>> openStringMidiPitches(const QStringList &stringNotes);

} // namespace StringPitches
