#pragma once

#include "music/chordshortcut.h"
#include "services/saveddata.h"

#include <QList>
#include <QString>

// What the chord bar and the chord search show, worked out from the tuning's chords alone.
namespace ChordSearch {

// How well a chord answers typed text; 0: not at all. `query` is taken as typed.
int score(const ChordShortcut &chord, const QString &query);
// The chords that answer the text, best first; equal scores keep the library's order. An empty
// text answers nothing.
QList<ChordShortcut> search(const QList<ChordShortcut> &chords, const QString &query);
// The bar's order: the recent chords found in this tuning, newest first, then the rest of the
// library in its own order.
QList<ChordShortcut> barSequence(const QList<ChordShortcut> &chords,
                                 const QList<RecentChord> &recents);

} // namespace ChordSearch
