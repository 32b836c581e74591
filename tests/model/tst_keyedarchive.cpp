#include "model/keyedarchive.h"
#include "testdata.h"
#include "testmain.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

class TestKeyedArchive : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void roundTripOfEveryValueType();
    void writerSharesStringsAndClasses();
    void anotherReaderReadsOurs();
    void readsKeyedDirectlyTopLevel();
    void readsNestedArchiveInData();
    void hostileArchivesAreUnreadable_data();
    void hostileArchivesAreUnreadable();
    void rejectsWhatIsNoKeyedArchive_data();
    void rejectsWhatIsNoKeyedArchive();
};

void TestKeyedArchive::roundTripOfEveryValueType()
{
    const ArchiveValue inner =
        ArchiveValue::object(u"Test.Inner"_qs, {{u"n"_qs, ArchiveValue::fromInteger(1)}});
    const ArchiveValue root = ArchiveValue::object(
        u"Test.Root"_qs,
        {
            {u"yes"_qs, ArchiveValue::fromBool(true)},
            {u"no"_qs, ArchiveValue::fromBool(false)},
            {u"big"_qs, ArchiveValue::fromInteger(std::numeric_limits<qint64>::max())},
            {u"negative"_qs, ArchiveValue::fromInteger(-3)},
            {u"min"_qs, ArchiveValue::fromInteger(std::numeric_limits<qint64>::min())},
            {u"real"_qs, ArchiveValue::fromReal(-2.5)},
            {u"text"_qs, ArchiveValue::fromString(u"G\u266f \u2014 \u00e9"_qs)},
            {u"empty"_qs, ArchiveValue::fromString(QString())},
            {u"data"_qs, ArchiveValue::fromData(QByteArray("\0\1\2", 3))},
            {u"nothing"_qs, ArchiveValue()},
            {u"list"_qs, ArchiveValue::fromArray({ArchiveValue::fromInteger(7), ArchiveValue(),
                                                  inner, ArchiveValue::fromString(u"x"_qs)})},
            {u"map"_qs, ArchiveValue::fromDictionary({{u"k"_qs, inner}})},
        });
    const QByteArray bytes = KeyedArchiver::archivedData(root);
    QString error;
    const auto read = KeyedUnarchiver::unarchivedRootObject(bytes, &error);
    QVERIFY2(read, qPrintable(error));
    // Equality is strict: kinds, classes and every field.
    QVERIFY(*read == root);
    QVERIFY(read->contains(u"nothing"));
    QVERIFY(!read->contains(u"absent"));
}

void TestKeyedArchive::writerSharesStringsAndClasses()
{
    ArchiveArray columns;
    for (int i = 0; i < 200; ++i) {
        columns.push_back(ArchiveValue::object(
            u"Lutegrid.TabColumnData"_qs,
            {{u"colikey"_qs, ArchiveValue::fromStringList(QStringList(6, u"\u2014"_qs))}}));
    }
    const QByteArray bytes =
        KeyedArchiver::archivedData(ArchiveValue::fromArray(std::move(columns)));
    // One class description per class, and one "—" for all 1,200 cells: unshared, the
    // strings would add some 7 KB to the 11 KB it takes.
    QCOMPARE(bytes.count("Lutegrid.TabColumnData"), 1);
    QVERIFY2(bytes.size() < 14000, qPrintable(QString::number(bytes.size())));
    QCOMPARE(bytes.count("NSArray"), 1);
}

void TestKeyedArchive::anotherReaderReadsOurs()
{
    // Python's plistlib is an independent reader of binary property lists.
    ArchiveArray cells;
    for (int i = 0; i < 70000; ++i)
        cells.push_back(ArchiveValue::fromString(QString::number(i % 300 - 5)));
    const ArchiveValue root = ArchiveValue::object(
        u"Lutegrid.TabColumnData"_qs,
        {{u"colikey"_qs, ArchiveValue::fromArray(std::move(cells))},
         {u"chnmkey"_qs, ArchiveValue::fromString(u"C\u266f\u2014\U0001F3B8 \u00e9"_qs)},
         {u"neg"_qs, ArchiveValue::fromInteger(-40000000000)},
         {u"real"_qs, ArchiveValue::fromReal(0.25)},
         {u"flag"_qs, ArchiveValue::fromBool(true)},
         {u"blob"_qs, ArchiveValue::fromData(QByteArray(300, 'x'))},
         {u"none"_qs, ArchiveValue()}});
    QTemporaryDir dir;
    const QString path = dir.filePath(u"ours.plist"_qs);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(KeyedArchiver::archivedData(root));
    file.close();

    const char *script = R"(
import plistlib, sys
d = plistlib.load(open(sys.argv[1], 'rb'))
o = d['$objects']
assert d['$archiver'] == 'NSKeyedArchiver' and d['$version'] == 100000 and o[0] == '$null'
r = o[d['$top']['root'].data]
assert o[r['$class'].data]['$classname'] == 'Lutegrid.TabColumnData'
cells = o[r['colikey'].data]['NS.objects']
assert len(cells) == 70000 and o[cells[12].data] == '7' and o[cells[0].data] == '-5'
assert o[r['chnmkey'].data] == 'C♯—🎸 é'
assert r['neg'] == -40000000000 and r['real'] == 0.25 and r['flag'] is True
assert o[r['blob'].data] == b'x' * 300 and r['none'].data == 0
print('ok')
)";
    QProcess python;
    python.start(u"python3"_qs, {u"-c"_qs, QString::fromUtf8(script), path});
    QVERIFY(python.waitForFinished(30000));
    QCOMPARE(python.readAllStandardError(), QByteArray());
    QCOMPARE(python.readAllStandardOutput().trimmed(), QByteArray("ok"));
}

