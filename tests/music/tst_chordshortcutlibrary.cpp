#include "music/chordshortcutlibrary.h"
#include "music/guitartuning.h"
#include "testmain.h"

namespace {

QStringList notes(const char16_t *text)
{
    return QString::fromUtf16(text).split(u' ');
}

// Items as the tab reads them, highest string first, "-" for a blank.
QString itemsText(const ChordShortcut &chord)
{
    QStringList texts;
    for (const ColumnItemType &item : chord.colItems)
        texts.append(item.isBlank() ? u"-"_qs : item.text());
    return texts.join(u' ');
}

ChordShortcut custom(const QString &name, const char16_t *items)
{
    ChordShortcut chord;
    chord.name = name;
    for (const QString &text : QString::fromUtf16(items).split(u' '))
        chord.colItems.append(ColumnItemType::fromText(text));
    chord.isCustom = true;
    return chord;
}

} // namespace

class TestChordShortcutLibrary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tablesAsWritten_data();
    void tablesAsWritten();
    void openTablesFollowTheirRule();
    void alignment_data();
    void alignment();
    void fitting_data();
    void fitting();
    void tuningsLandOnTheirTable_data();
    void tuningsLandOnTheirTable();
    void oneItemPerStringForEveryPreset();
    void customChordsComeLastInTheirOrder();
};

void TestChordShortcutLibrary::tablesAsWritten_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("items");

    const auto row = [](const char *table, int index, const char16_t *name, const char16_t *items) {
        QTest::addRow("%s %d", table, index)
            << QString::fromLatin1(table) << index << QString::fromUtf16(name)
            << QString::fromUtf16(items);
    };
    row("default", 0, u"G", u"3 0 0 0 2 3");
    row("default", 1, u"C", u"0 1 0 2 3 -");
    row("default", 14, u"G bar", u"3 3 4 5 5 3");
    row("default", 27, u"Badd9", u"- 4 4 4 4 7");
    row("default", 32, u"Gadd9", u"3 0 0 0 0 3");
    row("default", 39, u"Gmaj7", u"2 0 0 0 - 3");
    row("ukulele", 0, u"C", u"3 0 0 0");
    row("ukulele", 13, u"Bm", u"2 2 2 4");
    row("dropC", 3, u"A#7", u"0 1 3 2 3 -");
    row("dropC", 11, u"F5", u"- - - 5 5 5");
    row("dropB", 1, u"F#m", u"0 1 2 2 0 -");
    row("dropB", 12, u"A5", u"- - 5 5 3 -");
    row("openA", 0, u"A", u"0 0 0 0 0 -");
    row("openA", 11, u"G#", u"11 11 11 11 11 -");
    row("openA", 12, u"A/E", u"0 0 0 0 0 0");
    row("openA", 21, u"G/C#", u"9 9 9 9 9 9");
    row("openA", 22, u"G#/D", u"10 10 10 10 10 10");
    row("openA", 23, u"G#/D#", u"11 11 11 11 11 11");
    row("openD", 12, u"Dm", u"0 0 3 3 0 0");
    row("openD", 13, u"D7", u"0 3 0 0 0 0");
    row("openD", 14, u"D6", u"0 2 0 0 0 0");
}

void TestChordShortcutLibrary::tablesAsWritten()
{
    QFETCH(QString, table);
    QFETCH(int, index);
    QFETCH(QString, name);
    QFETCH(QString, items);

    const ChordShortcutLibrary &library = ChordShortcutLibrary::shared();
    const QHash<QString, const QList<ChordShortcut> *> tables = {
        {u"default"_qs, &library.defaultChords}, {u"ukulele"_qs, &library.ukuleleChords},
        {u"dropC"_qs, &library.dropCChords},     {u"dropB"_qs, &library.dropBChords},
        {u"openA"_qs, &library.openAChords},     {u"openD"_qs, &library.openDChords},
    };
    const ChordShortcut &chord = tables.value(table)->at(index);
    QCOMPARE(chord.name, name);
    QCOMPARE(itemsText(chord), items);
    QVERIFY(!chord.isCustom);
}

void TestChordShortcutLibrary::openTablesFollowTheirRule()
{
    const ChordShortcutLibrary &library = ChordShortcutLibrary::shared();
    QCOMPARE(library.allNotes, notes(u"A A# B C C# D D# E F F# G G#"));

    const QList<int> sizes = {40, 14, 12, 13, 24, 12, 12, 15, 12, 12, 12};
    QCOMPARE(library.tables().size(), sizes.size());
    for (qsizetype t = 0; t < sizes.size(); ++t) {
        const auto &table = library.tables()[t];
        QCOMPARE(table.chords->size(), sizes[t]);
        // Every shape has one item per string of its reference tuning.
        for (const ChordShortcut &chord : *table.chords)
            QCOMPARE(chord.colItems.size(), table.reference.size());
    }

    const QList<QPair<const QList<ChordShortcut> *, QString>> barred = {
        {&library.openBChords, u"B"_qs}, {&library.openCChords, u"C"_qs},
        {&library.openDChords, u"D"_qs}, {&library.openEChords, u"E"_qs},
        {&library.openFChords, u"F"_qs}, {&library.openGChords, u"G"_qs},
    };
    for (const auto &[table, root] : barred) {
        const int rootPosition = int(library.allNotes.indexOf(root));
        for (int k = 0; k < 12; ++k) {
            const ChordShortcut &chord = table->at(k);
            QCOMPARE(chord.name, library.allNotes[(rootPosition + k) % 12]);
            QCOMPARE(chord.colItems, QList<ColumnItemType>(6, ColumnItemType::note(k)));
        }
    }
}

