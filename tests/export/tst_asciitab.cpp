#include "export/asciitabreader.h"
#include "export/documentmanager.h"

#include "randomtab.h"
#include "testmain.h"

#include <QRandomGenerator>
#include <QRegularExpression>

namespace {

// A row's columns as "items top first, '-' for blank", trailing blank columns left out.
QStringList columnTexts(const TabRowData &row)
{
    QStringList columns;
    for (const TabColumnData &column : row.colDatas) {
        QStringList items;
        for (const ColumnItemType &item : column.columnItems)
            items.append(item.isBlank() ? u"-"_qs : item.text());
        columns.append(items.join(u','));
    }
    while (!columns.isEmpty() && !columns.last().contains(QRegularExpression(u"[^-,]"_qs)))
        columns.removeLast();
    return columns;
}

QStringList chordNames(const TabRowData &row)
{
    QStringList names;
    for (qsizetype c = 0; c < row.colDatas.size(); ++c) {
        if (row.colDatas[c].chordName)
            names.append(QString::number(c) + u':' + *row.colDatas[c].chordName);
    }
    return names;
}

} // namespace

class TestAsciiTab : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void realWorldTabs_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("tuning");
        QTest::addColumn<QStringList>("columns");
        QTest::addColumn<QStringList>("chords");

        const QStringList six = standardStringNotes(6);
        QTest::newRow("labelled, chords above")
            << u"  C        G\n"
               "e|--0--------3--|\n"
               "B|--1--------0--|\n"
               "G|--0--------0--|\n"
               "D|--2--------0--|\n"
               "A|--3--------2--|\n"
               "E|-----------3--|\n"_qs
            << six
            << QStringList{u"0,1,0,2,3,-"_qs, u"-,-,-,-,-,-"_qs, u"-,-,-,-,-,-"_qs,
                           u"3,0,0,0,2,3"_qs}
            << QStringList{u"0:C"_qs, u"3:G"_qs};
        QTest::newRow("no labels, uneven lines")
            << u"|-0-2-3-|\n|-------|\n|-----\n|------|\n|---|\n|-------|\n"_qs << six
            << QStringList{u"0,-,-,-,-,-"_qs, u"2,-,-,-,-,-"_qs, u"3,-,-,-,-,-"_qs}
            << QStringList();
        QTest::newRow("dashes only, no bars")
            << u"---0---\n---1---\n---0---\n---2---\n---3---\n-------\n"_qs << six
            << QStringList{u"-,-,-,-,-,-"_qs, u"0,1,0,2,3,-"_qs} << QStringList();
        QTest::newRow("two-digit frets, either alignment")
            << u"e|--12--10--|\nB|--10---8--|\nG|--0----9--|\nD|---9---0--|\n"
               "A|--------|\nE|--------|\n"_qs
            << six << QStringList{u"12,10,0,9,-,-"_qs, u"10,8,9,0,-,-"_qs} << QStringList();
        QTest::newRow("hammer, pull, slide, bend, vibrato, unknown")
            << u"e|--5h7p5--7/9--7b9r7--5~~--(8)--?--|\n"
               "B|------------------------------------|\nG|------------------------------------|\n"
               "D|------------------------------------|\nA|------------------------------------|\n"
               "E|------------------------------------|\n"_qs
            << six
            << QStringList{u"5,-,-,-,-,-"_qs,  u"h,-,-,-,-,-"_qs, u"7,-,-,-,-,-"_qs,
                           u"p,-,-,-,-,-"_qs,  u"5,-,-,-,-,-"_qs, u"7,-,-,-,-,-"_qs,
                           u"/,-,-,-,-,-"_qs,  u"9,-,-,-,-,-"_qs, u"7,-,-,-,-,-"_qs,
                           u"b,-,-,-,-,-"_qs,  u"9,-,-,-,-,-"_qs, u"r,-,-,-,-,-"_qs,
                           u"7,-,-,-,-,-"_qs,  u"5,-,-,-,-,-"_qs, u"~,-,-,-,-,-"_qs,
                           u"~,-,-,-,-,-"_qs,  u"8,-,-,-,-,-"_qs}
            << QStringList();
        QTest::newRow("bars inside")
            << u"e|--0--|--3--||\nB|--1--|--0--||\nG|--0--|--0--||\nD|--2--|--0--||\n"
               "A|--3--|--2--||\nE|-----|--3--||\n"_qs
            << six
            << QStringList{u"0,1,0,2,3,-"_qs, u"|,|,|,|,|,|"_qs, u"3,0,0,0,2,3"_qs,
                           u"|,|,|,|,|,|"_qs}
            << QStringList();
        QTest::newRow("bass")
            << u"G|-----------|\nD|-----2--4--|\nA|--0--------|\nE|-----------|\n"_qs
            << QStringList{u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs}
            << QStringList{u"-,-,0,-"_qs, u"-,2,-,-"_qs, u"-,4,-,-"_qs} << QStringList();
        QTest::newRow("seven strings")
            << u"e|--0--|\nB|--0--|\nG|--0--|\nD|--2--|\nA|--2--|\nE|--0--|\nB|--0--|\n"_qs
            << standardStringNotes(7) << QStringList{u"0,0,0,2,2,0,0"_qs} << QStringList();
        QTest::newRow("flats and sharps, number labels keep the standard tuning")
            << u"eb|--3--|\nBb|--3--|\nGb|--0--|\nDb|--0--|\nAb|--2--|\nEb|--3--|\n"_qs
            << QStringList{u"D#"_qs, u"G#"_qs, u"C#"_qs, u"F#"_qs, u"A#"_qs, u"D#"_qs}
            << QStringList{u"3,3,0,0,2,3"_qs} << QStringList();
        QTest::newRow("numbers as labels")
            << u"1|--3--|\n2|--3--|\n3|--0--|\n4|--0--|\n5|--2--|\n6|--3--|\n"_qs << six
            << QStringList{u"3,3,0,0,2,3"_qs} << QStringList();
    }

    void realWorldTabs()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, tuning);
        QFETCH(QStringList, columns);
        QFETCH(QStringList, chords);
        const AsciiTabResult result = AsciiTabReader::read(text);
        QVERIFY2(result.tab, qPrintable(result.message));
        QCOMPARE(result.tab->stringNotes, tuning);
        QCOMPARE(result.tab->tabRowDatas.size(), 1);
        const TabRowData &row = result.tab->tabRowDatas.first();
        QCOMPARE(columnTexts(row), columns);
        QCOMPARE(chordNames(row), chords);
        QVERIFY(row.colDatas.size() >= 12);
        QCOMPARE(row.stringCount, tuning.size());
    }

    void blocksWithLyricsBetween()
    {
        const QString text = u"Wonderful Song\nby Someone\n\nCapo 3\n\n[Verse]\n"
                             "e|--0--|\nB|--1--|\nG|--0--|\nD|--2--|\nA|--3--|\nE|-----|\n"
                             "\n  And here comes the line\n  and another\n    Am\n"
                             "e|--0--|\nB|--1--|\nG|--2--|\nD|--2--|\nA|--0--|\nE|-----|\n"
                             "e|--1--|\nB|--1--|\nG|--2--|\nD|--3--|\nA|--3--|\nE|--1--|\n"_qs;
        const AsciiTabResult result = AsciiTabReader::read(text);
        QVERIFY(result.tab);
        const TabData &tab = *result.tab;
        QCOMPARE(tab.title, u"Wonderful Song"_qs);
        QCOMPARE(tab.introText, u"by Someone"_qs);
        QCOMPARE(tab.capoFret, 3);
        QCOMPARE(tab.tabRowDatas.size(), 3);
        QCOMPARE(tab.tabRowDatas[0].lyricLines, QStringList{u"[Verse]"_qs});
        QCOMPARE(tab.tabRowDatas[1].lyricLines,
                 (QStringList{u"And here comes the line"_qs, u"and another"_qs}));
        QCOMPARE(chordNames(tab.tabRowDatas[1]), QStringList{u"0:Am"_qs});
        QCOMPARE(columnTexts(tab.tabRowDatas[2]), QStringList{u"1,1,2,3,3,1"_qs});
        QVERIFY(tab.tabRowDatas[2].lyricLines.isEmpty());
    }

    void longBlocksBreakIntoRows()
    {
        QString line = u"|"_qs;
        for (int bar = 0; bar < 30; ++bar)
            line += u"-0-2-3-|"_qs;
        const QString text = QStringList(6, line).join(u'\n');
        const AsciiTabResult result = AsciiTabReader::read(text);
        QVERIFY(result.tab);
        QVERIFY(result.tab->tabRowDatas.size() >= 2);
        for (const TabRowData &row : result.tab->tabRowDatas) {
            QCOMPARE(row.colDatas.size(), result.tab->tabRowDatas.first().colDatas.size());
            QVERIFY(row.colDatas.size() <= 64);
        }
    }

    void junkGivesAMessage_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("prose") << u"Hello there,\nthis is a letter - not a tab.\n"_qs;
        QTest::newRow("three lines") << u"e|--0--|\nB|--1--|\nG|--0--|\n"_qs;
        QTest::newRow("separator lines") << u"Title\n=====\n\nText | more | text\n"_qs;
        QTest::newRow("binary") << QString::fromLatin1(QByteArray(300, '\x01'));
    }

    void junkGivesAMessage()
    {
        QFETCH(QString, text);
        const AsciiTabResult result = AsciiTabReader::read(text);
        QVERIFY(!result.tab);
        QCOMPARE(result.message, AsciiTabReader::noTabMessage());
    }

    void ownTextExportReadsBack()
    {
        QRandomGenerator random(18);
        for (int round = 0; round < 200; ++round) {
            const TabData tab = randomTab(random);
            TabExportConfiguration configuration{tab};
            const QString text = DocumentManager::tabText(configuration);
            const AsciiTabResult result = AsciiTabReader::read(text);
            QVERIFY2(result.tab, qPrintable(text));
            const TabData &back = *result.tab;
            QCOMPARE(back.title, tab.title);
            QCOMPARE(back.introText, tab.introText);
            QCOMPARE(back.capoFret, tab.capoFret);
            QCOMPARE(back.stringNotes, tab.stringNotes);
            QCOMPARE(back.tabRowDatas.size(), tab.tabRowDatas.size());
            for (qsizetype r = 0; r < tab.tabRowDatas.size(); ++r) {
                if (back.tabRowDatas[r] != tab.tabRowDatas[r]) {
                    QCOMPARE(columnTexts(back.tabRowDatas[r]), columnTexts(tab.tabRowDatas[r]));
                    QCOMPARE(chordNames(back.tabRowDatas[r]), chordNames(tab.tabRowDatas[r]));
                    QCOMPARE(back.tabRowDatas[r].lyricLines, tab.tabRowDatas[r].lyricLines);
                    QFAIL(qPrintable(text));
                }
            }
        }
    }
};

LUTEGRID_TEST_MAIN(TestAsciiTab)
#include "tst_asciitab.moc"
