#include "model/keyedarchive.h"
#include "model/tabfileformat.h"
#include "testdata.h"
#include "testmain.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

TabColumnData column(const QList<ColumnItemType> &items, std::optional<QString> name = std::nullopt)
{
    return TabColumnData(items, std::move(name));
}

// A tab that uses every field the document form keeps.
TabData richTab()
{
    const auto n = ColumnItemType::note;
    TabRowData first(QList<TabColumnData>{column({n(3), ColumnItemType::blank(),
                                                  ColumnItemType(ColumnItemType::Kind::hammer),
                                                  n(12), n(0), n(-1)},
                                                 u"Am7"_qs),
                                          column(QList<ColumnItemType>(6, ColumnItemType::bar())),
                                          column({n(1), n(2), n(3), n(4), n(5), n(99999)}, u""_qs)},
                     QStringList{u"first"_qs, u"second"_qs});
    first.selectedLyricLineIndex = 1;
    TabRowData second(4, 6);
    TabData tab(u"Song"_qs, {first, second}, {u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs},
                3, u"Intro text"_qs);
    tab.lyricSize = 90;
    tab.tempo = 132;
    tab.playbackOptions = ViewModePlaybackOptions{96, 2, true, 3, true};
    return tab;
}

// Builds a document archive field by field, for files this program would not write.
QByteArray archiveWithTabFields(ArchiveFields fields)
{
    return KeyedArchiver::archivedData(
        ArchiveValue::object(u"Lutegrid.TabData"_qs, std::move(fields)));
}

// A tab of no rows and the given fields, as the document reader takes it.
std::optional<TabData> readRowlessTab(ArchiveFields fields)
{
    fields.push_back({u"trk"_qs, ArchiveValue::fromArray({})});
    return tabDataFromDocumentData(archiveWithTabFields(std::move(fields)));
}

ArchiveValue rowValue(ArchiveFields extra)
{
    ArchiveFields fields{{u"cdkey"_qs, ArchiveValue::fromArray({})}};
    for (auto &field : extra)
        fields.push_back(std::move(field));
    return ArchiveValue::object(u"Lutegrid.TabRowData"_qs, std::move(fields));
}

} // namespace

class TestTabFileFormat : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void documentRoundTrip();
    void documentAbsentAndOddFields();
    void documentSingleLyricRule();
    void documentUnreadable_data();
    void documentUnreadable();
    void documentSharesWhatTheArchiveShares();
    void documentFromAnotherWriter();
    void documentKeepsTextPastANul();
    void unpairedSurrogateReadsAlikeInBothForms();

    void exchangeRoundTrip();
    void exchangeEscapesText();
    void exchangeReadsColumnsAsTheyStand();
    void exchangeOptionalMembers();
    void exchangeErrors_data();
    void exchangeErrors();
};

void TestTabFileFormat::documentRoundTrip()
{
    const TabData tab = richTab();
    QString error;
    auto read = tabDataFromDocumentData(documentData(tab), &error);
    QVERIFY2(read, qPrintable(error));
    QCOMPARE(read->title, u"?"_qs);
    QCOMPARE(read->tabRowDatas[0].selectedLyricLineIndex, 0);
    read->title = tab.title;
    read->tabRowDatas[0].selectedLyricLineIndex = 1;
    QVERIFY(*read == tab);

    // An empty tab: an empty row list, absent options left out of the file.
    const QByteArray bytes =
        documentData(TabData(u"Empty"_qs, {}, standardStringNotes(6), std::nullopt, std::nullopt));
    const auto root = KeyedUnarchiver::unarchivedRootObject(bytes);
    QVERIFY(root);
    QVERIFY(root->value(u"trk").isArray());
    QVERIFY(root->value(u"trk").toArray().empty());
    QVERIFY(root->contains(u"introkey"));
    QVERIFY(!root->contains(u"plbkoptionskey"));
    const auto empty = tabDataFromDocumentData(bytes);
    QVERIFY(empty);
    QVERIFY(empty->tabRowDatas.isEmpty());
    QVERIFY(!empty->introText);
    QVERIFY(!empty->playbackOptions);

    // The writer keeps a lyric size as it stands; only the reader limits it.
    TabData large = richTab();
    large.lyricSize = 500;
    const auto largeRoot = KeyedUnarchiver::unarchivedRootObject(documentData(large));
    QCOMPARE(largeRoot->value(u"lcszkey").toInteger(), 500);
}

