#include "model/tabdata.h"
#include "testmain.h"

using Kind = ColumnItemType::Kind;

class TestModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itemFromText_data();
    void itemFromText();
    void everyTextFormReadsBack();
    void barRule();
    void setStringCount();
    void sameColumn();
    void lyricText();
    void newTabTuning_data();
    void newTabTuning();
};

void TestModel::itemFromText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<ColumnItemType>("expected");
    QTest::newRow("empty") << QString() << ColumnItemType::blank();
    QTest::newRow("em dash") << u"\u2014"_qs << ColumnItemType::blank();
    QTest::newRow("12") << u"12"_qs << ColumnItemType::note(12);
    QTest::newRow("+5") << u"+5"_qs << ColumnItemType::note(5);
    QTest::newRow("-1") << u"-1"_qs << ColumnItemType::note(-1);
    QTest::newRow("lone minus") << u"-"_qs << ColumnItemType::blank();
    QTest::newRow("max") << u"9223372036854775807"_qs
                         << ColumnItemType::note(std::numeric_limits<qint64>::max());
    QTest::newRow("min") << u"-9223372036854775808"_qs
                         << ColumnItemType::note(std::numeric_limits<qint64>::min());
    QTest::newRow("just past max") << u"9223372036854775808"_qs << ColumnItemType::blank();
    QTest::newRow("spaces") << u" 3"_qs << ColumnItemType::blank();
}

void TestModel::itemFromText()
{
    QFETCH(QString, text);
    QFETCH(ColumnItemType, expected);
    QCOMPARE(ColumnItemType::fromText(text), expected);
}

void TestModel::everyTextFormReadsBack()
{
    QSet<QString> texts;
    for (int k = 1; k < ColumnItemType::kindCount; ++k) {
        const ColumnItemType mark(static_cast<Kind>(k));
        QCOMPARE(mark.text().size(), 1);
        QCOMPARE(ColumnItemType::fromText(mark.text()), mark);
        texts.insert(mark.text());
    }
    QCOMPARE(texts.size(), 15);
    QCOMPARE(ColumnItemType::fromText(ColumnItemType::note(24).text()), ColumnItemType::note(24));
    // A note never equals a mark, and notes compare by fret.
    QVERIFY(ColumnItemType::note(0) != ColumnItemType::blank());
    QVERIFY(ColumnItemType::note(3) != ColumnItemType::note(4));
}

void TestModel::barRule()
{
    const QList<ColumnItemType> bars(6, ColumnItemType::bar());
    // Anything but a bar clears the bar from the whole column...
    TabColumnData withNote(bars);
    withNote.setColumnItem(1, ColumnItemType::note(3));
    QList<ColumnItemType> expected(6, ColumnItemType::blank());
    expected[1] = ColumnItemType::note(3);
    QCOMPARE(withNote.columnItems, expected);
    // ...and a bar fills it, whatever notes stood there.
    TabColumnData notes(6);
    notes.setColumnItem(0, ColumnItemType::note(5));
    notes.setColumnItem(5, ColumnItemType::bar());
    QCOMPARE(notes.columnItems, bars);
}

void TestModel::setStringCount()
{
    QList<ColumnItemType> items;
    for (int fret = 0; fret < 6; ++fret)
        items.append(ColumnItemType::note(fret));
    // Strings leave from the top; new ones are blank, or bar in a bar column.
    TabColumnData column(items, u"Am"_qs);
    column.setStringCount(4);
    QCOMPARE(column.columnItems, items.mid(2));
    QCOMPARE(column.chordName, std::optional(u"Am"_qs));

    TabColumnData bars(QList<ColumnItemType>(6, ColumnItemType::bar()));
    bars.setStringCount(7);
    QCOMPARE(bars.columnItems, QList<ColumnItemType>(7, ColumnItemType::bar()));

    TabColumnData empty{QList<ColumnItemType>()};
    empty.setStringCount(2);
    QCOMPARE(empty.columnItems, QList<ColumnItemType>(2, ColumnItemType::blank()));
}

void TestModel::sameColumn()
{
    TabColumnData a(6);
    TabColumnData b(6);
    QVERIFY(a.isSameColumn(b));
    b.chordName = u""_qs;
    QVERIFY(!a.isSameColumn(b));
    a.chordName = u""_qs;
    QVERIFY(a.isSameColumn(b));
    QVERIFY(!a.isSameColumn(TabColumnData(5)));
    TabColumnData copy = a.deepCopy();
    copy.setColumnItem(0, ColumnItemType::note(1));
    QVERIFY(!copy.isSameColumn(a));
    QCOMPARE(a.columnItems[0], ColumnItemType::blank());
}

void TestModel::lyricText()
{
    TabRowData row(4, 6);
    QCOMPARE(row.lyricText(), std::nullopt);
    row.setLyricText(std::nullopt);
    QVERIFY(row.lyricLines.isEmpty());
    row.setLyricText(u""_qs);
    QCOMPARE(row.lyricLines, QStringList{QString()});

    row.lyricLines = {u"one"_qs, u"two"_qs};
    row.selectedLyricLineIndex = 1;
    QCOMPARE(row.lyricText(), u"two"_qs);
    row.setLyricText(std::nullopt);
    QCOMPARE(row.lyricLines, (QStringList{u"one"_qs, QString()}));

    row.selectedLyricLineIndex = 5;
    QCOMPARE(row.lyricText(), u"one"_qs);
    row.setLyricText(u"ignored"_qs);
    QCOMPARE(row.lyricLines.size(), 2);
    row.selectedLyricLineIndex = -1;
    row.setLyricText(u"ignored"_qs);
    QCOMPARE(row.lyricLines, (QStringList{u"one"_qs, QString()}));
}

void TestModel::newTabTuning_data()
{
    QTest::addColumn<int>("stringCount");
    QTest::addColumn<QString>("tuning");
    QTest::newRow("-2") << -2 << u"E A D G"_qs;
    QTest::newRow("6") << 6 << u"E A D G B E"_qs;
    QTest::newRow("12") << 12 << u"F# B E A D G B E"_qs;
}

void TestModel::newTabTuning()
{
    QFETCH(int, stringCount);
    QFETCH(QString, tuning);
    QCOMPARE(TabData(u"New"_qs, stringCount).stringNotes.join(u' '), tuning);
}

LUTEGRID_TEST_MAIN(TestModel)
#include "tst_model.moc"
