#include "services/cloudkeyvaluestore.h"
#include "library/tabtagstore.h"
#include "model/keyedarchive.h"
#include "services/saveddata.h"
#include "testdata.h"
#include "testmain.h"

#include <QDir>
#include <QFile>

#include <memory>

using TagMap = TabTagStore::TagMap;

namespace {

QString folder(const QString &name)
{
    const QString path = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(name);
    QDir(path).removeRecursively();
    QDir().mkpath(path);
    return path;
}

// Settings, key-value store and label store of one library folder, as a fresh process
// would make them.
struct Library {
    QString dir;
    std::unique_ptr<CloudKeyValueStore> cloud;
    std::unique_ptr<SavedData> settings;
    std::unique_ptr<TabTagStore> store;

    explicit Library(const QString &dir, bool local) : dir(dir) { restart(local); }
    void restart(bool local)
    {
        store.reset();
        settings.reset();
        cloud = std::make_unique<CloudKeyValueStore>(QDir(dir).filePath(u"cloud"_qs));
        settings = std::make_unique<SavedData>(QDir(dir).filePath(u"data.plist"_qs), cloud.get());
        settings->icloudOff = local;
        store = std::make_unique<TabTagStore>(*settings, *cloud);
    }
    QString tagFile() const { return settings->tabTagFileURL; }
};

} // namespace

class TestLabels : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void operations_data();
    void operations();
    void unchangedLabelsWriteNothing();
    void localFileIsReadOnceAndSurvivesRestart();
    void unreadableLocalFile_data();
    void unreadableLocalFile();
    void cloudMapMakesNoFile();
    void storesAreSeparate();
};

void TestLabels::operations_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("local file") << true;
    QTest::newRow("key-value store") << false;
}

void TestLabels::operations()
{
    QFETCH(bool, local);
    Library library(folder(u"ops"_qs), local);
    TabTagStore &store = *library.store;
    store.setTabTags(u"Song"_qs, {u"rock"_qs, u"Beach"_qs, u"rock"_qs});
    store.setTabTags(u"Other"_qs, {u"rock"_qs});
    store.setTabTags(u"Bare"_qs, {u"gone"_qs});
    store.setTabTags(u"Bare"_qs, {});
    // Emptied, the list stays under the name.
    QVERIFY(store.currentTagMap().contains(u"Bare"_qs));
    QCOMPARE(store.allTagNames(), QStringList({u"Beach"_qs, u"rock"_qs}));

    store.moveTabTags(u"Song"_qs, u"Other"_qs, {u"jazz"_qs});
    QCOMPARE(store.currentTagMap(), TagMap({{u"Other"_qs, {u"jazz"_qs}}, {u"Bare"_qs, {}}}));

    store.setTabTags(u"A"_qs, {u"x"_qs, u"y"_qs, u"x"_qs, u"z"_qs});
    store.setTabTags(u"B"_qs, {u"x"_qs});
    store.removeTagFromAllTabs(u"x"_qs);
    const TagMap map = store.currentTagMap();
    QCOMPARE(map.value(u"A"_qs), QStringList({u"y"_qs, u"z"_qs}));
    QVERIFY(!map.contains(u"B"_qs)); // its only label went, and the key with it
    store.removeTagFromAllTabs(std::nullopt);
    store.removeTabTags(u"A"_qs);
    store.removeTabTags(u"Missing"_qs);
    QCOMPARE(store.allTagNames(), QStringList({u"jazz"_qs}));

    // What a new process reads is what was written.
    library.restart(local);
    QCOMPARE(library.store->currentTagMap(),
             TagMap({{u"Other"_qs, {u"jazz"_qs}}, {u"Bare"_qs, {}}}));
}

void TestLabels::unchangedLabelsWriteNothing()
{
    Library library(folder(u"unchanged"_qs), true);
    TabTagStore &store = *library.store;
    store.setTabTags(u"Untouched"_qs, {});
    QVERIFY(!QFile::exists(library.tagFile())); // no entry and none given: no change
    store.setTabTags(u"Song"_qs, {u"a"_qs, u"b"_qs});
    QVERIFY(QFile::exists(library.tagFile())); // the first label of all makes the file
    QVERIFY(QFile::remove(library.tagFile()));
    store.setTabTags(u"Song"_qs, {u"b"_qs, u"a"_qs});
    store.removeTagFromAllTabs(u"absent"_qs);
    store.removeTabTags(u"Nobody"_qs);
    QVERIFY(!QFile::exists(library.tagFile()));
    QCOMPARE(store.currentTagMap().value(u"Song"_qs), QStringList({u"a"_qs, u"b"_qs}));
}