void TestTabFileFormat::documentAbsentAndOddFields()
{
    const auto bare = readRowlessTab({});
    QVERIFY(bare);
    QCOMPARE(bare->stringNotes, standardStringNotes(6));
    QCOMPARE(bare->capoFret, 0);
    QCOMPARE(bare->lyricSize, 100);
    QCOMPARE(bare->tempo, 80);
    QVERIFY(!bare->introText);
    // A stored 0 is a tempo, not an absent one.
    QCOMPARE(readRowlessTab({{u"tempokey"_qs, ArchiveValue::fromInteger(0)}})->tempo, 0);
    // The lyric size is limited on reading only; nothing or less counts as absent.
    for (const auto &[stored, size] :
         {std::pair<qint64, qint64>{-5, 100}, {10, 25}, {25, 25}, {120, 120}, {500, 120}}) {
        const auto sized = readRowlessTab({{u"lcszkey"_qs, ArchiveValue::fromInteger(stored)}});
        QCOMPARE(sized->lyricSize, size);
    }

    // Tuning names are cut to two characters, a grapheme never split.
    const QStringList stored{u"Db2"_qs, u"E"_qs,        u"F#3"_qs,
                             u"G#"_qs,  u"e\u0301x"_qs, u"\U0001F3B8ab"_qs};
    const auto read = readRowlessTab({{u"snkey"_qs, ArchiveValue::fromStringList(stored)}});
    QVERIFY(read);
    QCOMPARE(read->stringNotes, QStringList({u"Db"_qs, u"E"_qs, u"F#"_qs, u"G#"_qs, u"e\u0301x"_qs,
                                             u"\U0001F3B8a"_qs}));
    const auto notStrings =
        readRowlessTab({{u"snkey"_qs, ArchiveValue::fromArray({ArchiveValue::fromInteger(4)})}});
    QCOMPARE(notStrings->stringNotes, standardStringNotes(6));

    // Playback options that don't read leave the tab without them, never unreadable.
    const QByteArray rest = ",\"playbackColumnsInBeat\":1,\"playbackByMeasure\":false,"
                            "\"playbackBeatsPerMeasure\":4,\"loopPlayback\":false}";
    for (const QByteArray &json :
         QList<QByteArray>{"not json", "[]", "{\"playbackSpeed\":80}",
                           "{\"playbackSpeed\":\"80\"" + rest, "{\"playbackSpeed\":80.5" + rest}) {
        const auto options = readRowlessTab(
            {{u"plbkoptionskey"_qs, ArchiveValue::fromString(QString::fromLatin1(json))}});
        QVERIFY2(options, json.constData());
        QVERIFY2(!options->playbackOptions, json.constData());
    }
}

