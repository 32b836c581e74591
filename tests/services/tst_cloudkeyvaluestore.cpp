#include "model/plistvariant.h"
#include "services/cloudkeyvaluestore.h"

#include "handmadeplist.h"
#include "testfiles.h"
#include "testmain.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimeZone>
#include <QtEndian>

#include <cstring>
#include <limits>

namespace {

QVariantMap sampleValues()
{
    return {
        {u"text"_qs, u"Grüße, 歌"_qs},
        {u"empty text"_qs, QString()},
        {u"text past a NUL"_qs, u"ta\u0000g"_qs},
        {u"labels past a NUL"_qs, QVariantList{u"\u0000"_qs, u"la\u0000b\u00e9l"_qs}},
        {u"Schlüssel ✓"_qs, u"unicode key"_qs},
        {u"data"_qs, QByteArray("\x00\x01\xFFplist", 8)},
        {u"int"_qs, 42},
        {u"negative"_qs, qint64(-7)},
        {u"smallest"_qs, std::numeric_limits<qint64>::min()},
        {u"largest"_qs, std::numeric_limits<qint64>::max()},
        {u"real"_qs, 0.1},
        {u"true"_qs, true},
        {u"false"_qs, false},
        {u"date"_qs, QDateTime(QDate(2026, 11, 21), QTime(10, 15, 30), QTimeZone::utc())},
        {u"list"_qs, QVariantList{1, u"two"_qs, QVariantList{3.5}, QVariantMap{{u"k"_qs, false}}}},
        {u"strings"_qs, QStringList{u"a"_qs, u"b"_qs}},
        {u"map"_qs, QVariantMap{{u"inner"_qs, QVariantMap{{u"deep"_qs, QByteArray("x")}}}}},
    };
}

QByteArray plistOf(const QVariantMap &values)
{
    return PlistVariant::binaryData(values).value_or(QByteArray());
}

std::unique_ptr<QTemporaryDir> homeFolder()
{
    return std::make_unique<QTemporaryDir>(
        QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"storeXXXXXX"_qs));
}

QStringList sorted(QStringList keys)
{
    keys.sort();
    return keys;
}

// Gathers the keys of outside-change notices until `count` keys came or two seconds passed.
QStringList keysWithin2s(QSignalSpy &spy, qsizetype count)
{
    QStringList keys;
    QElapsedTimer clock;
    clock.start();
    while (keys.size() < count && clock.elapsed() < 2000) {
        if (spy.isEmpty() && !spy.wait(int(2000 - clock.elapsed())))
            break;
        while (!spy.isEmpty()) {
            const QList<QVariant> notice = spy.takeFirst();
            if (notice.at(0).toInt() != CloudKeyValueStore::ServerChange)
                return {u"unexpected reason %1"_qs.arg(notice.at(0).toInt())};
            keys += notice.at(1).toStringList();
        }
    }
    keys.sort();
    return keys;
}

const char childFolderVariable[] = "LUTEGRID_KV_CHILD_FOLDER";

} // namespace

class TestCloudKeyValueStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = homeFolder();
        QVERIFY(folder->isValid());
    }

    void everyValueTypeSurvivesAReload()
    {
        const QVariantMap values = sampleValues();
        {
            CloudKeyValueStore store(folder->path());
            for (auto it = values.cbegin(); it != values.cend(); ++it)
                store.setObject(it.value(), it.key());
            // What the store hands out is already what a reload gives.
            QCOMPARE(store.objectForKey(u"strings"_qs).typeId(), QMetaType::QVariantList);
            QCOMPARE(store.objectForKey(u"int"_qs).typeId(), QMetaType::LongLong);
        }
        QVERIFY(readFile(storePath()).startsWith("bplist00"));

        // Lists of any kind read back as QVariantList.
        QVariantMap expected = values;
        expected.insert(u"strings"_qs, QVariantList{u"a"_qs, u"b"_qs});
        CloudKeyValueStore reloaded(folder->path());
        for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
            const QVariant value = reloaded.objectForKey(it.key());
            QVERIFY2(value == it.value(), qPrintable(it.key()));
        }
        QCOMPARE(reloaded.objectForKey(u"negative"_qs).typeId(), QMetaType::LongLong);
        QCOMPARE(reloaded.arrayForKey(u"strings"_qs), (QVariantList{u"a"_qs, u"b"_qs}));
        QCOMPARE(reloaded.dictionaryForKey(u"map"_qs).value(u"inner"_qs).toMap().size(), 1);
        // The typed reads give nothing for a value of another type.
        QVERIFY(reloaded.arrayForKey(u"map"_qs).isEmpty());
        QVERIFY(reloaded.dictionaryForKey(u"list"_qs).isEmpty());
    }

    void removingAndRefusingValues()
    {
        {
            CloudKeyValueStore store(folder->path());
            store.setObject(u"a"_qs, u"keep"_qs);
            store.setObject(u"b"_qs, u"gone"_qs);
            store.removeObjectForKey(u"gone"_qs);
            store.setObject(1, u"cleared"_qs);
            store.setObject(QVariant(), u"cleared"_qs);
            // No property-list form: not stored, nothing else disturbed.
            store.setObject(QVariant::fromValue(QTimeZone::utc()), u"zone"_qs);
            QVERIFY(!store.objectForKey(u"zone"_qs).isValid());
            // A map key holding a NUL would make the whole file unreadable.
            store.setObject(QVariantMap{{u"a\u0000b"_qs, 1}}, u"nul key"_qs);
            QVERIFY(!store.objectForKey(u"nul key"_qs).isValid());
            QVERIFY(store.synchronize());
        }
        CloudKeyValueStore reloaded(folder->path());
        QCOMPARE(reloaded.objectForKey(u"keep"_qs), QVariant(u"a"_qs));
        QVERIFY(!reloaded.objectForKey(u"gone"_qs).isValid());
        QVERIFY(!reloaded.objectForKey(u"cleared"_qs).isValid());
        QVERIFY(!reloaded.objectForKey(u"zone"_qs).isValid());
        QVERIFY(!reloaded.objectForKey(u"nul key"_qs).isValid());
    }

    void aValuePassingTheByteQuotaIsRefused()
    {
        CloudKeyValueStore store(folder->path());
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        store.setObject(QByteArray(900 * 1024, 'a'), u"big"_qs);
        QVERIFY(store.objectForKey(u"big"_qs).isValid());
        const QByteArray before = readFile(storePath());

        store.setObject(QByteArray(200 * 1024, 'b'), u"more"_qs);
        QVERIFY(!store.objectForKey(u"more"_qs).isValid());
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), int(CloudKeyValueStore::QuotaViolationChange));
        QCOMPARE(spy.at(0).at(1).toStringList(), QStringList{u"more"_qs});
        QCOMPARE(readFile(storePath()), before);

        // Replacing the big value with a smaller one is still allowed.
        store.setObject(QByteArray(100, 'c'), u"big"_qs);
        store.setObject(QByteArray(200 * 1024, 'b'), u"more"_qs);
        QVERIFY(store.objectForKey(u"more"_qs).isValid());
    }

    void theKeyAfterTheLastIsRefused()
    {
        QVariantMap full;
        for (int i = 0; i < CloudKeyValueStore::maximumKeys; ++i)
            full.insert(u"key%1"_qs.arg(i), i);
        writeFile(storePath(), plistOf(full));

        CloudKeyValueStore store(folder->path());
        // Connected after construction, as the program's listeners are: the initial load is
        // still announced, once, naming every key.
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), int(CloudKeyValueStore::InitialSyncChange));
        QCOMPARE(spy.at(0).at(1).toStringList().size(), CloudKeyValueStore::maximumKeys);
        QTest::qWait(300);
        QCOMPARE(spy.size(), 1);
        store.setObject(1, u"one too many"_qs);
        QTRY_COMPARE(spy.size(), 2);
        QCOMPARE(spy.at(1).at(0).toInt(), int(CloudKeyValueStore::QuotaViolationChange));
        QVERIFY(!store.objectForKey(u"one too many"_qs).isValid());

        // Changing a key that exists adds none.
        store.setObject(-1, u"key0"_qs);
        QCOMPARE(store.objectForKey(u"key0"_qs), QVariant(qint64(-1)));
        QCOMPARE(spy.size(), 2);
    }

    void movingToAnotherFolder()
    {
        const auto synced = homeFolder();
        writeFile(QDir(synced->path()).filePath(CloudKeyValueStore::fileName),
                  plistOf({{u"shared"_qs, u"from sync"_qs}, {u"both"_qs, u"sync wins"_qs}}));
        CloudKeyValueStore store(folder->path());
        store.setObject(u"mine"_qs, u"local"_qs);
        store.setObject(u"local loses"_qs, u"both"_qs);
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);

        store.setFolder(synced->path());
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), int(CloudKeyValueStore::InitialSyncChange));
        QCOMPARE(sorted(spy.at(0).at(1).toStringList()), (QStringList{u"both"_qs, u"shared"_qs}));
        QCOMPARE(store.objectForKey(u"both"_qs), QVariant(u"sync wins"_qs));

        // What only we held is carried into the new folder's file.
        CloudKeyValueStore other(synced->path());
        QCOMPARE(other.objectForKey(u"local"_qs), QVariant(u"mine"_qs));
        QCOMPARE(other.objectForKey(u"shared"_qs), QVariant(u"from sync"_qs));
    }

    // Another process of ours, then a sync client replacing the file.
    void outsideChangesArriveKeyByKey()
    {
        CloudKeyValueStore store(folder->path());
        store.setObject(1, u"same"_qs);
        store.setObject(2, u"changed"_qs);
        store.setObject(3, u"removed"_qs);
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);

        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(childFolderVariable), folder->path());
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {u"childProcessWrites"_qs});
        QVERIFY(child.waitForFinished(20000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        // Changes may come in more than one notice; together they name each key once.
        QCOMPARE(keysWithin2s(spy, 3), (QStringList{u"added"_qs, u"changed"_qs, u"removed"_qs}));
        QCOMPARE(store.objectForKey(u"changed"_qs), QVariant(qint64(20)));
        QVERIFY(!store.objectForKey(u"removed"_qs).isValid());
        QCOMPARE(store.objectForKey(u"added"_qs), QVariant(u"new"_qs));

        // The watch follows the new file: a second outside change arrives as well.
        writeFile(storePath(), plistOf({{u"same"_qs, 1}, {u"changed"_qs, 30}}));
        QVERIFY(spy.wait(2000));
        QCOMPARE(sorted(spy.last().at(1).toStringList()),
                 (QStringList{u"added"_qs, u"changed"_qs}));
        QCOMPARE(store.objectForKey(u"changed"_qs), QVariant(qint64(30)));
    }

    // The other process of outsideChangesArriveKeyByKey.
    void childProcessWrites()
    {
        const QString childFolder = qEnvironmentVariable(childFolderVariable);
        if (childFolder.isEmpty())
            QSKIP("runs only as the child of outsideChangesArriveKeyByKey");
        CloudKeyValueStore store(childFolder);
        QCOMPARE(store.objectForKey(u"same"_qs), QVariant(qint64(1)));
        store.setObject(20, u"changed"_qs);
        store.removeObjectForKey(u"removed"_qs);
        store.setObject(u"new"_qs, u"added"_qs);
    }

    // From a folder without a file, which has nothing to announce either.
    void ourOwnWritesAreNotOutsideChanges()
    {
        CloudKeyValueStore store(folder->path());
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        for (int i = 0; i < 5; ++i)
            store.setObject(i, u"counter"_qs);
        store.removeObjectForKey(u"counter"_qs);
        store.setObject(u"x"_qs, u"last"_qs);
        QVERIFY(store.synchronize());
        // Longer than one poll, so both the watcher and the poll have had their turn.
        QTest::qWait(1300);
        QCOMPARE(spy.size(), 0);
    }

    void conflictCopiesAreMergedAndRemoved_data()
    {
        QTest::addColumn<QString>("copyName");
        QTest::addColumn<bool>("beforeStart");
        const QStringList names{
            u"lutegrid-keyvalues.sync-conflict-20261121-101530-ABCDEFG.plist"_qs,
            u"lutegrid-keyvalues (conflicted copy 2026-11-21 101530).plist"_qs,
            u"lutegrid-keyvalues (Name's conflicted copy 2026-11-21).plist"_qs,
        };
        for (const QString &name : names) {
            QTest::newRow(qPrintable(name + u" while running"_qs)) << name << false;
            QTest::newRow(qPrintable(name + u" at start"_qs)) << name << true;
        }
    }

    void conflictCopiesAreMergedAndRemoved()
    {
        QFETCH(QString, copyName);
        QFETCH(bool, beforeStart);
        const QString copyPath = QDir(folder->path()).filePath(copyName);
        const QByteArray copy = plistOf({{u"kept"_qs, u"copy"_qs}, {u"fromCopy"_qs, 7}});
        writeFile(storePath(), plistOf({{u"kept"_qs, u"main"_qs}}));
        // A file of a similar name that no sync client made is none of the store's business.
        const QString backup = QDir(folder->path()).filePath(u"lutegrid-keyvalues.plist.bak"_qs);
        writeFile(backup, plistOf({{u"x"_qs, 1}}));
        if (beforeStart)
            writeFile(copyPath, copy);

        CloudKeyValueStore store(folder->path());
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        if (!beforeStart) {
            QTRY_COMPARE(spy.size(), 1);
            writeFile(copyPath, copy);
        }
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(copyPath), 2000);
        QTRY_COMPARE(spy.size(), 2);
        QCOMPARE(spy.last().at(0).toInt(), int(CloudKeyValueStore::ServerChange));
        QCOMPARE(spy.last().at(1).toStringList(), QStringList{u"fromCopy"_qs});
        QCOMPARE(store.objectForKey(u"kept"_qs), QVariant(u"main"_qs));
        QCOMPARE(store.objectForKey(u"fromCopy"_qs), QVariant(qint64(7)));
        QVERIFY(QFile::exists(backup));
        QVERIFY(!store.objectForKey(u"x"_qs).isValid());

        const auto onDisk = PlistVariant::dictionaryFromData(readFile(storePath()));
        QVERIFY(onDisk);
        QCOMPARE(onDisk->value(u"fromCopy"_qs), QVariant(qint64(7)));
        QCOMPARE(onDisk->value(u"kept"_qs), QVariant(u"main"_qs));
    }

    void unreadableFilesAreSurvived_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray valid = plistOf(sampleValues());

        QByteArray noise(4096, '\0');
        QRandomGenerator random(7);
        random.fillRange(reinterpret_cast<quint32 *>(noise.data()), noise.size() / 4);
        QTest::newRow("noise") << noise;
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("magic only") << QByteArray("bplist00");
        QTest::newRow("truncated") << valid.left(valid.size() / 2);
        QTest::newRow("xml") << QByteArray("<?xml version=\"1.0\"?><plist><dict/></plist>");
        QTest::newRow("array root") << PlistVariant::binaryData({}).value().replace(8, 1, "\xA0");

        // A dictionary of one key, "k" unless told, whose value is object `value`.
        const auto keyK = [](int value, const QByteArray &key = HandMadePlist::ascii("k")) {
            HandMadePlist plist;
            plist.add(HandMadePlist::dict({1}, {value}));
            plist.add(key);
            return plist;
        };
        QTest::newRow("cycle") << keyK(0).data(0);
        // A hundred thousand nested arrays: deep enough to exhaust a recursive reader's stack;
        // then forty levels of arrays each naming the next twice: 2^40 nodes from a few bytes.
        HandMadePlist deep = keyK(2), bomb = keyK(2);
        for (int i = 0; i < 100000; ++i)
            deep.add(HandMadePlist::array({3 + i}));
        for (int i = 0; i < 40; ++i)
            bomb.add(HandMadePlist::array({3 + i, 3 + i}));
        deep.add(HandMadePlist::yes());
        bomb.add(HandMadePlist::yes());
        QTest::newRow("deep") << deep.data(0);
        QTest::newRow("expansion") << bomb.data(0);
        // A key with a NUL in it, which libplist itself would stop the program over.
        HandMadePlist nulKey = keyK(2, HandMadePlist::utf16(u"b\u00e4\u0000d"_qs));
        nulKey.add(HandMadePlist::yes());
        QTest::newRow("NUL in key") << nulKey.data(0);

        QByteArray badTrailer = valid;
        badTrailer[badTrailer.size() - 1] = char(0xFF); // offset table past the end
        QTest::newRow("bad trailer") << badTrailer;
    }

    void unreadableFilesAreSurvived()
    {
        QFETCH(QByteArray, bytes);
        writeFile(storePath(), bytes);
        CloudKeyValueStore store(folder->path());
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        QVERIFY(!store.objectForKey(u"k"_qs).isValid());
        QVERIFY(store.synchronize());
        QTest::qWait(50);
        QCOMPARE(spy.size(), 0);
        // Not overwritten until a value is set; then the file is a proper store again.
        QCOMPARE(readFile(storePath()), bytes);
        store.setObject(1, u"fresh"_qs);
        const auto onDisk = PlistVariant::dictionaryFromData(readFile(storePath()));
        QVERIFY(onDisk);
        QCOMPARE(*onDisk, (QVariantMap{{u"fresh"_qs, qint64(1)}}));
    }

    void anUnreadableRewriteKeepsWhatWeHold()
    {
        CloudKeyValueStore store(folder->path());
        store.setObject(u"v"_qs, u"kept"_qs);
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        writeFile(storePath(), QByteArray("bplist00 half written"));
        QTest::qWait(1200);
        QCOMPARE(spy.size(), 0);
        QCOMPARE(store.objectForKey(u"kept"_qs), QVariant(u"v"_qs));
        // Once the file is whole again its changes come through.
        writeFile(storePath(), plistOf({{u"kept"_qs, u"w"_qs}}));
        QVERIFY(spy.wait(2000));
        QCOMPARE(store.objectForKey(u"kept"_qs), QVariant(u"w"_qs));
    }

    // A few hundred bytes of lists shared at every level expand to half a million nodes: under
    // the reader's general limit, but beyond anything the store could write back within its
    // quota. Taken in, every later write would re-encode it for seconds and then be refused.
    void anExpandingFileIsRefusedAndWritesGoOn_data()
    {
        QTest::addColumn<bool>("asConflictCopy");
        QTest::newRow("the store's file") << false;
        QTest::newRow("a conflict copy") << true;
    }

    void anExpandingFileIsRefusedAndWritesGoOn()
    {
        QFETCH(bool, asConflictCopy);
        HandMadePlist bomb;
        bomb.add(HandMadePlist::dict({1, 2}, {3, 4}));
        bomb.add(HandMadePlist::ascii("other"));
        bomb.add(HandMadePlist::ascii("k"));
        bomb.add(HandMadePlist::ascii("from the file"));
        for (int i = 0; i < 18; ++i)
            bomb.add(HandMadePlist::array({5 + i, 5 + i}));
        bomb.add(HandMadePlist::yes());
        const QByteArray bytes = bomb.data(0);
        QVERIFY(bytes.size() < 500);
        QVERIFY(PlistVariant::isSafeBinaryPlist(bytes)); // passes the general limit

        const QString copyPath = QDir(folder->path()).filePath(
            u"lutegrid-keyvalues.sync-conflict-20261124-073000-ABCDEF.plist"_qs);
        if (asConflictCopy)
            writeFile(copyPath, bytes);
        else
            writeFile(storePath(), bytes);
        CloudKeyValueStore store(folder->path());
        QVERIFY(!store.objectForKey(u"k"_qs).isValid());
        QVERIFY(!store.objectForKey(u"other"_qs).isValid());
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        store.setObject(u"mine"_qs, u"label"_qs);
        store.setObject(QVariantList{u"0"_qs, u"2"_qs}, u"chord"_qs);
        QVERIFY(store.synchronize());
        QTest::qWait(50);
        for (const QList<QVariant> &notice : std::as_const(spy))
            QVERIFY(notice.at(0).toInt() != CloudKeyValueStore::QuotaViolationChange);
        QCOMPARE(store.objectForKey(u"label"_qs), QVariant(u"mine"_qs));
        const auto onDisk = PlistVariant::dictionaryFromData(readFile(storePath()));
        QVERIFY(onDisk);
        QCOMPARE(onDisk->keys(), (QStringList{u"chord"_qs, u"label"_qs}));
        // An unreadable copy is left for the user, not merged.
        QCOMPARE(QFileInfo::exists(copyPath), asConflictCopy);
    }

    // What the store agrees to write always reads back: a value tree past the reader's
    // expansion limit is refused as over the quota, however few bytes it would take.
    void whatIsWrittenReadsBack()
    {
        CloudKeyValueStore store(folder->path());
        QSignalSpy spy(&store, &CloudKeyValueStore::didChangeExternally);
        // Lists of lists: a single list that long takes libplist quadratic time to read.
        const QVariantList row(400, true);
        store.setObject(QVariantList(500, row), u"many"_qs);
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), int(CloudKeyValueStore::QuotaViolationChange));
        QVERIFY(!store.objectForKey(u"many"_qs).isValid());

        store.setObject(QVariantList(250, row), u"fewer"_qs);
        store.setObject(1, u"after"_qs);
        CloudKeyValueStore reloaded(folder->path());
        QCOMPARE(reloaded.arrayForKey(u"fewer"_qs), QVariantList(250, row));
        QCOMPARE(reloaded.objectForKey(u"after"_qs), QVariant(qint64(1)));
    }

    // Dates that no file can hold are left out when read; the other keys load and every later
    // write goes through.
    void anUnwritableDateDoesNotBlockWrites_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("+inf") << std::numeric_limits<double>::infinity();
        QTest::newRow("-inf") << -std::numeric_limits<double>::infinity();
        QTest::newRow("1e20 s") << 1e20;
        QTest::newRow("-1e20 s") << -1e20;
    }

    void anUnwritableDateDoesNotBlockWrites()
    {
        QFETCH(double, seconds);
        quint64 pattern = 0;
        std::memcpy(&pattern, &seconds, sizeof pattern);
        const quint64 bigEndian = qToBigEndian(pattern);
        const QByteArray date =
            QByteArray(1, char(0x33)) + QByteArray(reinterpret_cast<const char *>(&bigEndian), 8);

        HandMadePlist plist;
        plist.add(HandMadePlist::dict({1, 2, 3}, {4, 5, 6}));
        plist.add(HandMadePlist::ascii("when"));
        plist.add(HandMadePlist::ascii("other"));
        plist.add(HandMadePlist::ascii("list"));
        plist.add(date);
        plist.add(HandMadePlist::ascii("kept"));
        plist.add(HandMadePlist::array({4, 5}));
        writeFile(storePath(), plist.data(0));

        CloudKeyValueStore store(folder->path());
        QVERIFY(!store.objectForKey(u"when"_qs).isValid());
        QCOMPARE(store.objectForKey(u"other"_qs), QVariant(u"kept"_qs));
        QCOMPARE(store.arrayForKey(u"list"_qs), QVariantList{u"kept"_qs});
        store.setObject(2, u"new"_qs);
        CloudKeyValueStore reloaded(folder->path());
        QCOMPARE(reloaded.objectForKey(u"new"_qs), QVariant(qint64(2)));
        QCOMPARE(reloaded.objectForKey(u"other"_qs), QVariant(u"kept"_qs));
    }

private:
    QString storePath() const
    {
        return QDir(folder->path()).filePath(CloudKeyValueStore::fileName);
    }

    std::unique_ptr<QTemporaryDir> folder;
};

LUTEGRID_TEST_MAIN(TestCloudKeyValueStore)
#include "tst_cloudkeyvaluestore.moc"
