#include "export/documentmanager.h"
#include "model/tabfileformat.h"
#include "services/apppaths.h"

#include "testfiles.h"
#include "testmain.h"

#include <QDir>
#include <QRegularExpression>

namespace {

using Kind = ColumnItemType::Kind;

const QStringList standardSix{u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

// A column of blanks with some items set; `at` counts from the top line.
TabColumnData column(QList<std::pair<int, ColumnItemType>> items = {},
                     std::optional<QString> chordName = std::nullopt)
{
    QList<ColumnItemType> columnItems(6, ColumnItemType::blank());
    for (const auto &[at, item] : items)
        columnItems[at] = item;
    return TabColumnData(columnItems, chordName);
}

TabColumnData chordColumn(std::optional<QString> chordName)
{
    return column({}, std::move(chordName));
}

TabExportConfiguration configurationOf(TabData tab)
{
    TabExportConfiguration configuration{std::move(tab)};
    configuration.showLyrics = true;
    configuration.showColumnHeaders = true;
    configuration.showTabContent = true;
    return configuration;
}

TabData songWith(QList<TabRowData> rows, QStringList tuning = standardSix)
{
    return TabData(u"Song"_qs, std::move(rows), std::move(tuning), 0, std::nullopt);
}

} // namespace

class TestPlainText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void headerLines_data()
    {
        QTest::addColumn<std::optional<QString>>("intro");
        QTest::addColumn<qint64>("capo");
        QTest::addColumn<QString>("expected");
        using Intro = std::optional<QString>;
        QTest::newRow("title only") << Intro() << qint64(0) << u"Song\n\n"_qs;
        QTest::newRow("intro") << Intro(u"Slowly"_qs) << qint64(0) << u"Song\n\nSlowly\n\n"_qs;
        QTest::newRow("capo") << Intro() << qint64(3) << u"Song\n\ncapo on fret 3\n\n"_qs;
        QTest::newRow("both") << Intro(u"Slowly"_qs) << qint64(12)
                              << u"Song\n\nSlowly\n\ncapo on fret 12\n\n"_qs;
        QTest::newRow("negative capo") << Intro() << qint64(-1) << u"Song\n\n"_qs;
    }

    void headerLines()
    {
        QFETCH(std::optional<QString>, intro);
        QFETCH(qint64, capo);
        QFETCH(QString, expected);
        const TabData tab(u"Song"_qs, {}, standardSix, capo, intro);
        QCOMPARE(DocumentManager::tabText(configurationOf(tab)), expected);
    }

    void aWholeRow()
    {
        const TabRowData row({chordColumn(u"G"_qs), column({{0, ColumnItemType::note(12)}}),
                              column({{1, ColumnItemType::note(5)}}, u"Am"_qs),
                              TabColumnData(QList<ColumnItemType>(6, ColumnItemType::bar())),
                              column({{2, Kind::hammer}, {3, Kind::slideUp}})},
                             {u"Hello there"_qs});
        QCOMPARE(DocumentManager::tabText(configurationOf(songWith({row}))),
                 u"Song\n\n"
                 u"   Hello there\n"
                 u"   G     Am       \n"
                 u"E |----12-----|---|\n"
                 u"B |--------5--|---|\n"
                 u"G |-----------|--h|\n"
                 u"D |-----------|--/|\n"
                 u"A |-----------|---|\n"
                 u"E |-----------|---|"
                 u"\n\n"_qs);
    }

    void rowsFollowEachOther()
    {
        const TabRowData first({column({{5, ColumnItemType::note(0)}})}, {});
        const TabRowData second({column({{0, ColumnItemType::note(3)}})},
                                {u"line one"_qs, u"line two"_qs});
        const TabData tab(u"Two"_qs, {first, second}, {u"E"_qs, u"A"_qs}, 0, std::nullopt);
        TabExportConfiguration configuration = configurationOf(tab);
        // Two strings of a tab whose columns were made for six: the missing labels stay empty.
        QCOMPARE(DocumentManager::tabText(configuration),
                 u"Two\n\n   \n      \nA |---|\nE |---|\n|---|\n|---|\n|---|\n|--0|"
                 u"\n\n   line one\n   line two\n      \nA |--3|\nE |---|\n|---|\n|---|\n"
                 u"|---|\n|---|\n\n"_qs);

        configuration.showLyrics = false;
        configuration.showColumnHeaders = false;
        configuration.tabData.stringNotes = standardSix;
        QCOMPARE(DocumentManager::tabText(configuration).section(u"\n\n"_qs, 2, 2),
                 u"   \nE |--3|\nB |---|\nG |---|\nD |---|\nA |---|\nE |---|"_qs);
    }

