#include "chordshortcutlibrary.h"

#include "musicnote.h"

#include <cstdlib>

namespace {

// Items are written as a tab reads, highest string first; "-" is a blank.
ChordShortcut chord(const char16_t *name, QStringView items)
{
    ChordShortcut result;
    result.name = QString::fromUtf16(name);
    for (const QStringView item : items.split(u' ', Qt::SkipEmptyParts)) {
        result.colItems.append(item == u"-" ? ColumnItemType::blank()
                                            : ColumnItemType::note(item.toLongLong()));
    }
    return result;
}

QList<ChordShortcut>
chords(std::initializer_list<std::pair<const char16_t *, const char16_t *>> rows)
{
    QList<ChordShortcut> list;
    list.reserve(qsizetype(rows.size()));
    for (const auto &[name, items] : rows)
        list.append(chord(name, QStringView(items)));
    return list;
}

// Six strings at fret k, named by the note k semitones above the root.
QList<ChordShortcut> barreTable(const QStringList &allNotes, int root)
{
    QList<ChordShortcut> list;
    for (int k = 0; k < 12; ++k) {
        ChordShortcut entry;
        entry.name = allNotes[(root + k) % 12];
        entry.colItems = QList<ColumnItemType>(6, ColumnItemType::note(k));
        list.append(entry);
    }
    return list;
}

int positionIn(const QStringList &notes, const QString &note, int missing)
{
    const qsizetype index = notes.indexOf(note);
    return index < 0 ? missing : int(index);
}

QStringList tuning(QStringView notes)
{
    QStringList list;
    for (const QStringView note : notes.split(u' '))
        list.append(note.toString());
    return list;
}

} // namespace

const ChordShortcutLibrary &ChordShortcutLibrary::shared()
{
    static const ChordShortcutLibrary library;
    return library;
}

