#include "music/semitoneshifthelper.h"
#include "model/selectionbox.h"
#include "testmain.h"

#include <QRandomGenerator>

#include <algorithm>

using Block = SemitoneShiftHelper::Block;
using Kind = ColumnItemType::Kind;

namespace {

const QStringList standardTuning = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

// A block written as the tab reads: strings top first, separated by "/", one token a column.
// "-" is a blank. A line short of tokens leaves its last columns short of items.
Block blockOf(const QString &text)
{
    Block columns;
    const QStringList lines = text.split(u'/');
    columns.resize(lines.first().split(u' ', Qt::SkipEmptyParts).size());
    for (const QString &line : lines) {
        const QStringList tokens = line.split(u' ', Qt::SkipEmptyParts);
        for (qsizetype c = 0; c < std::min(columns.size(), tokens.size()); ++c)
            columns[c].append(ColumnItemType::fromText(tokens[c]));
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
    static const QStringList names = u"C C# D D# E F F# G G# A A# B"_qs.split(u' ');
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

Block randomBlock(QRandomGenerator &random, int stringCount)
{
    static const Kind marks[] = {Kind::hammer, Kind::pull, Kind::slideUp, Kind::vibrato,
                                 Kind::muted,  Kind::bend, Kind::release};
    Block columns(1 + random.bounded(8));
    for (auto &column : columns) {
        if (random.bounded(12) == 0) {
            column = QList<ColumnItemType>(stringCount, ColumnItemType::bar());
            continue;
        }
        for (int s = 0; s < stringCount; ++s) {
            const int roll = int(random.bounded(100));
            column.append(roll < 45 ? ColumnItemType::blank()
                          : roll < 80
                              ? ColumnItemType::note(random.bounded(26))
                              : ColumnItemType(marks[random.bounded(int(std::size(marks)))]));
        }
    }
    return columns;
}

} // namespace

class TestSemitoneShift : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shifts_data();
    void shifts();
    void pitchesSurviveEveryShift_data();
    void pitchesSurviveEveryShift();
};

void TestSemitoneShift::shifts_data()
{
    QTest::addColumn<QStringList>("tuning");
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("semitones");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QString>("after"); // empty when refused
    QTest::addColumn<int>("boxFirst");  // the box's strings afterwards: widened only towards
    QTest::addColumn<int>("boxLast");   // the move, columns and headers untouched

    const auto row = [](const char *name, const char16_t *before, int semitones, int first,
                        int last, const char16_t *after, int boxFirst, int boxLast,
                        const char16_t *tuning = u"E A D G B E") {
        QTest::newRow(name) << QString::fromUtf16(tuning).split(u' ') << QString::fromUtf16(before)
                            << semitones << first << last << QString::fromUtf16(after) << boxFirst
                            << boxLast;
    };
    row("worked example", u"- / 0 / - / - / - / -", -1, 1, 1, u"- / - / 3 / - / - / -", 1, 2);
    row("frets fall in place", u"- - - / 1 5 12 / - - - / - - - / - - - / - - -", -1, 1, 1,
        u"- - - / 0 4 11 / - - - / - - - / - - - / - - -", 1, 1);
    row("fret 25 climbs a string", u"- / 25 / - / - / - / -", 1, 1, 1, u"21 / - / - / - / - / -", 0,
        1);
    row("hammer-on moves whole although 7 fits", u"- - - / 5 h 7 / - - - / - - - / - - - / - - -",
        -6, 1, 1, u"- - - / - - - / 3 h 5 / - - - / - - - / - - -", 1, 2);
    row("adjacent notes are two groups", u"- - / 5 7 / - - / - - / - - / - -", -6, 1, 1,
        u"- - / - 1 / 3 - / - - / - - / - -", 1, 2);
    row("vibrato closes its group", u"- - - / 5 ~ 7 / - - - / - - - / - - - / - - -", -6, 1, 1,
        u"- - - / - - 1 / 3 ~ - / - - - / - - - / - - -", 1, 2);
    row("bar column splits and stays", u"- | - / 5 | 9 / - | - / - | - / - | - / - | -", -6, 1, 1,
        u"- | - / - | 3 / 3 | - / - | - / - | - / - | -", 1, 2);
    row("push chain runs down several strings", u"0 / 0 / 0 / 0 / - / -", -1, 0, 3,
        u"- / 4 / 3 / 4 / 4 / -", 0, 4);
    row("only the box's strings move", u"3 / 3 / 3 / 3 / 3 / 3", 2, 2, 3, u"3 / 3 / 5 / 5 / 3 / 3",
        2, 3);
    row("a leading mark takes the next note along",
        u"- - - / h 4 - / - - - / - - - / - - - / - - -", 1, 1, 1,
        u"- - - / h 5 - / - - - / - - - / - - - / - - -", 1, 1);
    row("box widens down only", u"- / - / 5 / 0 / - / -", -1, 2, 3, u"- / - / 4 / - / 4 / -", 2, 4);
    row("box widens up only", u"- / - / 24 / 1 / - / -", 3, 2, 3, u"- / 23 / - / 4 / - / -", 1, 3);
    row("no move leaves the box", u"- / - / 2 / - / - / -", 1, 1, 3, u"- / - / 3 / - / - / -", 1,
        3);
    // Top string tuned to a name that is no note: the moved note has no fret there (-1), then
    // the walk reaches string 0 and adds the semitone.
    row("unknown open note gives minus one", u"- / 25 / - / - / - / -", 1, 1, 1,
        u"0 / - / - / - / - / -", 0, 1, u"E A D G B Eb");
    row("low strings of long tabs stay", u"- / - / - / - / 4 / 2 / 3 / 5", 1, 0, 7,
        u"- / - / - / - / 5 / 3 / 3 / 5", 0, 7, u"F# B E A D G B E");

    // Refused shifts leave the box as it was.
    const auto refused = [&row](const char *name, const char16_t *before, int semitones, int first,
                                int last, const char16_t *tuning = u"E A D G B E") {
        row(name, before, semitones, first, last, u"", first, last, tuning);
    };
    refused("no higher string", u"25 / - / - / - / - / -", 1, 0, 0);
    refused("no lower string", u"- / - / - / - / - / 0", -1, 5, 5);
    refused("a mark outside the box blocks", u"- / 0 / x / - / - / -", -1, 1, 1);
    refused("nothing but marks", u"- / - / - / h / - / -", 1, 0, 5);
    refused("edge string must be free", u"- / - / - / - / 0 / 7", -1, 4, 5);
    refused("empty block", u"", 1, 0, 5);
    refused("ragged block", u"1 1 / 1 1 / 1 1 / 1 1 / 1 1 / 1", 1, 0, 5);
    // Short tabs never read past their strings.
    refused("lowest of four strings", u"- / - / - / 0", -1, 3, 3, u"E A D G");
    refused("box names strings the tab lacks", u"- / - / - / 1", 1, 0, 5, u"E A D G");
    // String 6 of eight exists, yet it lies beyond the strings a note may move to.
    refused("seventh of eight strings", u"- / - / - / - / - / 0 / - / -", -1, 5, 5,
            u"F# B E A D G B E");
}

void TestSemitoneShift::shifts()
{
    QFETCH(QStringList, tuning);
    QFETCH(QString, before);
    QFETCH(int, semitones);
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QString, after);
    QFETCH(int, boxFirst);
    QFETCH(int, boxLast);

