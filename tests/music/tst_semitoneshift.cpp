#include "music/semitoneshifthelper.h"
#include "surface/selectionbox.h"
#include "testmain.h"

#include <QRandomGenerator>

#include <algorithm>

using Block = SemitoneShiftHelper::Block;
using Kind = ColumnItemType::Kind;

namespace {

const QStringList standardTuning = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

// A block written as the tab reads: strings top first, separated by "/", one token a column.
// "-" is a blank.
Block blockOf(const QString &text)
{
    Block columns;
    const QStringList lines = text.split(u'/');
    const qsizetype columnCount = lines.first().split(u' ', Qt::SkipEmptyParts).size();
    columns.resize(columnCount);
    for (const QString &line : lines) {
        const QStringList tokens = line.split(u' ', Qt::SkipEmptyParts);
        for (qsizetype c = 0; c < columnCount; ++c)
            columns[c].append(ColumnItemType::fromText(tokens.value(c)));
    }
    return columns;
}

QString textOf(const Block &columns)
{
    QStringList lines;
    for (qsizetype s = 0; !columns.isEmpty() && s < columns.first().size(); ++s) {
        QStringList tokens;
        for (const auto &column : columns)
            tokens.append(column[s].isBlank() ? u"-"_qs : column[s].text());
        lines.append(tokens.join(u' '));
    }
    return lines.join(u" / ");
}

SelectionBox stringsBox(int first, int last)
{
    return SelectionBox(0, 1, first, last - first + 1, 0);
}

// Sounding pitch as a semitone number: open strings of the tuning in their octaves.
QList<int> openPitches(const QStringList &tuning)
{
    static const QStringList names = {u"C"_qs,  u"C#"_qs, u"D"_qs,  u"D#"_qs, u"E"_qs,  u"F"_qs,
                                      u"F#"_qs, u"G"_qs,  u"G#"_qs, u"A"_qs,  u"A#"_qs, u"B"_qs};
    QList<int> pitches;
    int previous = -1;
    for (const QString &note : tuning) {
        int pitch = int(names.indexOf(note));
        // Each string lies above the one below it, within an octave.
        while (pitch <= previous)
            pitch += 12;
        pitches.append(pitch);
        previous = pitch;
    }
    return pitches;
}

// Per column, the sorted pitches of its notes on the walked strings. Notes on strings from
// `shiftFirst` to `shiftLast` count `semitones` away from where they stand.
QList<QList<qint64>> pitchesByColumn(const Block &columns, const QStringList &tuning,
                                     bool classOnly, int semitones = 0, int shiftFirst = 0,
                                     int shiftLast = -1)
{
    const QList<int> open = openPitches(tuning);
    const qsizetype strings = tuning.size();
    QList<QList<qint64>> result;
    for (const auto &column : columns) {
        QList<qint64> pitches;
        for (qsizetype s = 0; s < std::min<qsizetype>(strings, 6); ++s) {
            if (!column[s].isNote())
                continue;
            qint64 pitch = open[strings - 1 - s] + column[s].fret();
            if (s >= shiftFirst && s <= shiftLast)
                pitch += semitones;
            pitches.append(classOnly ? ((pitch % 12) + 12) % 12 : pitch);
        }
        std::sort(pitches.begin(), pitches.end());
        result.append(pitches);
    }
    return result;
}

ColumnItemType randomItem(QRandomGenerator &random)
{
    static const Kind marks[] = {Kind::hammer, Kind::pull, Kind::slideUp, Kind::vibrato,
                                 Kind::muted,  Kind::bend, Kind::release};
    const int roll = int(random.bounded(100));
    if (roll < 45)
        return ColumnItemType::blank();
    if (roll < 80)
        return ColumnItemType::note(random.bounded(26));
    return ColumnItemType(marks[random.bounded(int(std::size(marks)))]);
}

Block randomBlock(QRandomGenerator &random, int stringCount)
{
    Block columns(1 + random.bounded(8));
    for (auto &column : columns) {
        if (random.bounded(12) == 0) {
            column = QList<ColumnItemType>(stringCount, ColumnItemType::bar());
            continue;
        }
        for (int s = 0; s < stringCount; ++s)
            column.append(randomItem(random));
    }
    return columns;
}

} // namespace

