#include "chordshortcut.h"

#include "model/keyedarchive.h"

namespace {
const QString chordShortcutClass = u"Lutegrid.ChordShortcut"_qs;
}

ArchiveValue ChordShortcut::toArchiveValue() const
{
    ArchiveArray items;
    items.reserve(colItems.size());
    for (const ColumnItemType &item : colItems)
        items.push_back(ArchiveValue::fromString(item.text()));
    return ArchiveValue::object(chordShortcutClass,
                                {{u"nmkey"_qs, ArchiveValue::fromString(name)},
                                 {u"colikey"_qs, ArchiveValue::fromArray(std::move(items))}});
}

std::optional<ChordShortcut> ChordShortcut::fromArchiveValue(const ArchiveValue &value)
{
    const auto name = value.value(u"nmkey").stringValue();
    const auto texts = value.value(u"colikey").stringListValue();
    if (!value.isObject() || !name || !texts)
        return std::nullopt;
    ChordShortcut chord;
    chord.name = *name;
    chord.colItems.reserve(texts->size());
    for (const QString &text : *texts)
        chord.colItems.append(ColumnItemType::fromText(text));
    return chord;
}

QByteArray ChordShortcut::archivedData() const
{
    return KeyedArchiver::archivedData(toArchiveValue());
}

std::optional<ChordShortcut> ChordShortcut::fromArchivedData(const QByteArray &data)
{
    const auto root = KeyedUnarchiver::unarchivedRootObject(data);
    if (!root)
        return std::nullopt;
    return fromArchiveValue(*root);
}
