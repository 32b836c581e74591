#include "testmain.h"
#include "viewmode/songsequence.h"

#include <QRandomGenerator>

#include <numeric>

namespace {

// A tab written as measures: each row is a text of tokens, "|" a bar column, "x" a column
// with a note on the top string, "." a blank column.
TabData tabFromRows(const QStringList &rows)
{
    QList<TabRowData> rowDatas;
    for (const QString &text : rows) {
        QList<TabColumnData> columns;
        int c = 0;
        for (const QString &token : text.split(u' ', Qt::SkipEmptyParts)) {
            TabColumnData column(6);
            if (token == u"|")
                column.setColumnItem(0, ColumnItemType::bar());
            else if (token == u"x")
                column.setColumnItem(0, ColumnItemType::note(c % 13));
            columns.append(column);
            ++c;
        }
        rowDatas.append(TabRowData(columns, {}));
    }
    return TabData(u"Sequence"_qs, rowDatas, standardStringNotes(6), 0, std::nullopt);
}

// Measures of the given lengths in one row, each closed by a bar.
TabData tabOfMeasures(const QList<int> &lengths)
{
    QStringList tokens;
    for (const int length : lengths)
        tokens += QStringList(length, u"x"_qs) << u"|"_qs;
    return tabFromRows({tokens.join(u' ')});
}

// Events as text: "r,c" for a real event, "-" for a rest.
QString eventsText(const QList<SongSequenceEvent> &events)
{
    QStringList texts;
    for (const SongSequenceEvent &event : events) {
        texts.append(event.isRest() ? u"-"_qs
                                    : u"%1,%2"_qs.arg(*event.trIndex).arg(*event.colIndex));
    }
    return texts.join(u' ');
}

SongSequence built(const TabData &tab, std::optional<QPointF> highlight = std::nullopt,
                   bool byMeasure = false)
{
    SongSequence sequence(tab, highlight);
    sequence.buildSongSequence(byMeasure);
    return sequence;
}

} // namespace

class TestSongSequence : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void plainListAndBars();
    void evening_data();
    void evening();
    void evenedListKeepsOrder();
    void syncSongIndex_data();
    void syncSongIndex();
    void syncIntoEvenedList();
    void tickLength_data();
    void tickLength();
};

void TestSongSequence::plainListAndBars()
{
    // A measure runs over the row break; a bar opening the tab and two bars in a row add no
    // empty measure, yet every bar gets its mapping.
    TabData tab = tabFromRows({u"| x . x"_qs, u"x | | x x |"_qs});
    // A column with no items at all is an ordinary column.
    const TabColumnData itemless(QList<ColumnItemType>{});
    tab.tabRowDatas[1].colDatas.insert(1, itemless);
    const SongSequence sequence = built(tab);

    QCOMPARE(eventsText(sequence.songArray), u"0,1 0,2 0,3 1,0 1,1 1,4 1,5"_qs);
    QCOMPARE(sequence.songArray[1].colItems, tab.tabRowDatas[0].colDatas[2].columnItems);
    QVERIFY(sequence.songArray[1].colItems.first().isBlank());
    QCOMPARE(sequence.barMapping,
             (QHash<QString, int>{{u"0,0"_qs, 0}, {u"1,2"_qs, 5}, {u"1,3"_qs, 5}, {u"1,6"_qs, 7}}));
    // Measures of 5 and 2 columns.
    QVERIFY(sequence.songArrayEvenMeasuresSuccessful);
    QCOMPARE(sequence.evenMeasureLength, 10);

    const SongSequence noBars = built(tabFromRows({u"x x x"_qs, u"x"_qs}));
    QCOMPARE(noBars.songArray.size(), 4);
    QVERIFY(noBars.barMapping.isEmpty());
    QVERIFY(!noBars.songArrayEvenMeasuresSuccessful);
    QCOMPARE(noBars.evenMeasureLength, 0);

    const SongSequence empty = built(tabFromRows({}));
    QVERIFY(empty.songArray.isEmpty());
    QVERIFY(empty.songArrayWithEvenMeasures.isEmpty());
    QVERIFY(!empty.lastSongIndex);
}

void TestSongSequence::evening_data()
{
    QTest::addColumn<QList<int>>("lengths");
    QTest::addColumn<qint64>("multiple");
    QTest::addColumn<bool>("successful");

    QTest::newRow("4 and 4") << QList<int>{4, 4} << qint64(4) << true;
    QTest::newRow("3, 4 and 5") << QList<int>{3, 4, 5} << qint64(60) << true;
    QTest::newRow("6, 8 and 12") << QList<int>{6, 8, 12} << qint64(24) << true;
    QTest::newRow("one measure") << QList<int>{7} << qint64(0) << false;
    QTest::newRow("99 over 40 measures")
        << QList<int>(20, 9) + QList<int>(20, 11) << qint64(99) << true;
    // Measures of 4 and 25 columns make 100 ticks a measure; 2,000 ticks are too many.
    QList<int> hundreds;
    for (int i = 0; i < 20; ++i)
        hundreds.append(i % 2 ? 25 : 4);
    QTest::newRow("100 x 19") << hundreds.mid(0, 19) << qint64(100) << true;
    QTest::newRow("100 x 20") << hundreds << qint64(100) << false;
    // Measures of the primes: up to 47 the multiple fits and is only too long to play by
    // measure; with 53 it does not fit in 64 bits and fails quietly.
    const QList<int> primes = {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53};
    QTest::newRow("primes to 47") << primes.mid(0, 15) << Q_INT64_C(614889782588491410) << false;
    QTest::newRow("primes to 53") << primes << qint64(0) << false;
}

