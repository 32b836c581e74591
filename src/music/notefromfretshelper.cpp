#include "notefromfretshelper.h"

#include "musicnote.h"

NoteFromFretsHelper &NoteFromFretsHelper::shared()
{
    static NoteFromFretsHelper helper;
    return helper;
}

std::optional<QString> NoteFromFretsHelper::noteName(qint64 fret, const QString &openNote) const
{
    const auto open = MusicNotes::fromText(openNote);
    if (!open)
        return std::nullopt;
    // Callers pass zero or more; a floor modulo keeps a stray negative from indexing outside.
    const qint64 position = ((MusicNotes::position(*open) + fret) % 12 + 12) % 12;
    return MusicNotes::allTexts()[position];
}

QString displayText(const ColumnItemType &item, int stringIndex, const QStringList *tuning,
                    bool notesOnTab)
{
    if (item.isMark())
        return item.text();
    if (tuning && notesOnTab && stringIndex != -1) {
        const qsizetype k = tuning->size() - stringIndex - 1;
        if (k >= 0 && k < tuning->size()) {
            if (const auto name = NoteFromFretsHelper::shared().noteName(item.fret(), (*tuning)[k]))
                return *name;
        }
    }
    return item.text();
}