    SelectionBox box = stringsBox(first, last);
    box.colHeaderStart = 0;
    const auto result = SemitoneShiftHelper(tuning).shiftSemitones(semitones, blockOf(before), box);
    QCOMPARE(result.has_value(), !after.isEmpty());
    if (result)
        QCOMPARE(textOf(*result), after);
    SelectionBox expected = stringsBox(boxFirst, boxLast);
    expected.colHeaderStart = 0;
    QCOMPARE(box, expected);
}

void TestSemitoneShift::pitchesSurviveEveryShift_data()
{
    QTest::addColumn<QStringList>("tuning");
    QTest::addColumn<bool>("classOnly");
    QTest::newRow("standard") << standardTuning << false;
    QTest::newRow("drop D") << u"D A D G B E"_qs.split(u' ') << true;
    QTest::newRow("open G") << u"D G D G B D"_qs.split(u' ') << true;
    QTest::newRow("seven strings") << u"B E A D G B E"_qs.split(u' ') << true;
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

        const QByteArray where = u"round %1, %2 semitones, strings %3-%4\n%5"_qs.arg(round)
                                     .arg(semitones)
                                     .arg(first)
                                     .arg(last)
                                     .arg(textOf(before))
                                     .toUtf8();
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

LUTEGRID_TEST_MAIN(TestSemitoneShift)
#include "tst_semitoneshift.moc"
