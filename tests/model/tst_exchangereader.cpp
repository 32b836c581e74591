// The direct exchange reader against the JSON tree reader: every file must give the same tab or
// the same refusal, whichever of the two decides it.
#include "model/exchangereader.h"
#include "testmain.h"

#include <QFile>
#include <QJsonDocument>
#include <QRandomGenerator>

namespace {

using ExchangeReader::Verdict;

struct Outcome {
    std::optional<TabData> tab;
    QString message;
};

Outcome viaTree(const QByteArray &bytes)
{
    ImportError error;
    auto tab = ExchangeReader::readTree(bytes, &error, 5);
    return {std::move(tab), error.message};
}

Outcome viaReader(const QByteArray &bytes)
{
    ImportError error;
    auto tab = tabDataFromExchangeData(bytes, &error, 5);
    return {std::move(tab), error.message};
}

// Empty when both agree, else what differs.
QString disagreement(const QByteArray &bytes)
{
    const Outcome tree = viaTree(bytes);
    const Outcome read = viaReader(bytes);
    if (bool(tree.tab) != bool(read.tab))
        return u"one read a tab, the other refused: "_qs + tree.message + u" / "_qs + read.message;
    if (tree.tab && !(*tree.tab == *read.tab))
        return u"the tabs differ"_qs;
    if (tree.message != read.message)
        return u"messages differ: "_qs + tree.message + u" / "_qs + read.message;
    return QString();
}

QString randomCellText(QRandomGenerator &random)
{
    static const QStringList odd{u""_qs,    u"+"_qs,     u"-"_qs,    u"+5"_qs,    u"-3"_qs,
                                 u"007"_qs, u"1a"_qs,    u"\u2014"_qs, u"\u2013"_qs, u"xx"_qs,
                                 u"9223372036854775807"_qs, u"-9223372036854775808"_qs,
                                 u"9223372036854775808"_qs, u"\"|\""_qs, u"\\"_qs, u"\n"_qs,
                                 u"\U0001F3B8"_qs, u"\u00e9"_qs, QString(QChar(0xD800))};
    switch (random.bounded(4)) {
    case 0:
        return odd[random.bounded(int(odd.size()))];
    case 1:
        return QString::number(random.bounded(30));
    default:
        return ColumnItemType::markText(ColumnItemType::Kind(random.bounded(1, 16))).toString();
    }
}

// A tab written by our own writer, with texts that test the corners of the cell reading.
TabData randomTab(QRandomGenerator &random)
{
    QList<TabRowData> rows;
    for (int r = random.bounded(4); r > 0; --r) {
        QList<TabColumnData> columns;
        for (int c = random.bounded(6); c > 0; --c) {
            QList<ColumnItemType> items;
            for (int s = random.bounded(8); s > 0; --s)
                items.append(ColumnItemType::fromText(randomCellText(random)));
            std::optional<QString> name;
            if (random.bounded(3) == 0)
                name = randomCellText(random);
            columns.append(TabColumnData(items, name));
        }
        QStringList lines;
        for (int l = random.bounded(3); l > 0; --l)
            lines.append(randomCellText(random) + u" words\t"_qs);
        rows.append(TabRowData(columns, lines));
    }
    TabData tab(u"T "_qs + randomCellText(random), std::move(rows), standardStringNotes(6),
                random.bounded(-2, 12), u" \t"_qs + randomCellText(random));
    tab.tempo = random.bounded(1, 300);
    return tab;
}

// Snippets of JSON, valid and not, that a mutation drops in anywhere.
QByteArray randomSnippet(QRandomGenerator &random)
{
    static const QList<QByteArray> snippets{
        " ", "\t\n", ",", ":", "[", "]", "{", "}", "\"", "\\", "\\u0041", "\\ud800", "\\x41",
        "null", "true", "1.", ".5", "1e400", "4.9e-324", "-0", "01", "9e18", "\xef\xbb\xbf",
        "\xe2\x80\x94", "\xed\xa0\x80", "\xc0\xaf", "\xef\xbf\xbf", QByteArray("\0", 1),
        "\"title\":\"x\",", "\"tabRows\":[],", "\"tempo\":7,", "\"columns\":[[\"1\"]],",
        "\"lyrics\":\"a\",", "\"ti\\u0074le\":\"y\",", "\"columnHeaders\":[null,3],"};
    return snippets[random.bounded(int(snippets.size()))];
}

QByteArray mutated(QByteArray bytes, QRandomGenerator &random)
{
    for (int edits = 1 + random.bounded(3); edits > 0; --edits) {
        const int at = random.bounded(int(bytes.size()) + 1);
        switch (random.bounded(5)) {
        case 0:
            bytes.truncate(at);
            break;
        case 1:
            if (at < bytes.size())
                bytes[at] = char(bytes[at] ^ (1 << random.bounded(8)));
            break;
        case 2:
            bytes.remove(at, random.bounded(1, 12));
            break;
        default:
            bytes.insert(at, randomSnippet(random));
        }
    }
    return bytes;
}

} // namespace

