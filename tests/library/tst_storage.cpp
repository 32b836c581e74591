#include "library/fileversion.h"
#include "library/icloudmanager.h"
#include "library/tabfilenames.h"
#include "services/apppaths.h"
#include "services/cloudkeyvaluestore.h"
#include "services/saveddata.h"
#include "testmain.h"

#include <QDir>
#include <QSignalSpy>

class TestStorage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void entryNames_data();
    void entryNames();
    void conflictCopyNames_data();
    void conflictCopyNames();
    void storageLocation();
};

void TestStorage::entryNames_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("isTab");
    QTest::addColumn<QString>("tabPath");
    QTest::newRow("tab") << u"Song.lgrdi"_qs << true << u"Song.lgrdi"_qs;
    QTest::newRow("exchange form") << u"Song.lgrd"_qs << true << u"Song.lgrd"_qs;
    QTest::newRow("placeholder") << u".Song.lgrdi.icloud"_qs << true << u"Song.lgrdi"_qs;
    QTest::newRow("dots in name") << u"My.Song.v2.lgrdi"_qs << true << u"My.Song.v2.lgrdi"_qs;
    QTest::newRow("text file") << u"Song.txt"_qs << false << u"Song.txt"_qs;
    QTest::newRow("our save") << u".~lg.Song.lgrdi.k3j2.tmp"_qs << false << QString();
    QTest::newRow("syncthing temp") << u".syncthing.Song.lgrdi.tmp"_qs << false << QString();
    QTest::newRow("syncthing temp win") << u"~syncthing~Song.lgrdi.tmp"_qs << false << QString();
    QTest::newRow("tilde") << u"~Song.lgrdi"_qs << true << u"~Song.lgrdi"_qs;
    QTest::newRow("office owner file") << u"~$Song.lgrdi"_qs << false << QString();
    QTest::newRow("editor backup") << u"Song.lgrdi~"_qs << false << QString();
    QTest::newRow("nextcloud download") << u".Song.lgrdi.~1a2b3c"_qs << false << QString();
    QTest::newRow("lock") << u".~lock.Song.lgrdi#"_qs << false << QString();
    QTest::newRow("partial") << u"Song.lgrdi.part"_qs << false << QString();
    QTest::newRow("hidden") << u".Song.lgrdi"_qs << true << u".Song.lgrdi"_qs;
    QTest::newRow("hidden exchange form") << u".Song.lgrd"_qs << true << u".Song.lgrd"_qs;
    QTest::newRow("copy in progress") << u".Song.lgrdi.Xb3k9q"_qs << false << QString();
    QTest::newRow("hidden copy") << u".Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs << false
                                 << QString();
    QTest::newRow("syncthing copy")
        << u"Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs << false << QString();
    QTest::newRow("nextcloud copy")
        << u"Song (conflicted copy 2026-11-21 101530).lgrdi"_qs << false << QString();
    QTest::newRow("dropbox copy") << u"Song (Name's conflicted copy 2026-11-21).lgrdi"_qs << false
                                  << QString();
    QTest::newRow("copy placeholder")
        << u".Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi.icloud"_qs << false << QString();
    QTest::newRow("parentheses in a name")
        << u"Song (live).lgrdi"_qs << true << u"Song (live).lgrdi"_qs;
}

void TestStorage::entryNames()
{
    QFETCH(QString, entry);
    QFETCH(bool, isTab);
    QFETCH(QString, tabPath);
    QCOMPARE(TabFileNames::isTabEntryName(entry), isTab);
    if (isTab || !tabPath.isEmpty())
        QCOMPARE(TabFileNames::tabPathForEntry(entry), tabPath);
}

