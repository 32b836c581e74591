#pragma once

#include "model/columnitemtype.h"

#include <QString>
#include <QStringList>

#include <optional>

class NoteFromFretsHelper
{
public:
    static NoteFromFretsHelper &shared();

    // The note name at `fret` on a string tuned to `openNote`; nothing if that is no note.
    std::optional<QString> noteName(qint64 fret, const QString &openNote) const;
};

// The text that stands on a tab for one item. `stringIndex` counts from the top line; with
// `notesOnTab`, notes read as note names where the tuning allows.
QString displayText(const ColumnItemType &item, int stringIndex, const QStringList *tuning,
                    bool notesOnTab);