    // Blanks, bars and hammers are in aWholeRow.
    void cells_data()
    {
        QTest::addColumn<ColumnItemType>("item");
        QTest::addColumn<QString>("cell");
        QTest::newRow("5") << ColumnItemType::note(5) << u"--5"_qs;
        QTest::newRow("0") << ColumnItemType::note(0) << u"--0"_qs;
        QTest::newRow("12") << ColumnItemType::note(12) << u"-12"_qs;
        QTest::newRow("muted") << ColumnItemType(Kind::muted) << u"--x"_qs;
        QTest::newRow("hold") << ColumnItemType(Kind::hold) << u"--_"_qs;
        // Wider texts push the line out rather than lose digits.
        QTest::newRow("125") << ColumnItemType::note(125) << u"-125"_qs;
    }

    void cells()
    {
        QFETCH(ColumnItemType, item);
        QFETCH(QString, cell);
        // The item stands on the lowest line, whose label is "E ".
        const TabRowData row({column({{5, item}}, u"C"_qs)}, {});
        const QString text = DocumentManager::tabText(configurationOf(songWith({row})));
        QCOMPARE(text.section(u'\n', -3, -3), u"E |"_qs + cell + u'|');
    }

    void headerCells_data()
    {
        QTest::addColumn<QList<std::optional<QString>>>("names");
        QTest::addColumn<QString>("header");
        using Names = QList<std::optional<QString>>;
        const std::optional<QString> none;
        QTest::newRow("short names")
            << Names{u"G"_qs, u"Am"_qs, u"F#m"_qs, none} << u"G  Am F#m   "_qs;
        QTest::newRow("long over absent") << Names{u"Cmaj7"_qs, none} << u"Cmaj7 "_qs;
        QTest::newRow("long over empty") << Names{u"Cmaj7"_qs, u""_qs} << u"Cmaj7 "_qs;
        QTest::newRow("long over blanks") << Names{u"Cmaj7"_qs, u"  "_qs} << u"Cmaj7 "_qs;
        QTest::newRow("four over absent") << Names{u"Csus"_qs, none} << u"Csus  "_qs;
        QTest::newRow("long cut to six") << Names{u"Csus4add9"_qs, none} << u"Csus4a"_qs;
        QTest::newRow("long over one") << Names{u"Cmaj7"_qs, u"G"_qs} << u"Cmaj G"_qs;
        QTest::newRow("long over padded one") << Names{u"Cmaj7"_qs, u" G "_qs} << u"Cmaj G"_qs;
        QTest::newRow("four over one") << Names{u"Dsus"_qs, u"A"_qs} << u"Dsus A"_qs;
        QTest::newRow("long over two") << Names{u"Cmaj7"_qs, u"Am"_qs} << u"CmaAm "_qs;
        QTest::newRow("long at the end") << Names{u"Cmaj7"_qs} << u"Cma"_qs;
        QTest::newRow("neighbour consumed")
            << Names{u"Em7b5"_qs, u"G"_qs, u"D"_qs} << u"Em7b GD  "_qs;
        QTest::newRow("long after long")
            << Names{u"Cmaj7"_qs, u"Dmaj7"_qs, none} << u"CmaDmaj7 "_qs;
        QTest::newRow("spread then short") << Names{u"Cmaj7"_qs, none, u"Dm"_qs} << u"Cmaj7 Dm "_qs;
    }