void TestChordShortcutLibrary::alignment_data()
{
    QTest::addColumn<QStringList>("tuning");
    QTest::addColumn<QStringList>("reference");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("tabStart");
    QTest::addColumn<int>("refStart");

    const QStringList standard = notes(u"E A D G B E");
    QTest::newRow("identical") << standard << standard << 6 << 0 << 0;
    QTest::newRow("drop D") << notes(u"D A D G B E") << standard << 5 << 1 << 1;
    QTest::newRow("seven strings") << notes(u"B E A D G B E") << standard << 6 << 1 << 0;
    QTest::newRow("eight strings") << notes(u"F# B E A D G B E") << standard << 6 << 2 << 0;
    QTest::newRow("five strings") << notes(u"B E A D G") << standard << 4 << 1 << 0;
    QTest::newRow("bass") << notes(u"E A D G") << standard << 4 << 0 << 0;
    QTest::newRow("too few strings") << notes(u"E A D") << standard << 0 << 0 << 0;
    QTest::newRow("mismatch costs only the count")
        << notes(u"E A C G B E") << standard << 5 << 0 << 0;
    QTest::newRow("unknown name matches nothing")
        << notes(u"Eb A D G B E") << standard << 5 << 1 << 1;
    QTest::newRow("a tuning as long as a file may hold")
        << QStringList(20000, u"X"_qs) + standard << standard << 6 << 20000 << 0;
    QTest::newRow("ukulele against guitar") << notes(u"G C E A") << standard << 2 << 0 << 3;
}

void TestChordShortcutLibrary::alignment()
{
    QFETCH(QStringList, tuning);
    QFETCH(QStringList, reference);
    QFETCH(int, count);
    QFETCH(int, tabStart);
    QFETCH(int, refStart);
    QCOMPARE(ChordShortcutLibrary::shared().bestAlignment(tuning, reference),
             (ChordAlignment{count, tabStart, refStart}));
}

void TestChordShortcutLibrary::fitting_data()
{
    QTest::addColumn<QStringList>("tuning");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("items");
    QTest::addColumn<bool>("custom"); // the user's "mine", 1 to 6 from the lowest string up

    const auto row = [](const char *tag, const char16_t *tuning, const char16_t *name,
                        const char16_t *items, bool custom = false) {
        QTest::newRow(tag) << notes(tuning) << QString::fromUtf16(name) << QString::fromUtf16(items)
                           << custom;
    };
    row("drop D G rises on the bass", u"D A D G B E", u"G", u"3 0 0 0 2 5");
    row("drop D A keeps its blank", u"D A D G B E", u"A", u"0 2 2 2 0 -");
    row("drop D Fm", u"D A D G B E", u"Fm", u"1 1 1 3 3 3");
    row("four strings keep the lowest four", u"E A D G", u"G", u"0 0 2 3");
    row("five strings lose the top strings", u"B E A D G", u"C", u"0 2 3 - -");
    row("seven strings blank the bass", u"B E A D G B E", u"E", u"0 0 1 2 2 0 -");
    row("eight strings blank two", u"F# B E A D G B E", u"Gm", u"3 3 3 5 5 3 - -");
    row("unknown bass name is blank", u"Eb A D G B E", u"G", u"3 0 0 0 2 -");
    row("bass a tone too high for an open note", u"F# A D G B E", u"E", u"0 0 1 2 2 -");
    row("bass a tone too high lowers a fretted note", u"F# A D G B E", u"G", u"3 0 0 0 2 1");
    row("ukulele", u"G C E A", u"Fm", u"3 1 0 1");
    // Custom chords fit by position and come back marked as the user's.
    row("custom on six strings", u"E A D G B E", u"mine", u"1 2 3 4 5 6", true);
    row("custom on four strings", u"E A D G", u"mine", u"3 4 5 6", true);
    row("custom on eight strings", u"F# B E A D G B E", u"mine", u"1 2 3 4 5 6 - -", true);
}