ChordShortcutLibrary::ChordShortcutLibrary() : allNotes(MusicNotes::allTexts())
{
    // clang-format off
    defaultChords = chords({
        {u"G", u"3 0 0 0 2 3"},       {u"C", u"0 1 0 2 3 -"},       {u"D", u"2 3 2 0 - -"},
        {u"A", u"0 2 2 2 0 -"},       {u"E", u"0 0 1 2 2 0"},       {u"B", u"2 4 4 4 2 -"},
        {u"F", u"1 1 2 3 - -"},       {u"Am", u"0 1 2 2 0 -"},      {u"Em", u"0 0 0 2 2 0"},
        {u"Dm", u"1 3 2 0 - -"},      {u"Bm", u"2 3 4 4 2 -"},      {u"Cm", u"3 4 5 5 3 -"},
        {u"Fm", u"1 1 1 3 3 1"},      {u"Gm", u"3 3 3 5 5 3"},      {u"G bar", u"3 3 4 5 5 3"},
        {u"C bar", u"3 5 5 5 3 -"},   {u"D bar", u"5 7 7 7 5 -"},   {u"A bar", u"5 5 6 7 7 5"},
        {u"E bar", u"7 9 9 9 7 -"},   {u"B bar", u"7 7 8 9 9 7"},   {u"F bar", u"1 1 2 3 3 1"},
        {u"F# bar", u"2 2 3 4 4 2"},  {u"G# bar", u"4 4 5 6 6 4"},  {u"A# bar", u"6 6 7 8 8 6"},
        {u"C# bar", u"4 6 6 6 4 -"},  {u"D# bar", u"6 8 8 8 6 -"},  {u"Aadd9", u"0 0 2 2 0 -"},
        {u"Badd9", u"- 4 4 4 4 7"},   {u"Cadd9", u"0 3 0 2 3 -"},   {u"Dadd9", u"0 3 0 4 5 -"},
        {u"Eadd9", u"2 0 1 2 - -"},   {u"Fadd9", u"3 1 2 3 - -"},   {u"Gadd9", u"3 0 0 0 0 3"},
        {u"Amaj7", u"0 2 1 2 0 -"},   {u"Bmaj7", u"2 4 2 4 2 -"},   {u"Cmaj7", u"0 0 0 2 3 -"},
        {u"Dmaj7", u"2 2 2 0 - -"},   {u"Emaj7", u"0 0 1 1 2 0"},   {u"Fmaj7", u"0 1 2 3 - -"},
        {u"Gmaj7", u"2 0 0 0 - 3"},
    });

    ukuleleChords = chords({
        {u"C", u"3 0 0 0"},  {u"D", u"0 2 2 2"},  {u"E", u"2 4 4 4"},  {u"F", u"0 1 0 2"},
        {u"G", u"2 3 2 0"},  {u"A", u"0 0 1 2"},  {u"B", u"2 2 3 4"},  {u"Cm", u"3 3 3 0"},
        {u"Dm", u"0 1 2 2"}, {u"Em", u"2 3 4 0"}, {u"Fm", u"3 1 0 1"}, {u"Gm", u"1 3 2 0"},
        {u"Am", u"0 0 0 2"}, {u"Bm", u"2 2 2 4"},
    });

    dropCChords = chords({
        {u"A#", u"0 1 0 2 3 -"},  {u"Gm", u"0 1 2 2 0 -"}, {u"G", u"0 2 2 2 0 -"},
        {u"A#7", u"0 1 3 2 3 -"}, {u"C", u"2 3 2 0 0 0"},  {u"Cm", u"1 3 2 0 0 0"},
        {u"Dm", u"0 0 0 2 2 2"},  {u"D", u"0 0 1 2 2 2"},  {u"C5", u"- - - 0 0 0"},
        {u"D5", u"- - - 2 2 2"},  {u"E5", u"- - - 4 4 4"}, {u"F5", u"- - - 5 5 5"},
    });

    dropBChords = chords({
        {u"A", u"0 1 0 2 3 -"},   {u"F#m", u"0 1 2 2 0 -"}, {u"F#", u"0 2 2 2 0 -"},
        {u"A7", u"0 1 3 2 3 -"},  {u"B", u"2 3 2 0 0 0"},   {u"Bm", u"1 3 2 0 0 0"},
        {u"C#m", u"0 0 0 2 2 2"}, {u"C#", u"0 0 1 2 2 2"},  {u"B5", u"- - - 0 0 0"},
        {u"C#5", u"- - - 2 2 2"}, {u"D#5", u"- - - 4 4 4"}, {u"E5", u"- - - 5 5 5"},
        {u"A5", u"- - 5 5 3 -"},
    });
    // clang-format on

    // Open A: the five upper strings barred over an unplayed bass, then all six with the bass
    // named. The names are the ones users know, slips at "G/C#" and "G#/D" included.
    static const char16_t *const slashNames[12] = {
        u"A/E",   u"A#/F", u"B/F#", u"C/G",  u"C#/G#", u"D/A",
        u"D#/A#", u"E/B",  u"F/C",  u"G/C#", u"G#/D",  u"G#/D#",
    };
    for (int k = 0; k < 12; ++k) {
        ChordShortcut entry;
        entry.name = allNotes[k];
        entry.colItems = QList<ColumnItemType>(5, ColumnItemType::note(k));
        entry.colItems.append(ColumnItemType::blank());
        openAChords.append(entry);
    }
    for (int k = 0; k < 12; ++k) {
        ChordShortcut entry;
        entry.name = QString::fromUtf16(slashNames[k]);
        entry.colItems = QList<ColumnItemType>(6, ColumnItemType::note(k));
        openAChords.append(entry);
    }

    const auto root = [this](const char16_t *note) {
        return positionIn(allNotes, QString::fromUtf16(note), 0);
    };
    openBChords = barreTable(allNotes, root(u"B"));
    openCChords = barreTable(allNotes, root(u"C"));
    openDChords = barreTable(allNotes, root(u"D"));
    openDChords.append(chords({
        {u"Dm", u"0 0 3 3 0 0"},
        {u"D7", u"0 3 0 0 0 0"},
        {u"D6", u"0 2 0 0 0 0"},
    }));
    openEChords = barreTable(allNotes, root(u"E"));
    openFChords = barreTable(allNotes, root(u"F"));
    openGChords = barreTable(allNotes, root(u"G"));

    searchOrder = {
        {&defaultChords, tuning(u"E A D G B E")}, {&ukuleleChords, tuning(u"G C E A")},
        {&dropCChords, tuning(u"C G C F A D")},   {&dropBChords, tuning(u"B F# B E G# C#")},
        {&openAChords, tuning(u"E A C# E A C#")}, {&openBChords, tuning(u"B F# B F# B D#")},
        {&openCChords, tuning(u"C G C G C E")},   {&openDChords, tuning(u"D A D F# A D")},
        {&openEChords, tuning(u"E B E G# B E")},  {&openFChords, tuning(u"F A C F C F")},
        {&openGChords, tuning(u"D G D G B D")},
    };
}

