#pragma once

#include "model/columnitemtype.h"

#include <QList>
#include <QStringList>

// Where a note menu was opened.
struct NoteContextMenuSource {
    int tRowIndex = 0;
    int colIndex = 0;
    int itemIndex = 0;
    int showingTabRowIndex = 0;
};

// The entries of a note menu: what each stands for and its label, parallel lists. They run
// from one fret below over the item as it stands and the marks to one fret above.
struct NoteMenuEntries {
    QList<ColumnItemType> results;
    QStringList labels;
    int startIndex = 0;

    // The menu for `current` on the string at itemIndex (0 the top line) of `tuning`.
    static NoteMenuEntries forItem(const ColumnItemType &current, int itemIndex,
                                   const QStringList &tuning, bool notesOnTab);
};