void TestTabFileFormat::documentSingleLyricRule()
{
    auto rowsOf = [](ArchiveFields rowFields) {
        return tabDataFromDocumentData(
                   archiveWithTabFields(
                       {{u"trk"_qs, ArchiveValue::fromArray({rowValue(std::move(rowFields))})}}))
            ->tabRowDatas.first();
    };
    QVERIFY(rowsOf({{u"lkey"_qs, ArchiveValue::fromString(u"  \t"_qs)}}).lyricLines.isEmpty());
    QCOMPARE(rowsOf({{u"lkey"_qs, ArchiveValue::fromString(u" hi "_qs)}}).lyricLines,
             QStringList{u" hi "_qs});
    QCOMPARE(rowsOf({{u"lkey"_qs, ArchiveValue::fromString(u"old"_qs)},
                     {u"lmkey"_qs, ArchiveValue::fromStringList({u"new"_qs})}})
                 .lyricLines,
             QStringList{u"new"_qs});
    QCOMPARE(rowsOf({}).stringCount, 0);

    // Writing keeps the first line a second time under "lkey".
    TabRowData row(1, 6);
    row.lyricLines = {u"one"_qs, u"two"_qs};
    TabData tab(u"t"_qs, {row}, standardStringNotes(6), std::nullopt, std::nullopt);
    const auto root = KeyedUnarchiver::unarchivedRootObject(documentData(tab));
    const ArchiveValue stored = root->value(u"trk").toArray()[0];
    QCOMPARE(stored.value(u"lkey").stringValue(), u"one"_qs);
    QCOMPARE(stored.value(u"lmkey").stringListValue(), row.lyricLines);
}

void TestTabFileFormat::documentUnreadable_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no trk") << archiveWithTabFields(
        {{u"snkey"_qs, ArchiveValue::fromStringList({u"E"_qs})}});
    QTest::newRow("row without cdkey") << archiveWithTabFields(
        {{u"trk"_qs,
          ArchiveValue::fromArray({ArchiveValue::object(u"Lutegrid.TabRowData"_qs, {})})}});
    auto tabWithColumn = [](ArchiveFields columnFields) {
        const ArchiveValue column =
            ArchiveValue::object(u"Lutegrid.TabColumnData"_qs, std::move(columnFields));
        const ArchiveValue row = ArchiveValue::object(
            u"Lutegrid.TabRowData"_qs, {{u"cdkey"_qs, ArchiveValue::fromArray({column})}});
        return archiveWithTabFields({{u"trk"_qs, ArchiveValue::fromArray({row})}});
    };
    QTest::newRow("column without colikey") << tabWithColumn({});
    QTest::newRow("colikey of numbers") << tabWithColumn(
        {{u"colikey"_qs, ArchiveValue::fromArray({ArchiveValue::fromInteger(3)})}});
    QTest::newRow("colikey with a null")
        << tabWithColumn({{u"colikey"_qs, ArchiveValue::fromArray({ArchiveValue()})}});
    QTest::newRow("root of another class") << KeyedArchiver::archivedData(
        ArchiveValue::object(u"Lutegrid.Other"_qs, {{u"trk"_qs, ArchiveValue::fromArray({})}}));
    QTest::newRow("exchange form") << exchangeData(richTab()).value();
    for (const char *hostile :
         {"hostile_cycle.plist", "hostile_past_end.plist", "hostile_deep.plist",
          "hostile_expansion.plist", "hostile_nul_key.plist", "hostile_shared_rows.lgrdi"})
        QTest::newRow(hostile) << testDataFile(hostile);
}

void TestTabFileFormat::documentUnreadable()
{
    QFETCH(QByteArray, bytes);
    QString error;
    QVERIFY(!tabDataFromDocumentData(bytes, &error));
    QVERIFY(!error.isEmpty());
}

void TestTabFileFormat::documentSharesWhatTheArchiveShares()
{
    // A row referred to many times is read once and shared, as the archive shares it.
    TabRowData row(3, 6);
    row.colDatas[1].setColumnItem(2, ColumnItemType::note(7));
    const ArchiveValue encodedRow = KeyedUnarchiver::unarchivedRootObject(
                                        documentData(TabData(u"t"_qs, {row}, standardStringNotes(6),
                                                             std::nullopt, std::nullopt)))
                                        ->value(u"trk")
                                        .toArray()[0];
    const auto tab = tabDataFromDocumentData(archiveWithTabFields(
        {{u"trk"_qs, ArchiveValue::fromArray(ArchiveArray(500, encodedRow))}}));
    QVERIFY(tab);
    QCOMPARE(tab->tabRowDatas.size(), 500);
    QVERIFY(tab->tabRowDatas[499] == row);
}

