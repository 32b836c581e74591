#pragma once

#include "chordshortcut.h"

#include <QList>
#include <QStringList>


// Where the strings of a tab lie over the strings of a table's reference tuning.
struct ChordAlignment {
    int matchCount = 0;
    int tabStart = 0;
    int refStart = 0;

    friend bool operator==(const ChordAlignment &, const ChordAlignment &) = default;
};

// The built-in chord tables, each written for one reference tuning, and their re-fitting to the
// tuning of a tab. No chord theory here: a tab gets the first table that shares four strings
// with it, adapted string by string, followed by the user's own chords.
class ChordShortcutLibrary {
public:
    static const ChordShortcutLibrary &shared();

    QStringList allNotes;
    QList<ChordShortcut> defaultChords;
    QList<ChordShortcut> ukuleleChords;
    QList<ChordShortcut> dropCChords;
    QList<ChordShortcut> dropBChords;
    QList<ChordShortcut> openAChords;
    QList<ChordShortcut> openBChords;
    QList<ChordShortcut> openCChords;
    QList<ChordShortcut> openDChords;
    QList<ChordShortcut> openEChords;
    QList<ChordShortcut> openFChords;
    QList<ChordShortcut> openGChords;

    struct Table {
        const QList<ChordShortcut> *chords = nullptr;
        QStringList reference;
    };
    // The tables in the order they are tried, with their reference tunings, lowest string first.
    const QList<Table> &tables() const { return searchOrder; }

    // The chords for a tuning (lowest string first), each with one item per string; the user's
    // `customChords` come last, fitted to the tuning.
    QList<ChordShortcut> chordsFor(const QStringList &stringNotes,
                                   const QList<ChordShortcut> &customChords = {}) const;
    // Only the table part of the list.
    QList<ChordShortcut> tableChordsFor(const QStringList &stringNotes) const;

    ChordAlignment bestAlignment(const QStringList &stringNotes,
                                 const QStringList &reference) const;
    ChordShortcut fittedChord(const ChordShortcut &chord, const QStringList &stringNotes,
                              const ChordAlignment &alignment, const QStringList &reference) const;
    ChordShortcut fittedCustomChord(const ChordShortcut &chord,
                                    const QStringList &stringNotes) const;

private:
    ChordShortcutLibrary();
    QList<Table> searchOrder;
};