void TestStorage::conflictCopyNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("origin");
    QTest::addColumn<QDateTime>("date");
    QTest::newRow("syncthing") << u"Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs
                               << u"Song.lgrdi"_qs
                               << QDateTime(QDate(2026, 11, 21), QTime(10, 15, 30));
    QTest::newRow("nextcloud") << u"Song (conflicted copy 2026-11-21 101530).lgrdi"_qs
                               << u"Song.lgrdi"_qs
                               << QDateTime(QDate(2026, 11, 21), QTime(10, 15, 30));
    QTest::newRow("dropbox") << u"Song (Name's conflicted copy 2026-11-21).lgrdi"_qs
                             << u"Song.lgrdi"_qs << QDateTime(QDate(2026, 11, 21), QTime(0, 0));
    QTest::newRow("dropbox second")
        << u"My Song (Ann's conflicted copy 2026-11-21 (1)).lgrdi"_qs << u"My Song.lgrdi"_qs
        << QDateTime(QDate(2026, 11, 21), QTime(0, 0));
    QTest::newRow("owncloud") << u"Song_conflict-20261121-101530.lgrdi"_qs << u"Song.lgrdi"_qs
                              << QDateTime(QDate(2026, 11, 21), QTime(10, 15, 30));
    QTest::newRow("not a copy") << u"Song (conflicted).lgrdi"_qs << QString() << QDateTime();
    QTest::newRow("short device id")
        << u"Song.sync-conflict-20261121-101530-ABC.lgrdi"_qs << QString() << QDateTime();
}

void TestStorage::conflictCopyNames()
{
    QFETCH(QString, name);
    QFETCH(QString, origin);
    QFETCH(QDateTime, date);
    const auto found = FileVersion::conflictCopyOrigin(name);
    QCOMPARE(found.has_value(), !origin.isEmpty());
    if (found) {
        QCOMPARE(found->fileName, origin);
        QCOMPARE(found->nameDate.value_or(QDateTime()), date);
    }
    // Our own copies are read back by the same rules.
    const QString own =
        FileVersion::newConflictCopyPath(u"/x/Song.lgrdi"_qs, QDateTime::currentDateTime());
    QCOMPARE(FileVersion::conflictCopyOrigin(QFileInfo(own).fileName())->fileName,
             u"Song.lgrdi"_qs);
}

void TestStorage::storageLocation()
{
    SavedData &settings = SavedData::shared();
    const QString local = QDir(AppPaths::documentDirectory()).filePath(u"Local"_qs);

    // First start with no synced folder: local storage, and that is recorded.
    iCloudManager &cloud = iCloudManager::shared();
    QVERIFY(!cloud.iCloudContainerUrl);
    cloud.findCloudContainer();
    QVERIFY(!cloud.currentiCloudToken);
    QCOMPARE(cloud.iCloudContainerUrl, local);
    QVERIFY(QFileInfo(local).isDir());
    QVERIFY(settings.icloudOff);
    SavedData::resetShared();
    QVERIFY(SavedData::shared().icloudOff);

    // A synced folder appearing later doesn't move the tabs by itself, but the key-value
    // store goes along with it.
    const QString synced = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"Sync"_qs);
    QVERIFY(QDir().mkpath(synced));
    SavedData::shared().cloudFolder = synced;
    SavedData::shared().save();
    QSignalSpy settled(&cloud, &iCloudManager::containerSettled);
    cloud.iCloudAccountAvailabilityChanged();
    QCOMPARE(cloud.currentiCloudToken, synced);
    QVERIFY(!cloud.retrievingCloudContainer);
    QCOMPARE(cloud.iCloudContainerUrl, local);
    QCOMPARE(CloudKeyValueStore::shared().folder(), synced);

    // The user's switch: the search runs on a worker and settles on "Documents".
    SavedData::shared().icloudOff = false;
    settled.clear();
    cloud.findCloudContainer();
    QVERIFY(cloud.retrievingCloudContainer);
    QTRY_COMPARE(settled.size(), 1);
    QVERIFY(!cloud.retrievingCloudContainer);
    QCOMPARE(cloud.iCloudContainerUrl, QDir(synced).filePath(u"Documents"_qs));
    QVERIFY(!SavedData::shared().icloudOff);

    // The synced folder going away drops to local storage and records it.
    QVERIFY(QDir(synced).removeRecursively());
    settled.clear();
    cloud.iCloudAccountAvailabilityChanged();
    QVERIFY(!cloud.currentiCloudToken);
    QCOMPARE(cloud.iCloudContainerUrl, local);
    QVERIFY(SavedData::shared().icloudOff);
    QCOMPARE(CloudKeyValueStore::shared().folder(), AppPaths::libraryDirectory());
}

LUTEGRID_TEST_MAIN(TestStorage)
#include "tst_storage.moc"