void TestLabels::localFileIsReadOnceAndSurvivesRestart()
{
    Library library(folder(u"once"_qs), true);
    library.store->setTabTags(u"Song"_qs, {u"folk"_qs});
    // A change to the file after the first read is not seen by this process...
    QFile file(library.tagFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(TabTagStore::localFileData({{u"Song"_qs, {u"outside"_qs}}}));
    file.close();
    QCOMPARE(library.store->allTagNames(), QStringList{u"folk"_qs});
    // ...and is by the next one.
    library.restart(true);
    QCOMPARE(library.store->allTagNames(), QStringList{u"outside"_qs});

    // The file is an archive whose one entry holds the archive of the map.
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto top = KeyedUnarchiver::unarchivedTopLevel(file.readAll());
    QVERIFY(top);
    const auto inner = KeyedUnarchiver::unarchivedRootObject(top->value(u"localtgmpKey").toData());
    QVERIFY(inner);
    QCOMPARE(inner->value(u"Song").stringListValue(), QStringList{u"outside"_qs});
}

void TestLabels::unreadableLocalFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("not an archive") << QByteArray("garbage");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("inner not an archive") << KeyedArchiver::archivedDataKeyedDirectly(
        {{u"localtgmpKey"_qs, ArchiveValue::fromData("junk")}});
    QTest::newRow("inner holds a number") << KeyedArchiver::archivedDataKeyedDirectly(
        {{u"localtgmpKey"_qs,
          ArchiveValue::fromData(KeyedArchiver::archivedData(
              ArchiveValue::fromDictionary({{u"Song"_qs, ArchiveValue::fromInteger(3)}})))}});
    QTest::newRow("entry missing") << KeyedArchiver::archivedDataKeyedDirectly(
        {{u"other"_qs, ArchiveValue::fromString(u"x"_qs)}});
    // Two million labels out of a file of a few kilobytes.
    QTest::newRow("one list shared by every tab") << testDataFile("hostile_shared_labels.plist");
}

void TestLabels::unreadableLocalFile()
{
    QFETCH(QByteArray, bytes);
    Library library(folder(u"corrupt"_qs), true);
    QFile file(library.tagFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    QCOMPARE(library.store->currentTagMap(), TagMap());
    // The next write replaces the file with a good one.
    library.store->setTabTags(u"Song"_qs, {u"new"_qs});
    library.restart(true);
    QCOMPARE(library.store->currentTagMap(), TagMap({{u"Song"_qs, {u"new"_qs}}}));
}

void TestLabels::cloudMapMakesNoFile()
{
    Library library(folder(u"cloud"_qs), false);
    library.store->setTabTags(u"Song"_qs, {u"a"_qs});
    QVERIFY(!QFile::exists(library.tagFile()));
    const QVariantMap stored = library.cloud->dictionaryForKey(u"tabtags"_qs);
    QCOMPARE(stored.value(u"Song"_qs).toList(), QVariantList{u"a"_qs});

    // A value of another shape reads as no labels at all.
    library.cloud->setObject(QVariantMap{{u"Song"_qs, u"a"_qs}}, u"tabtags"_qs);
    QCOMPARE(library.store->currentTagMap(), TagMap());
    library.cloud->setObject(QVariantMap{{u"Song"_qs, QVariantList{qint64(1)}}}, u"tabtags"_qs);
    QCOMPARE(library.store->allTagNames(), QStringList());
}

void TestLabels::storesAreSeparate()
{
    Library library(folder(u"switch"_qs), true);
    library.store->setTabTags(u"Song"_qs, {u"local"_qs});
    library.settings->icloudOff = false;
    QCOMPARE(library.store->allTagNames(), QStringList());
    library.store->setTabTags(u"Song"_qs, {u"cloud"_qs});
    library.settings->icloudOff = true;
    QCOMPARE(library.store->allTagNames(), QStringList{u"local"_qs});
    library.settings->icloudOff = false;
    QCOMPARE(library.store->allTagNames(), QStringList{u"cloud"_qs});
}

LUTEGRID_TEST_MAIN(TestLabels)
#include "tst_labels.moc"