class TestSemitoneShift : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void workedExample();
    void shifts_data();
    void shifts();
    void refusals_data();
    void refusals();
    void boxWidensOnlyTowardsTheMove();
    void shortTabsNeverReadPastTheirStrings();
    void unknownOpenNoteGivesMinusOne();
    void pitchesSurviveEveryShift_data();
    void pitchesSurviveEveryShift();
    void lowStringsOfLongTabsStay();
};

void TestSemitoneShift::workedExample()
{
    SelectionBox box = stringsBox(1, 1);
    const auto result = SemitoneShiftHelper(standardTuning)
                            .shiftSemitones(-1, blockOf(u"- / 0 / - / - / - / -"_qs), box);
    QVERIFY(result);
    QCOMPARE(textOf(*result), u"- / - / 3 / - / - / -"_qs);
    QCOMPARE(box.itemIndexStart, 1);
    QCOMPARE(box.itemIndexEnd, 2);
}

void TestSemitoneShift::shifts_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("semitones");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QString>("after");

    const auto row = [](const char *name, const char16_t *before, int semitones, int first,
                        int last, const char16_t *after) {
        QTest::newRow(name) << QString::fromUtf16(before) << semitones << first << last
                            << QString::fromUtf16(after);
    };
    row("frets fall in place", u"- - - / 1 5 12 / - - - / - - - / - - - / - - -", -1, 1, 1,
        u"- - - / 0 4 11 / - - - / - - - / - - - / - - -");
    row("fret 25 climbs a string", u"- / 25 / - / - / - / -", 1, 1, 1, u"21 / - / - / - / - / -");
    row("hammer-on moves whole although 7 fits", u"- - - / 5 h 7 / - - - / - - - / - - - / - - -",
        -6, 1, 1, u"- - - / - - - / 3 h 5 / - - - / - - - / - - -");
    row("adjacent notes are two groups", u"- - / 5 7 / - - / - - / - - / - -", -6, 1, 1,
        u"- - / - 1 / 3 - / - - / - - / - -");
    row("vibrato closes its group", u"- - - / 5 ~ 7 / - - - / - - - / - - - / - - -", -6, 1, 1,
        u"- - - / - - 1 / 3 ~ - / - - - / - - - / - - -");
    row("bend and release run as one group",
        u"- - - - - / 7 b 9 r 7 / - - - - - / - - - - - / - - - - - / - - - - -", -8, 1, 1,
        u"- - - - - / - - - - - / 3 b 5 r 3 / - - - - - / - - - - - / - - - - -");
    row("bar column splits and stays", u"- | - / 5 | 9 / - | - / - | - / - | - / - | -", -6, 1, 1,
        u"- | - / - | 3 / 3 | - / - | - / - | - / - | -");
    row("notes in the way are pushed on at their pitch", u"- / 0 / 2 / - / - / -", -1, 1, 2,
        u"- / - / 3 / 6 / - / -");
    row("push chain runs down several strings", u"0 / 0 / 0 / 0 / - / -", -1, 0, 3,
        u"- / 4 / 3 / 4 / 4 / -");
    row("only the box's strings move", u"3 / 3 / 3 / 3 / 3 / 3", 2, 2, 3, u"3 / 3 / 5 / 5 / 3 / 3");
    row("a leading mark takes the next note along",
        u"- - - / h 4 - / - - - / - - - / - - - / - - -", 1, 1, 1,
        u"- - - / h 5 - / - - - / - - - / - - - / - - -");
}

void TestSemitoneShift::shifts()
{
    QFETCH(QString, before);
    QFETCH(int, semitones);
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QString, after);

    SelectionBox box = stringsBox(first, last);
    const auto result =
        SemitoneShiftHelper(standardTuning).shiftSemitones(semitones, blockOf(before), box);
    QVERIFY(result);
    QCOMPARE(textOf(*result), after);
}