void TestSongSequence::evening()
{
    QFETCH(QList<int>, lengths);
    QFETCH(qint64, multiple);
    QFETCH(bool, successful);

    const SongSequence sequence = built(tabOfMeasures(lengths));
    QCOMPARE(sequence.evenMeasureLength, multiple);
    QCOMPARE(sequence.songArrayEvenMeasuresSuccessful, successful);
    QCOMPARE(sequence.songArray.size(), std::accumulate(lengths.begin(), lengths.end(), 0));
    if (!successful) {
        QVERIFY(sequence.songArrayWithEvenMeasures.isEmpty());
        QCOMPARE(&sequence.activeSongArray(true), &sequence.songArray);
        return;
    }
    QCOMPARE(sequence.activeSongArray(true).size(), multiple * lengths.size());
    if (multiple == lengths.first() && lengths.size() == 2)
        QCOMPARE(sequence.songArrayWithEvenMeasures, sequence.songArray);

    // Each column waits its share in rests, then sounds on the last tick of its share.
    qsizetype at = 0;
    for (const int length : lengths) {
        const qint64 share = multiple / length;
        for (int column = 0; column < length; ++column) {
            for (qint64 k = 1; k < share; ++k)
                QVERIFY(sequence.songArrayWithEvenMeasures[at++].isRest());
            QVERIFY(!sequence.songArrayWithEvenMeasures[at++].isRest());
        }
    }
}

void TestSongSequence::evenedListKeepsOrder()
{
    QRandomGenerator random(77);
    for (int round = 0; round < 300; ++round) {
        QStringList rows;
        for (int r = 0, count = random.bounded(1, 5); r < count; ++r) {
            QStringList tokens;
            for (int c = 0, columns = random.bounded(0, 12); c < columns; ++c) {
                const int roll = random.bounded(10);
                tokens.append(roll < 2 ? u"|"_qs : roll < 4 ? u"."_qs : u"x"_qs);
            }
            rows.append(tokens.join(u' '));
        }
        const SongSequence sequence = built(tabFromRows(rows));
        const QByteArray where = rows.join(u" / "_qs).toUtf8();
        if (!sequence.songArrayEvenMeasuresSuccessful)
            continue;

        const qint64 length = sequence.evenMeasureLength;
        const auto &evened = sequence.songArrayWithEvenMeasures;
        QVERIFY2(length > 0 && evened.size() % length == 0, where.constData());

        QList<SongSequenceEvent> real;
        for (const SongSequenceEvent &event : evened) {
            if (!event.isRest())
                real.append(event);
        }
        QVERIFY2(real == sequence.songArray, where.constData());

        // Each measure of L ticks ends on a real event: its last column.
        for (qsizetype end = length - 1; end < evened.size(); end += length)
            QVERIFY2(!evened[end].isRest(), where.constData());
        // And the measures are cut where the bars stand: the events of one measure of L ticks
        // lie between the same two bars of the plain list.
        qsizetype plain = 0;
        for (qsizetype start = 0; start < evened.size(); start += length) {
            qsizetype inMeasure = 0;
            for (qsizetype t = start; t < start + length; ++t)
                inMeasure += evened[t].isRest() ? 0 : 1;
            QVERIFY2(length % inMeasure == 0, where.constData());
            plain += inMeasure;
            QVERIFY2(plain == sequence.songArray.size() ||
                         sequence.barMapping.values().contains(int(plain)),
                     where.constData());
        }
    }
}

void TestSongSequence::syncSongIndex_data()
{
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<std::optional<QPointF>>("highlight");
    QTest::addColumn<std::optional<int>>("before");
    QTest::addColumn<std::optional<int>>("expected");

    const auto row = [](const char *name, std::optional<QPointF> highlight,
                        std::optional<int> before, std::optional<int> expected) {
        QTest::newRow(name) << QStringList{u"| x x | x"_qs, u"x x |"_qs} << highlight << before
                            << expected;
    };
    const std::optional<int> none;
    row("no highlight", std::nullopt, 3, none);
    row("on a column", QPointF(2, 0), none, 1);
    row("before the first column", QPointF(-1, 1), none, 2);
    row("on the opening bar", QPointF(0, 0), 4, -1);
    row("on a middle bar", QPointF(3, 0), none, 1);
    row("on the closing bar keeps the old place", QPointF(2, 1), 2, 2);
    row("past the row keeps the old place", QPointF(9, 1), 1, 1);
    row("nowhere at all", QPointF(qQNaN(), 0), 0, 0);
}