void TestTabFileFormat::documentFromAnotherWriter()
{
    QString error;
    const auto tab = tabDataFromDocumentData(testDataFile("platform_tab.lgrdi"), &error);
    QVERIFY2(tab, qPrintable(error));
    QCOMPARE(tab->stringNotes,
             QStringList({u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E3"_qs}));
    QCOMPARE(tab->capoFret, 2);
    QCOMPARE(tab->lyricSize, 120);
    QCOMPARE(tab->tempo, -7);
    QCOMPARE(tab->introText, u"Intro: let ring"_qs);
    QCOMPARE(tab->playbackOptions, (ViewModePlaybackOptions{96, 2, true, 3, false}));
    QCOMPARE(tab->tabRowDatas.size(), 2);
    const TabRowData &first = tab->tabRowDatas[0];
    QCOMPARE(first.lyricLines, QStringList({u"first line"_qs, u"second line"_qs}));
    QCOMPARE(first.stringCount, 6);
    QCOMPARE(first.colDatas[0].chordName, u"Am7"_qs);
    QCOMPARE(first.colDatas[0].columnItems,
             QList<ColumnItemType>({ColumnItemType::note(3), ColumnItemType::blank(),
                                    ColumnItemType(ColumnItemType::Kind::hammer),
                                    ColumnItemType::blank(), ColumnItemType::note(-2),
                                    ColumnItemType::note(0)}));
    QCOMPARE(first.colDatas[1].columnItems, QList<ColumnItemType>(6, ColumnItemType::bar()));
    QVERIFY(!first.colDatas[1].chordName);
    const TabRowData &second = tab->tabRowDatas[1];
    QCOMPARE(second.lyricLines, QStringList{u" old lyric "_qs});
    QCOMPARE(second.colDatas[0].columnItems[1], ColumnItemType::blank());
    QCOMPARE(second.colDatas[0].columnItems[5], ColumnItemType::blank());
    QVERIFY(second.colDatas[1].isSameColumn(first.colDatas[0]));
}

void TestTabFileFormat::documentKeepsTextPastANul()
{
    TabData tab = richTab();
    tab.tabRowDatas[0].lyricLines = {u"ly\u0000ric"_qs, u"\u0000"_qs};
    tab.tabRowDatas[0].colDatas[0].chordName = u"Am\u00007"_qs;
    tab.introText = u"In\u0000tro"_qs;
    tab.stringNotes[1] = u"\u0000A"_qs;
    QString error;
    const QByteArray bytes = documentData(tab);
    auto read = tabDataFromDocumentData(bytes, &error);
    QVERIFY2(read, qPrintable(error));
    read->title = tab.title;
    read->tabRowDatas[0].selectedLyricLineIndex = 1;
    QVERIFY(*read == tab);
    // The tree reader sees the same text as the in-place one.
    const auto root = KeyedUnarchiver::unarchivedRootObject(bytes, &error);
    QVERIFY2(root, qPrintable(error));
    QCOMPARE(root->value(u"introkey").toString(), *tab.introText);
}

void TestTabFileFormat::unpairedSurrogateReadsAlikeInBothForms()
{
    const QByteArray json = "{\"title\":\"T\\ud800x\",\"intro\":\"a\\udc00\","
                            "\"tabRows\":[{\"lyrics\":\"\\ud800\",\"columns\":[[\"1\"]],"
                            "\"columnHeaders\":[\"C\\ud800\"]}]}";
    const auto imported = tabDataFromExchangeData(json);
    QVERIFY(imported);
    const QString replaced = QString(QChar::ReplacementCharacter);

    const auto viaExchange = tabDataFromExchangeData(exchangeData(*imported).value());
    QVERIFY(viaExchange);
    QString error;
    const auto viaDocument = tabDataFromDocumentData(documentData(*imported), &error);
    QVERIFY2(viaDocument, qPrintable(error));
    for (const TabData *read : {&*viaExchange, &*viaDocument}) {
        QCOMPARE(read->tabRowDatas[0].lyricLines, QStringList{replaced});
        QCOMPARE(read->tabRowDatas[0].colDatas[0].chordName, u"C"_qs + replaced);
        QCOMPARE(read->introText, u"a"_qs + replaced);
    }
    QCOMPARE(viaExchange->title, u"T"_qs + replaced + u"x"_qs);
}

void TestTabFileFormat::exchangeRoundTrip()
{
    const TabData tab = richTab();
    const auto json = exchangeData(tab);
    QVERIFY(json);
    ImportError error;
    auto read = tabDataFromExchangeData(*json, &error);
    QVERIFY2(read, qPrintable(error.message));
    // The exchange form has no lyric size, playback options or selected line.
    QCOMPARE(read->lyricSize, 100);
    QVERIFY(!read->playbackOptions);
    QCOMPARE(read->tabRowDatas[0].selectedLyricLineIndex, 0);
    read->lyricSize = tab.lyricSize;
    read->playbackOptions = tab.playbackOptions;
    read->tabRowDatas[0].selectedLyricLineIndex = 1;
    QVERIFY(*read == tab);
    // Written again, the same bytes.
    QCOMPARE(exchangeData(*read), json);

    // Compact, under the exchange names.
    QVERIFY(!json->contains('\n'));
    QVERIFY(!json->contains(": "));
    const QJsonObject object = QJsonDocument::fromJson(*json).object();
    QCOMPARE(object.value(u"cFret").toInt(), 3);
    const QJsonObject row = object.value(u"tabRows").toArray().at(0).toObject();
    QCOMPARE(row.value(u"lyrics").toString(), u"first"_qs);
    QCOMPARE(row.value(u"columns").toArray().at(0).toArray().at(1).toString(), u"\u2014"_qs);
    QCOMPARE(row.value(u"columnHeaders").toArray().size(), 3);
    QVERIFY(row.value(u"columnHeaders").toArray().at(1).isNull());
    const QJsonObject emptyRow = object.value(u"tabRows").toArray().at(1).toObject();
    QCOMPARE(emptyRow.value(u"lyrics").toString(), QString());
    QVERIFY(emptyRow.value(u"lyricLines").toArray().isEmpty());

    TabData noIntro = richTab();
    noIntro.introText.reset();
    QVERIFY(!QJsonDocument::fromJson(exchangeData(noIntro).value()).object().contains(u"intro"));
}

void TestTabFileFormat::exchangeEscapesText()
{
    TabData tab = richTab();
    tab.title = u"Say \"hi\" \\ / back\tslash\n\u0001 caf\u00e9 \U0001F3B8"_qs;
    tab.tabRowDatas[0].lyricLines = {u"line\r\nbreak \u001f"_qs};
    tab.tabRowDatas[0].colDatas[0].chordName = u"A\"m"_qs;
    tab.tabRowDatas[0].colDatas[0].columnItems[1] = ColumnItemType(ColumnItemType::Kind::slideDown);
    const QByteArray json = exchangeData(tab).value();
    // Byte for byte what Qt's own writer makes of the same document.
    QJsonParseError parseError;
    const QJsonDocument parsed = QJsonDocument::fromJson(json, &parseError);
    QCOMPARE(parseError.error, QJsonParseError::NoError);
    QCOMPARE(parsed.toJson(QJsonDocument::Compact), json);
    const auto read = tabDataFromExchangeData(json);
    QVERIFY(read);
    QCOMPARE(read->title, tab.title);
    QCOMPARE(read->tabRowDatas[0].lyricLines, tab.tabRowDatas[0].lyricLines);
    QCOMPARE(read->tabRowDatas[0].colDatas[0], tab.tabRowDatas[0].colDatas[0]);
}

void TestTabFileFormat::exchangeReadsColumnsAsTheyStand()
{
    const QByteArray json =
        R"({"title":"t","tabRows":[{"columns":[["1","2","3","4","5"],["x","|","","h"]],
        "columnHeaders":["C"]}]})";
    const auto tab = tabDataFromExchangeData(json);
    QVERIFY(tab);
    const TabRowData &row = tab->tabRowDatas.first();
    QCOMPARE(row.colDatas[0].columnItems.size(), 5);
    QCOMPARE(row.colDatas[1].columnItems.size(), 4);
    QCOMPARE(row.stringCount, 5);
    QCOMPARE(row.colDatas[0].chordName, u"C"_qs);
    QVERIFY(!row.colDatas[1].chordName);
    QCOMPARE(row.colDatas[1].columnItems[2], ColumnItemType::blank());
}