void TestSemitoneShift::refusals_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("semitones");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");

    QTest::newRow("no higher string") << u"25 / - / - / - / - / -"_qs << 1 << 0 << 0;
    QTest::newRow("no lower string") << u"- / - / - / - / - / 0"_qs << -1 << 5 << 5;
    QTest::newRow("a mark outside the box blocks") << u"- / 0 / x / - / - / -"_qs << -1 << 1 << 1;
    QTest::newRow("nothing but marks") << u"- / - / - / h / - / -"_qs << 1 << 0 << 5;
    QTest::newRow("nothing selected") << u"- / - / - / - / - / 0"_qs << 1 << 0 << 4;
    QTest::newRow("edge string must be free") << u"- / - / - / - / 0 / 7"_qs << -1 << 4 << 5;
}

void TestSemitoneShift::refusals()
{
    QFETCH(QString, before);
    QFETCH(int, semitones);
    QFETCH(int, first);
    QFETCH(int, last);

    SelectionBox box = stringsBox(first, last);
    QVERIFY(!SemitoneShiftHelper(standardTuning).shiftSemitones(semitones, blockOf(before), box));

    // Malformed blocks are refused the same way.
    SelectionBox all = stringsBox(0, 5);
    const SemitoneShiftHelper helper(standardTuning);
    QVERIFY(!helper.shiftSemitones(1, Block(), all));
    Block ragged = blockOf(u"1 1 / 1 1 / 1 1 / 1 1 / 1 1 / 1 1"_qs);
    ragged[1].removeLast();
    QVERIFY(!helper.shiftSemitones(1, ragged, all));
}

void TestSemitoneShift::boxWidensOnlyTowardsTheMove()
{
    const SemitoneShiftHelper helper(standardTuning);

    SelectionBox down = stringsBox(2, 3);
    QVERIFY(helper.shiftSemitones(-1, blockOf(u"- / - / 5 / 0 / - / -"_qs), down));
    QCOMPARE(down.itemIndexStart, 2);
    QCOMPARE(down.itemIndexEnd, 4);

    SelectionBox up = stringsBox(2, 3);
    QVERIFY(helper.shiftSemitones(3, blockOf(u"- / - / 24 / 1 / - / -"_qs), up));
    QCOMPARE(up.itemIndexStart, 1);
    QCOMPARE(up.itemIndexEnd, 3);

    // Columns and headers are no business of the shift.
    up.colHeaderStart = 0;
    SelectionBox untouched = up;
    QVERIFY(helper.shiftSemitones(1, blockOf(u"- / - / 2 / - / - / -"_qs), up));
    QCOMPARE(up, untouched);
}

void TestSemitoneShift::shortTabsNeverReadPastTheirStrings()
{
    const QStringList bass = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs};
    const SemitoneShiftHelper helper(bass);

    SelectionBox box(0, 2, 0, 4, 0);
    const auto shifted = helper.shiftSemitones(1, blockOf(u"1 - / - 2 / 3 - / - 4"_qs), box);
    QVERIFY(shifted);
    QCOMPARE(textOf(*shifted), u"2 - / - 3 / 4 - / - 5"_qs);

    // The lowest real string has no string below it.
    SelectionBox low(0, 1, 3, 1, 0);
    QVERIFY(!helper.shiftSemitones(-1, blockOf(u"- / - / - / 0"_qs), low));

    const SemitoneShiftHelper five({u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs});
    SelectionBox lowFive(0, 1, 4, 1, 0);
    QVERIFY(!five.shiftSemitones(-2, blockOf(u"- / - / - / - / 1"_qs), lowFive));

    // A box that names strings the tab lacks is refused, not read.
    SelectionBox tooTall(0, 1, 0, 6, 0);
    QVERIFY(!helper.shiftSemitones(1, blockOf(u"- / - / - / 1"_qs), tooTall));
}

void TestSemitoneShift::unknownOpenNoteGivesMinusOne()
{
    // Top string tuned to a name that is no note: a note moved there has no fret of its own.
    const QStringList tuning = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"Eb"_qs};
    SelectionBox box = stringsBox(1, 1);
    const auto result =
        SemitoneShiftHelper(tuning).shiftSemitones(1, blockOf(u"- / 25 / - / - / - / -"_qs), box);
    QVERIFY(result);
    // -1 there, then the walk reaches string 0 and adds the semitone.
    QCOMPARE(result->first().first(), ColumnItemType::note(0));
    QCOMPARE(result->first()[1], ColumnItemType::blank());
}