void TestSongSequence::syncSongIndex()
{
    QFETCH(QStringList, rows);
    QFETCH(std::optional<QPointF>, highlight);
    QFETCH(std::optional<int>, before);
    QFETCH(std::optional<int>, expected);

    SongSequence sequence = built(tabFromRows(rows));
    sequence.lastSongIndex = before;
    sequence.lastHighlightIndex = highlight;
    sequence.syncSongIndex(false);
    QCOMPARE(sequence.lastSongIndex, expected);
}

void TestSongSequence::syncIntoEvenedList()
{
    // Measures of 2 and 3: "- - 0,1 - - 0,2 | - 0,4 - 0,5 - 1,0".
    const std::optional<QPointF> midBar = QPointF(3, 0);
    SongSequence sequence = built(tabFromRows({u"| x x | x x"_qs, u"x |"_qs}), midBar, true);
    QCOMPARE(sequence.evenMeasureLength, 6);
    QCOMPARE(eventsText(sequence.songArrayWithEvenMeasures),
             u"- - 0,1 - - 0,2 - 0,4 - 0,5 - 1,0"_qs);
    QCOMPARE(&sequence.activeSongArray(true), &sequence.songArrayWithEvenMeasures);
    QCOMPARE(&sequence.activeSongArray(false), &sequence.songArray);
    // The bar after 0,2: the next tick after it plays the rests before 0,4.
    QCOMPARE(sequence.lastSongIndex, std::optional(5));

    sequence.lastHighlightIndex = QPointF(0, 1);
    sequence.syncSongIndex(true);
    QCOMPARE(sequence.lastSongIndex, std::optional(11));
    sequence.syncSongIndex(false);
    QCOMPARE(sequence.lastSongIndex, std::optional(4));

    // Before a row that opens with a bar: no event there, and "0,-1" names no bar.
    sequence.lastHighlightIndex = QPointF(-1, 0);
    sequence.syncSongIndex(true);
    QCOMPARE(sequence.lastSongIndex, std::optional(4));
}

void TestSongSequence::tickLength_data()
{
    QTest::addColumn<qint64>("speed");
    QTest::addColumn<qint64>("columnsInBeat");
    QTest::addColumn<bool>("byMeasure");
    QTest::addColumn<qint64>("beatsPerMeasure");
    QTest::addColumn<bool>("evened");
    QTest::addColumn<qint64>("measureLength");
    QTest::addColumn<double>("seconds");

    const auto row = [](const char *name, qint64 speed, qint64 columnsInBeat, bool byMeasure,
                        qint64 beatsPerMeasure, bool evened, qint64 measureLength, double seconds) {
        QTest::newRow(name) << speed << columnsInBeat << byMeasure << beatsPerMeasure << evened
                            << measureLength << seconds;
    };
    row("60, one column a beat", 60, 1, false, 4, false, 0, 1.0);
    row("120, two columns", 120, 2, false, 4, false, 0, 0.25);
    row("80, four columns", 80, 4, false, 4, false, 0, 0.1875);
    row("80, zero columns count as one", 80, 0, false, 4, false, 0, 0.75);
    row("by measure, 8 over 4", 60, 3, true, 4, true, 8, 0.5);
    row("by measure, 12 over 4", 60, 1, true, 4, true, 12, 1.0 / 3.0);
    row("by measure, 6 over 4 is whole ticks", 60, 1, true, 4, true, 6, 1.0);
    row("by measure, evening failed", 60, 2, true, 4, false, 8, 0.5);
    row("by measure, no beats falls back", 60, 4, true, 0, true, 8, 0.25);
    row("by measure, negative beats falls back", 60, 1, true, -2, true, 8, 1.0);
    row("by measure, fewer ticks than beats falls back", 60, 2, true, 4, true, 3, 0.5);
}

void TestSongSequence::tickLength()
{
    QFETCH(qint64, speed);
    QFETCH(qint64, columnsInBeat);
    QFETCH(bool, byMeasure);
    QFETCH(qint64, beatsPerMeasure);
    QFETCH(bool, evened);
    QFETCH(qint64, measureLength);
    QFETCH(double, seconds);

    ViewModePlaybackOptions options;
    options.playbackSpeed = speed;
    options.playbackColumnsInBeat = columnsInBeat;
    options.playbackByMeasure = byMeasure;
    options.playbackBeatsPerMeasure = beatsPerMeasure;
    QCOMPARE(SongSequence::tickLength(options, evened, measureLength), seconds);

    const bool refused = beatsPerMeasure <= 0 || measureLength < beatsPerMeasure;
    QCOMPARE(SongSequence::measureTickLength(speed, measureLength, beatsPerMeasure).has_value(),
             !refused);
}

LUTEGRID_TEST_MAIN(TestSongSequence)
#include "tst_songsequence.moc"