    void headerCells()
    {
        QFETCH(QList<std::optional<QString>>, names);
        QFETCH(QString, header);
        QList<TabColumnData> columns;
        for (const auto &name : names)
            columns.append(chordColumn(name));
        TabExportConfiguration configuration = configurationOf(songWith({TabRowData(columns, {})}));
        configuration.showTabContent = false;
        QCOMPARE(DocumentManager::tabText(configuration),
                 u"Song\n\n   \n   "_qs + header + u"\n\n\n"_qs);
    }

    void rowsWithoutTabContent()
    {
        const TabRowData row({column({{0, ColumnItemType::note(1)}}, u"F"_qs)}, {u"la la"_qs});
        TabExportConfiguration configuration = configurationOf(songWith({row, row}));
        configuration.showTabContent = false;
        QCOMPARE(DocumentManager::tabText(configuration),
                 u"Song\n\n   la la\n   F  \n\n\n   la la\n   F  \n\n\n"_qs);
        configuration.showColumnHeaders = false;
        configuration.showLyrics = false;
        QCOMPARE(DocumentManager::tabText(configuration), u"Song\n\n   \n\n\n   \n\n\n"_qs);

        // A row with nothing but a lyric prints only its lyric.
        const TabRowData lyricOnly({column(), column(), chordColumn(u" "_qs)}, {u"words"_qs});
        const TabRowData empty({column()}, {});
        QCOMPARE(DocumentManager::tabText(configurationOf(songWith({lyricOnly, empty}))),
                 u"Song\n\n   words\n\n\n   \n\n\n"_qs);
    }

    void notesOnTabShowNoteNames()
    {
        const QStringList tuning{u"E"_qs, u"A"_qs, u"D"_qs, u"Eb"_qs, u"B"_qs, u"E"_qs};
        const TabRowData row({column({{0, ColumnItemType::note(3)},
                                      {1, ColumnItemType::note(1)},
                                      {2, ColumnItemType::note(3)},
                                      {4, ColumnItemType::note(1)},
                                      {5, ColumnItemType::note(12)}}),
                              column({{0, Kind::pull}})},
                             {});
        TabExportConfiguration configuration = configurationOf(songWith({row}, tuning));
        configuration.notesOnTab = true;
        const QString text = DocumentManager::tabText(configuration);
        // An entry that is no note ("Eb") keeps its strings' numbers.
        QCOMPARE(text.split(u'\n').mid(4, 6),
                 (QStringList{u"E |--G--p|"_qs, u"B |--C---|"_qs, u"Eb|--3---|"_qs,
                              u"D |------|"_qs, u"A |-A#---|"_qs, u"E |--E---|"_qs}));
    }