void TestChordShortcutLibrary::fitting()
{
    QFETCH(QStringList, tuning);
    QFETCH(QString, name);
    QFETCH(QString, items);
    QFETCH(bool, custom);
    const ChordShortcutLibrary &library = ChordShortcutLibrary::shared();
    ChordShortcut chord;
    if (custom) {
        ChordShortcut mine = ::custom(u"mine"_qs, u"1 2 3 4 5 6");
        mine.isCustom = false;
        chord = library.fittedCustomChord(mine, tuning);
    } else {
        const QList<ChordShortcut> chords = library.tableChordsFor(tuning);
        const auto found = std::find_if(chords.begin(), chords.end(),
                                        [&](const ChordShortcut &c) { return c.name == name; });
        QVERIFY(found != chords.end());
        chord = *found;
    }
    QCOMPARE(chord.name, name);
    QCOMPARE(itemsText(chord), items);
    QCOMPARE(chord.isCustom, custom);
}

void TestChordShortcutLibrary::tuningsLandOnTheirTable_data()
{
    QTest::addColumn<QStringList>("tuning");
    QTest::addColumn<int>("table");

    // The search is strictly in order, so a tuning can land on an earlier table that shares
    // four strings with it.
    QTest::newRow("standard") << notes(u"E A D G B E") << 0;
    QTest::newRow("ukulele") << notes(u"G C E A") << 1;
    QTest::newRow("drop C") << notes(u"C G C F A D") << 2;
    QTest::newRow("drop B") << notes(u"B F# B E G# C#") << 3;
    QTest::newRow("open A") << notes(u"E A C# E A C#") << 4;
    QTest::newRow("open B") << notes(u"B F# B F# B D#") << 5;
    QTest::newRow("open C") << notes(u"C G C G C E") << 6;
    QTest::newRow("open D") << notes(u"D A D F# A D") << 7;
    QTest::newRow("open E") << notes(u"E B E G# B E") << 8;
    QTest::newRow("open F") << notes(u"F A C F C F") << 9;
    QTest::newRow("open G") << notes(u"D G D G B D") << 10;
    QTest::newRow("all fourths") << notes(u"E A D G C F") << 0;
    QTest::newRow("nothing close") << notes(u"C# F A# D# G# C#") << -1;
}

void TestChordShortcutLibrary::tuningsLandOnTheirTable()
{
    QFETCH(QStringList, tuning);
    QFETCH(int, table);
    const ChordShortcutLibrary &library = ChordShortcutLibrary::shared();
    const QList<ChordShortcut> chords = library.tableChordsFor(tuning);
    if (table < 0) {
        QVERIFY(chords.isEmpty());
        return;
    }
    const auto &expected = library.tables()[table];
    QCOMPARE(chords.size(), expected.chords->size());
    for (qsizetype i = 0; i < chords.size(); ++i) {
        QCOMPARE(chords[i].name, expected.chords->at(i).name);
        if (tuning == expected.reference)
            QCOMPARE(chords[i].colItems, expected.chords->at(i).colItems);
    }
}

void TestChordShortcutLibrary::oneItemPerStringForEveryPreset()
{
    // Custom chords of every length are fitted too.
    const QList<ChordShortcut> customs{custom(u"four"_qs, u"1 2 3 4"),
                                       custom(u"six"_qs, u"1 2 3 4 5 6"),
                                       custom(u"eight"_qs, u"1 2 3 4 5 6 7 8")};

    const ChordShortcutLibrary &library = ChordShortcutLibrary::shared();
    for (int strings = 4; strings <= 8; ++strings) {
        for (const GuitarTuning &preset : GuitarTunings::presetsFor(strings)) {
            if (!preset.stringNotes)
                continue;
            const QList<ChordShortcut> chords = library.chordsFor(*preset.stringNotes, customs);
            QVERIFY2(chords.size() >= 3, qPrintable(preset.name));
            for (const ChordShortcut &chord : chords) {
                QVERIFY2(chord.colItems.size() == strings,
                         qPrintable(preset.name + u' ' + chord.name));
            }
            QCOMPARE(chords.last().name, u"eight"_qs);
        }
    }
}

void TestChordShortcutLibrary::customChordsComeLastInTheirOrder()
{
    const QList<ChordShortcut> customs{custom(u"newer"_qs, u"5 5 5 - - -"),
                                       custom(u"older"_qs, u"0 0 0 0 0 0")};
    const QList<ChordShortcut> chords =
        ChordShortcutLibrary::shared().chordsFor(notes(u"E A D G B E"), customs);
    QCOMPARE(chords.size(), 42);
    QCOMPARE(chords.first().name, u"G"_qs);
    QCOMPARE(chords[40].name, u"newer"_qs);
    QCOMPARE(itemsText(chords[40]), u"5 5 5 - - -"_qs);
    QVERIFY(chords[40].isCustom);
    QCOMPARE(chords[41].name, u"older"_qs);

    // A tuning no table knows still gets the user's chords.
    const QList<ChordShortcut> odd =
        ChordShortcutLibrary::shared().chordsFor(notes(u"C# F"), customs);
    QCOMPARE(odd.size(), 2);
    QCOMPARE(itemsText(odd.first()), u"- -"_qs);
}

LUTEGRID_TEST_MAIN(TestChordShortcutLibrary)
#include "tst_chordshortcutlibrary.moc"