void TestTabFileFormat::exchangeOptionalMembers()
{
    const auto bare = tabDataFromExchangeData(R"({"title":"t","tabRows":[]})", nullptr, 4);
    QVERIFY(bare);
    QCOMPARE(bare->stringNotes, standardStringNotes(4));
    QCOMPARE(bare->tempo, 80);

    const auto tab = tabDataFromExchangeData(
        R"({"title":"t","tabRows":[{"columns":[],"lyrics":" x ","lyricLines":[1]}],
            "stringNotes":["Db2","E"],"cFret":2.5,"tempo":90,"intro":" \n\t "})");
    QVERIFY(tab);
    QCOMPARE(tab->stringNotes, QStringList({u"Db2"_qs, u"E"_qs}));
    QCOMPARE(tab->capoFret, 0);
    QCOMPARE(tab->tempo, 90);
    QVERIFY(!tab->introText);
    QCOMPARE(tab->tabRowDatas[0].lyricLines, QStringList{u" x "_qs});

    const auto trimmed =
        tabDataFromExchangeData(R"({"title":"t","tabRows":[],"intro":"\n Verse \n"})");
    QCOMPARE(trimmed->introText, u"Verse"_qs);
    const auto badHeaders = tabDataFromExchangeData(
        R"({"title":"t","tabRows":[{"columns":[["1"]],"columnHeaders":["A",3]}]})");
    QVERIFY(!badHeaders->tabRowDatas[0].colDatas[0].chordName);
}