class TestExchangeReader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cellTextsReadAlikeFromUtf8AndUtf16();
    void ourOwnFilesAreReadDirectly();
    void cornersAgree_data();
    void cornersAgree();
    void mutatedFilesAgree();
};

void TestExchangeReader::cellTextsReadAlikeFromUtf8AndUtf16()
{
    QRandomGenerator random(7);
    QStringList texts{u"0"_qs, u"12"_qs, u"+0"_qs, u"-0"_qs, u"--1"_qs, u"+-1"_qs, u" 1"_qs,
                      u"1 "_qs, u"\u2014\u2014"_qs, u"\u2015"_qs, u"\u0100"_qs};
    for (int k = 1; k < ColumnItemType::kindCount; ++k)
        texts.append(ColumnItemType::markText(ColumnItemType::Kind(k)).toString());
    for (int i = 0; i < 200; ++i)
        texts.append(randomCellText(random));
    for (int c = 0; c < 128; ++c)
        texts.append(QString(QChar(c)));
    for (const QString &text : texts) {
        if (text.isValidUtf16())
            QVERIFY2(ColumnItemType::fromUtf8(text.toUtf8()) == ColumnItemType::fromText(text),
                     qPrintable(text));
    }
    QCOMPARE(ColumnItemType::fromUtf8("-9223372036854775808"),
             ColumnItemType::note(std::numeric_limits<qint64>::min()));
    QCOMPARE(ColumnItemType::fromUtf8("+"), ColumnItemType(ColumnItemType::Kind::plus));
}

void TestExchangeReader::ourOwnFilesAreReadDirectly()
{
    QFile demo(QStringLiteral(LUTEGRID_SOURCE_DIR "/src/surface/view/demo.lgrd"));
    QVERIFY(demo.open(QIODevice::ReadOnly));
    QList<QByteArray> files{demo.readAll()};
    QRandomGenerator random(11);
    for (int i = 0; i < 300; ++i)
        files.append(exchangeData(randomTab(random)).value());
    for (const QByteArray &bytes : files) {
        // Whatever we write, and other writers' spacing, needs no tree.
        QCOMPARE(ExchangeReader::readDirect(bytes, 5).verdict, Verdict::read);
        QVERIFY2(disagreement(bytes).isEmpty(), qPrintable(disagreement(bytes)));
    }
}