// Tabs from another writer go through the document reader: tst_tabfileformat reads them.
void TestKeyedArchive::readsKeyedDirectlyTopLevel()
{
    QString error;
    const auto top =
        KeyedUnarchiver::unarchivedTopLevel(testDataFile("platform_settings.plist"), &error);
    QVERIFY2(top, qPrintable(error));
    QCOMPARE(top->value(u"tabcreatecountkey").toInteger(), 7);
    QCOMPARE(top->value(u"lastrrtKey").toReal(), 1700000000.5);
    const ArchiveArray &recents = top->value(u"rcsck").toArray();
    QCOMPARE(recents.size(), size_t(2));
    QCOMPARE(recents[1].value(u"customkey").toBool(), true);

    const QByteArray ours = KeyedArchiver::archivedDataKeyedDirectly(top->fields());
    const auto again = KeyedUnarchiver::unarchivedTopLevel(ours);
    QVERIFY(again);
    QVERIFY(*again == *top);
}

void TestKeyedArchive::readsNestedArchiveInData()
{
    const auto root = KeyedUnarchiver::unarchivedRootObject(testDataFile("nested_archive.plist"));
    QVERIFY(root);
    QCOMPARE(root->value(u"count").toInteger(), 3);
    QVERIFY(root->value(u"nothing").isNull());
    for (const char16_t *key : {u"plain", u"wrapped"}) {
        const QByteArray inner = root->value(QStringView(key)).toData();
        QVERIFY(!inner.isEmpty());
        const auto chord = KeyedUnarchiver::unarchivedRootObject(inner);
        QVERIFY(chord);
        QCOMPARE(chord->value(u"nmkey").stringValue(), u"Inner"_qs);
        QCOMPARE(chord->value(u"colikey").stringListValue()->size(), 4);
    }
}

void TestKeyedArchive::hostileArchivesAreUnreadable_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::newRow("cycle") << u"hostile_cycle.plist"_qs << u"cycle"_qs;
    QTest::newRow("past end") << u"hostile_past_end.plist"_qs << u"past the end"_qs;
    QTest::newRow("10,000 deep") << u"hostile_deep.plist"_qs << u"too deep"_qs;
    QTest::newRow("2^40 expansion") << u"hostile_expansion.plist"_qs << u"damaged"_qs;
    QTest::newRow("NUL in a key") << u"hostile_nul_key.plist"_qs << u"damaged"_qs;
}

void TestKeyedArchive::hostileArchivesAreUnreadable()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    QString error;
    QVERIFY(!KeyedUnarchiver::unarchivedRootObject(testDataFile(qPrintable(file)), &error));
    QVERIFY2(error.contains(reason), qPrintable(error));
}

void TestKeyedArchive::rejectsWhatIsNoKeyedArchive_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("json") << QByteArray("{\"title\":\"x\"}");
    QTest::newRow("magic only") << QByteArray("bplist00");
    const QByteArray valid = KeyedArchiver::archivedData(ArchiveValue::fromString(u"x"_qs));
    QTest::newRow("truncated") << valid.left(valid.size() - 3);
    QByteArray noArchiver = valid;
    noArchiver.replace("NSKeyedArchiver", "NSKeyedArchivez");
    QTest::newRow("other archiver") << noArchiver;
}

void TestKeyedArchive::rejectsWhatIsNoKeyedArchive()
{
    QFETCH(QByteArray, bytes);
    QString error;
    QVERIFY(!KeyedUnarchiver::unarchivedRootObject(bytes, &error));
    QVERIFY(!error.isEmpty());
}

LUTEGRID_TEST_MAIN(TestKeyedArchive)
#include "tst_keyedarchive.moc"