QList<ChordShortcut> ChordShortcutLibrary::tableChordsFor(const QStringList &stringNotes) const
{
    QList<ChordShortcut> result;
    for (const Table &table : searchOrder) {
        const QList<ChordShortcut> &list = *table.chords;
        if (list.isEmpty() || list.first().colItems.size() != table.reference.size())
            continue;
        const ChordAlignment alignment = bestAlignment(stringNotes, table.reference);
        if (alignment.matchCount < 4)
            continue;
        result.reserve(list.size());
        for (const ChordShortcut &entry : list)
            result.append(fittedChord(entry, stringNotes, alignment, table.reference));
        break;
    }
    return result;
}

QList<ChordShortcut> ChordShortcutLibrary::chordsFor(const QStringList &stringNotes,
                                                     const QList<ChordShortcut> &customChords) const
{
    QList<ChordShortcut> result = tableChordsFor(stringNotes);
    result.reserve(result.size() + customChords.size());
    for (const ChordShortcut &custom : customChords)
        result.append(fittedCustomChord(custom, stringNotes));
    return result;
}

ChordAlignment ChordShortcutLibrary::bestAlignment(const QStringList &stringNotes,
                                                   const QStringList &reference) const
{
    // Each list competes with the best answer of the list one string shorter at the bottom, so
    // the answers are built from the top string down. A tuning read from a file may be long:
    // this stays linear in its length.
    const qsizetype n = stringNotes.size();
    if (n < 4)
        return {};

    // For each string, the first string at or above it whose name occurs in the reference.
    QList<qsizetype> firstKnown(n + 1, n);
    for (qsizetype k = n - 1; k >= 0; --k)
        firstKnown[k] = reference.contains(stringNotes[k]) ? k : firstKnown[k + 1];

    ChordAlignment best;
    for (qsizetype start = n - 4; start >= 0; --start) {
        ChordAlignment own;
        const qsizetype k0 = firstKnown[start];
        if (k0 < n) {
            qsizetype r = reference.indexOf(stringNotes[k0]);
            own = {1, int(k0 - start), int(r)};
            // A mismatch costs only the count; the stretch goes on to the reference's end.
            for (qsizetype k = k0 + 1; k < n && ++r < reference.size(); ++k) {
                if (stringNotes[k] == reference[r])
                    ++own.matchCount;
            }
        }
        // The longer list, the one starting lower, wins ties.
        if (own.matchCount < best.matchCount)
            ++best.tabStart;
        else
            best = own;
    }
    return best;
}

ChordShortcut ChordShortcutLibrary::fittedChord(const ChordShortcut &chord,
                                                const QStringList &stringNotes,
                                                const ChordAlignment &alignment,
                                                const QStringList &reference) const
{
    // Lowest string first, as the tunings run.
    QList<ColumnItemType> items(chord.colItems.crbegin(), chord.colItems.crend());
    const qsizetype n = stringNotes.size();
    QList<ColumnItemType> fitted;
    fitted.reserve(n);

    for (qsizetype i = 0; i < n; ++i) {
        const qsizetype r = i + alignment.refStart - alignment.tabStart;
        if (r < 0 || r >= reference.size() || r >= items.size()) {
            fitted.append(ColumnItemType::blank());
            continue;
        }
        if (i >= alignment.tabStart && i < alignment.tabStart + alignment.matchCount) {
            fitted.append(items[r]);
            continue;
        }
        // Outside the matched stretch the shape is moved by the distance between the open
        // strings; unknown names are far apart on purpose, and there is no wrap at "A".
        const int a = positionIn(allNotes, stringNotes[i], 100);
        const int b = positionIn(allNotes, reference[r], 500);
        const int distance = a - b;
        if (std::abs(distance) >= 3) {
            fitted.append(ColumnItemType::blank());
            continue;
        }
        const ColumnItemType item = items[r];
        if (item.isMark()) {
            fitted.append(item);
            continue;
        }
        const qint64 fret = item.fret() - distance;
        fitted.append(fret < 0 ? ColumnItemType::blank() : ColumnItemType::note(fret));
    }

    ChordShortcut result;
    result.name = chord.name;
    result.colItems = QList<ColumnItemType>(fitted.crbegin(), fitted.crend());
    result.isCustom = false;
    return result;
}

ChordShortcut ChordShortcutLibrary::fittedCustomChord(const ChordShortcut &chord,
                                                      const QStringList &stringNotes) const
{
    // A custom chord is tied to string positions: the lowest strings are padded or the highest
    // dropped.
    ChordShortcut result;
    result.name = chord.name;
    result.colItems = chord.colItems;
    const qsizetype difference = stringNotes.size() - result.colItems.size();
    if (difference > 0)
        result.colItems.append(QList<ColumnItemType>(difference, ColumnItemType::blank()));
    else if (difference < 0)
        result.colItems.remove(0, -difference);
    result.isCustom = true;
    return result;
}