void TestExchangeReader::cornersAgree_data()
{
    QTest::addColumn<QByteArray>("json");
    auto tab = [](const QByteArray &members) -> QByteArray {
        return R"({"title":"t","tabRows":[{"columns":[["1"]]}])" + members + "}";
    };
    auto row = [](const QByteArray &members) -> QByteArray {
        return R"({"title":"t","tabRows":[{"columns":[["1","x"]])" + members + "}]}";
    };
    QTest::newRow("escaped name") << QByteArray(R"({"ti\u0074le":"e","tabRows":[]})");
    QTest::newRow("repeated title") << QByteArray(R"({"title":"a","tabRows":[],"title":"b"})");
    QTest::newRow("repeated columns") << row(R"(,"columns":[["2"]])");
    QTest::newRow("escapes") << QByteArray(
        R"({"title":"\"\\\/\b\f\n\r\t\u00e9\ud83c\udfb8\ud800","tabRows":[]})");
    QTest::newRow("unknown escape") << QByteArray(R"({"title":"\x41","tabRows":[]})");
    QTest::newRow("raw control") << QByteArray("{\"title\":\"a\tb\x01\",\"tabRows\":[]}");
    static const char withNul[] = "{\"title\":\"a\0b\",\"tabRows\":[]}";
    QTest::newRow("raw nul") << QByteArray(withNul, sizeof withNul - 1);
    QTest::newRow("nonchar") << QByteArray("{\"title\":\"\xef\xbf\xbf\",\"tabRows\":[]}");
    QTest::newRow("bad utf8") << QByteArray("{\"title\":\"\xed\xa0\x80\",\"tabRows\":[]}");
    QTest::newRow("bom in cell") << QByteArray(
        "{\"title\":\"t\",\"tabRows\":[{\"columns\":[[\"\xef\xbb\xbfh\",\"a\xef\xbb\xbf\"]]}]}");
    QTest::newRow("bom after escape") << QByteArray("{\"title\":\"\\n\xef\xbb\xbf\",\"tabRows\":[]}");
    QTest::newRow("bom in name") << QByteArray("{\"\xef\xbb\xbftitle\":\"t\",\"tabRows\":[]}");
    QTest::newRow("bom") << QByteArray("\xef\xbb\xbf{\"title\":\"t\",\"tabRows\":[]}");
    for (const char *number : {"90", "-0", "90.0", "9e1", "90.5", "1.", ".5", "1e400",
                               "4.9e-324", "1e-999", "9223372036854775807",
                               "-9223372036854775808", "92233720368547758070", "01", "+1",
                               "9007199254740993", "-9007199254740993"}) {
        QTest::newRow(number) << tab(R"(,"tempo":)" + QByteArray(number));
    }
    QTest::newRow("tempo text") << tab(R"(,"tempo":"90","cFret":null)");
    QTest::newRow("notes mixed") << tab(R"(,"stringNotes":["E",1])");
    QTest::newRow("notes") << tab(R"(,"stringNotes":["Db2","\u00e9"])");
    QTest::newRow("intro space") << tab(R"(,"intro":"\u2003 x \n")");
    QTest::newRow("headers mixed") << row(R"(,"columnHeaders":["A",null,{}])");
    QTest::newRow("headers long") << row(R"(,"columnHeaders":["A","B","C"])");
    QTest::newRow("lines mixed") << row(R"(,"lyricLines":["a",2],"lyrics":" b ")");
    QTest::newRow("lyrics only blanks") << row(R"(,"lyrics":" \t ")");
    QTest::newRow("deep unknown") << tab(",\"x\":" + QByteArray(100, '[') + QByteArray(100, ']'));
    QTest::newRow("deep columns") << row(",\"y\":" + QByteArray(30, '{') + "\"a\":1" + QByteArray(30, '}'));
    QTest::newRow("cell escapes") << QByteArray(
        R"({"title":"t","tabRows":[{"columns":[["\u0031\u0032","\u2014","\/","\\","+\u0035"]]}]})");
    QTest::newRow("cell number") << QByteArray(R"({"title":"t","tabRows":[{"columns":[[1]]}]})");
    QTest::newRow("column not array")
        << QByteArray(R"({"title":"t","tabRows":[{"columns":[["1"],"2"]}]})");
    QTest::newRow("second row damaged")
        << QByteArray(R"({"title":"t","tabRows":[{"columns":[]},[],{"columns":7}]})");
    QTest::newRow("damaged and no title") << QByteArray(R"({"tabRows":[1]})");
    QTest::newRow("rows not array") << QByteArray(R"({"title":"t","tabRows":{}})");
    QTest::newRow("top array") << QByteArray(R"([{"title":"t","tabRows":[]}])");
    QTest::newRow("garbage after") << QByteArray(R"({"title":"t","tabRows":[]} x)");
    QTest::newRow("spaced") << QByteArray(" {\r\n\"title\" : \"t\" ,\t\"tabRows\" : [ ] } \n");
    QTest::newRow("empty") << QByteArray();
}

void TestExchangeReader::cornersAgree()
{
    QFETCH(QByteArray, json);
    const QString difference = disagreement(json);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void TestExchangeReader::mutatedFilesAgree()
{
    QRandomGenerator random(2024);
    int decidedDirectly = 0;
    int wellFormedJson = 0;
    constexpr int runs = 20000;
    for (int i = 0; i < runs; ++i) {
        const QByteArray bytes = mutated(exchangeData(randomTab(random)).value(), random);
        const QString difference = disagreement(bytes);
        if (!difference.isEmpty())
            QFAIL(qPrintable(difference + u" for "_qs + QString::fromLatin1(bytes.toPercentEncoding())));
        decidedDirectly += ExchangeReader::readDirect(bytes, 5).verdict != Verdict::undecided;
        QJsonParseError error;
        QJsonDocument::fromJson(bytes, &error);
        wellFormedJson += error.error == QJsonParseError::NoError;
    }
    // Bad JSON is the tree's to word; of the rest, the tree must not be quietly doing the work.
    qInfo() << decidedDirectly << "of" << wellFormedJson << "well-formed files decided directly";
    QVERIFY(decidedDirectly > wellFormedJson * 3 / 4);
}

LUTEGRID_TEST_MAIN(TestExchangeReader)
#include "tst_exchangereader.moc"