void TestSemitoneShift::pitchesSurviveEveryShift_data()
{
    QTest::addColumn<QStringList>("tuning");
    QTest::addColumn<bool>("classOnly");
    QTest::newRow("standard") << standardTuning << false;
    QTest::newRow("drop D") << QStringList{u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs}
                            << true;
    QTest::newRow("open G") << QStringList{u"D"_qs, u"G"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"D"_qs}
                            << true;
    QTest::newRow("seven strings")
        << QStringList{u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs} << true;
}

void TestSemitoneShift::pitchesSurviveEveryShift()
{
    QFETCH(QStringList, tuning);
    QFETCH(bool, classOnly);
    const int stringCount = int(tuning.size());
    const SemitoneShiftHelper helper(tuning);
    QRandomGenerator random(20240607);

    int successes = 0;
    int moves = 0;
    const int rounds = 3000;
    for (int round = 0; round < rounds; ++round) {
        const Block before = randomBlock(random, stringCount);
        const int first = int(random.bounded(stringCount));
        const int last = first + int(random.bounded(stringCount - first));
        int semitones = int(random.bounded(1, 5));
        if (random.bounded(2))
            semitones = -semitones;

        SelectionBox box = stringsBox(first, last);
        const auto after = helper.shiftSemitones(semitones, before, box);
        if (!after)
            continue;
        ++successes;
        if (box != stringsBox(first, last))
            ++moves;

        const QString context = u"round %1, %2 semitones, strings %3-%4\n%5"_qs.arg(round)
                                    .arg(semitones)
                                    .arg(first)
                                    .arg(last)
                                    .arg(textOf(before));
        const QByteArray where = context.toUtf8();

        QVERIFY2(box.itemIndexStart <= first && box.itemIndexEnd >= last, where.constData());

        // Every note of the widened box sounds exactly the shift away, none lost, none
        // doubled; the walk takes in whole strings as the box grows.
        const auto expected = pitchesByColumn(before, tuning, classOnly, semitones,
                                              box.itemIndexStart, box.itemIndexEnd);
        QVERIFY2(pitchesByColumn(*after, tuning, classOnly) == expected, where.constData());

        // Outside the widened box, and below the sixth string, nothing changes.
        for (qsizetype c = 0; c < before.size(); ++c) {
            for (int s = 0; s < stringCount; ++s) {
                const bool inside = s <= 5 && s >= box.itemIndexStart && s <= box.itemIndexEnd;
                if (!inside)
                    QVERIFY2((*after)[c][s] == before[c][s], where.constData());
                if (before[c][s].isBar())
                    QVERIFY2((*after)[c][s].isBar(), where.constData());
            }
        }
    }
    // The generator must exercise both plain shifts and moves, or the check proves little.
    QVERIFY2(successes > rounds / 5, qPrintable(QString::number(successes)));
    QVERIFY2(moves > rounds / 50, qPrintable(QString::number(moves)));
}

void TestSemitoneShift::lowStringsOfLongTabsStay()
{
    const QStringList eight = {u"F#"_qs, u"B"_qs, u"E"_qs, u"A"_qs,
                               u"D"_qs,  u"G"_qs, u"B"_qs, u"E"_qs};
    const SemitoneShiftHelper helper(eight);
    const Block before = blockOf(u"- / - / - / - / 4 / 2 / 3 / 5"_qs);

    SelectionBox all = stringsBox(0, 7);
    const auto up = helper.shiftSemitones(1, before, all);
    QVERIFY(up);
    QCOMPARE(textOf(*up), u"- / - / - / - / 5 / 3 / 3 / 5"_qs);

    // String 6 exists, yet it lies beyond the strings a note may move to.
    SelectionBox lowest = stringsBox(5, 5);
    QVERIFY(!helper.shiftSemitones(-1, blockOf(u"- / - / - / - / - / 0 / - / -"_qs), lowest));
}

LUTEGRID_TEST_MAIN(TestSemitoneShift)
#include "tst_semitoneshift.moc"