    void asciiBytes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("plain") << u"Song 1: \t(intro)\n"_qs << QByteArray("Song 1: \t(intro)\n");
        QTest::newRow("acute") << u"é"_qs << QByteArray("e");
        QTest::newRow("ring") << u"Å"_qs << QByteArray("A");
        QTest::newRow("words") << u"Crème Brûlée à Noël"_qs << QByteArray("Creme Brulee a Noel");
        QTest::newRow("decomposed input") << u"e\u0301"_qs << QByteArray("e");
        QTest::newRow("sharp s") << u"Straße"_qs << QByteArray("Strasse");
        QTest::newRow("apostrophe") << u"don’t"_qs << QByteArray("don't");
        QTest::newRow("ligature") << u"ﬁne"_qs << QByteArray("fine");
        QTest::newRow("writing hand") << u"✍️"_qs << QByteArray("?");
        QTest::newRow("emoji") << u"a😀b"_qs << QByteArray("a?b");
        QTest::newRow("japanese") << u"日本"_qs << QByteArray("??");
        QTest::newRow("blank glyph") << QString(blankGlyph) << QByteArray("-");
    }

    void asciiBytes()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        QCOMPARE(DocumentManager::asciiBytes(text), bytes);
    }

    void exportData()
    {
        TabData tab = songWith(
            {TabRowData({column({{0, ColumnItemType::note(7)}}, u"Ré"_qs)}, {u"Café"_qs})});
        const TabExportConfiguration configuration = configurationOf(tab);
        const auto text = DocumentManager::exportData(ExportType::TXT, configuration);
        QVERIFY(text);
        QCOMPARE(*text, DocumentManager::asciiBytes(DocumentManager::tabText(configuration)));
        QVERIFY(text->contains("   Cafe\n   Re "));

        const auto exchange = DocumentManager::exportData(ExportType::LGRD, configuration);
        QVERIFY(exchange);
        const auto back = tabDataFromExchangeData(*exchange);
        QVERIFY(back);
        QCOMPARE(back->tabRowDatas, tab.tabRowDatas);

        QVERIFY(!DocumentManager::exportData(ExportType::RTF, configuration));
        QVERIFY(!DocumentManager::exportData(ExportType::PDF, configuration));
    }

    void exportFileWritesIntoExports()
    {
        const QString exports = AppPaths::exportsDirectory();
        QDir(exports).removeRecursively();
        const TabExportConfiguration configuration =
            configurationOf(songWith({TabRowData({column({{0, ColumnItemType::note(7)}})}, {})}));

        const auto path = DocumentManager::exportFile(ExportType::TXT, configuration);
        QVERIFY(path);
        QCOMPARE(*path, QDir(exports).filePath(u"Song.txt"_qs));
        QCOMPARE(readFile(*path),
                 DocumentManager::asciiBytes(DocumentManager::tabText(configuration)));

        const auto named =
            DocumentManager::exportFile(ExportType::LGRD, configuration, u"Other"_qs);
        QVERIFY(named);
        QCOMPARE(*named, QDir(exports).filePath(u"Other.lgrd"_qs));
        QVERIFY(tabDataFromExchangeData(readFile(*named)));

        // A name with a slash stays in the folder.
        const auto slashed = DocumentManager::exportFile(ExportType::TXT, configuration, u"A/B"_qs);
        QVERIFY(slashed);
        QCOMPARE(QFileInfo(*slashed).absolutePath(), QFileInfo(exports).absoluteFilePath());

        QVERIFY(!DocumentManager::exportFile(ExportType::PDF, configuration));
        QVERIFY(!QFile::exists(QDir(exports).filePath(u"Song.pdf"_qs)));
        QCOMPARE(QDir(exports).entryList(QDir::Files).size(), 3);
    }

    void exportFileWithoutAFolder()
    {
        // Something that is no folder stands where the folder should be made.
        const QString exports = AppPaths::exportsDirectory();
        QDir(exports).removeRecursively();
        QVERIFY(AppPaths::ensureDirectory(QFileInfo(exports).absolutePath()));
        QFile blocker(exports);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(u"^error creating exports dir .*Exports$"_qs));
        QVERIFY(!DocumentManager::exportFile(ExportType::TXT, configurationOf(songWith({}))));
        QVERIFY(QFile::remove(exports));
    }

    void tabNames_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message");
        QTest::newRow("fine") << u" Song "_qs << QString();
        QTest::newRow("blank") << u" \t "_qs << u"Name cannot be empty"_qs;
        QTest::newRow("slash before lgrd") << u"a/b.LGRD"_qs << u"Cannot contain '/'"_qs;
        QTest::newRow("extension any case") << u"my.LGRD.tab"_qs << u"Cannot contain '.lgrd'"_qs;
        QTest::newRow("icloud") << u"x.iCloud"_qs << u"Cannot contain '.icloud'"_qs;
        QTest::newRow("fifty") << QString(50, u'x') << QString();
        QTest::newRow("fifty-one") << QString(51, u'x') << u"Name too long. 51/50 characters."_qs;
        // Fifty accented letters built from two code points each are fifty characters.
        QTest::newRow("combining") << QString(50, u'e').replace(u"e"_qs, u"e\u0301"_qs) << QString();
        QTest::newRow("line feed kept") << u"\nSong"_qs << QString();
    }

    void tabNames()
    {
        QFETCH(QString, typed);
        QFETCH(QString, message);
        const auto result = DocumentManager::validateTabName(DocumentManager::trimmedTabName(typed));
        QCOMPARE(result.value_or(QString()), message);
        QCOMPARE(result.has_value(), !message.isEmpty());
    }
};

LUTEGRID_TEST_MAIN(TestPlainText)
#include "tst_plaintext.moc"