void TestTabFileFormat::exchangeErrors_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("message");
    QTest::newRow("array") << QByteArray("[1,2]") << u"Unable to parse document JSON."_qs;
    QTest::newRow("no title") << QByteArray(R"({"tabRows":[]})") << u"The tab has no title."_qs;
    QTest::newRow("title not string")
        << QByteArray(R"({"title":5,"tabRows":[]})") << u"The tab has no title."_qs;
    QTest::newRow("no rows") << QByteArray(R"({"title":"t"})") << u"The tab has no rows."_qs;
    QTest::newRow("row not object")
        << QByteArray(R"({"title":"t","tabRows":[1]})") << u"Row 1 of the tab is damaged."_qs;
    QTest::newRow("no columns") << QByteArray(R"({"title":"t","tabRows":[{},{"lyrics":"a"}]})")
                                << u"Row 1 of the tab is damaged."_qs;
    QTest::newRow("cell not string")
        << QByteArray(R"({"title":"t","tabRows":[{"columns":[]},{"columns":[[1]]}]})")
        << u"Row 2 of the tab is damaged."_qs;
    // Not JSON at all: the parser's own words, whatever they are.
    QTest::newRow("not JSON") << documentData(richTab()) << QString();
}

void TestTabFileFormat::exchangeErrors()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, message);
    ImportError error;
    QVERIFY(!tabDataFromExchangeData(json, &error));
    if (message.isEmpty())
        QVERIFY(!error.message.isEmpty());
    else
        QCOMPARE(error.message, message);
}

LUTEGRID_TEST_MAIN(TestTabFileFormat)
#include "tst_tabfileformat.moc"
