#include "notemenuentries.h"

#include "music/notefromfretshelper.h"

NoteMenuEntries NoteMenuEntries::forItem(const ColumnItemType &current, int itemIndex,
                                         const QStringList &tuning, bool notesOnTab)
{
    using Kind = ColumnItemType::Kind;
    NoteMenuEntries entries;
    auto label = [&](const ColumnItemType &item) {
        return displayText(item, itemIndex, &tuning, notesOnTab);
    };
    entries.results = {current,       Kind::plus,    Kind::slap,  Kind::slideDown, Kind::pull,
                       Kind::release, Kind::vibrato, Kind::hold,  Kind::bend,      Kind::hammer,
                       Kind::slideUp, Kind::tap,     Kind::muted, Kind::star};
    for (const ColumnItemType &item : std::as_const(entries.results))
        entries.labels.append(label(item));
    if (current.isNote()) {
        const qint64 fret = current.fret();
        if (fret >= 1) {
            entries.results.prepend(ColumnItemType::note(fret - 1));
            entries.labels.prepend(label(entries.results.first()));
            entries.startIndex = 1;
        }
        if (fret <= 24) {
            entries.results.append(ColumnItemType::note(fret + 1));
            entries.labels.append(label(entries.results.last()));
        }
        return entries;
    }
    for (int i = 1; i < entries.results.size(); ++i) {
        if (entries.results[i] == current) {
            entries.results.removeAt(i);
            entries.labels.removeAt(i);
            break;
        }
    }
    return entries;
}
