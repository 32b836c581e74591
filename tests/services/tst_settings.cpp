#include "model/keyedarchive.h"
#include "services/cloudkeyvaluestore.h"
#include "services/saveddata.h"

#include "handmadeplist.h"
#include "testfiles.h"
#include "testmain.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <memory>

namespace {

const QString cloudKey = u"custchords"_qs;

ChordShortcut custom(const QString &name, qint64 fret = 0)
{
    return ChordShortcut{name, QList<ColumnItemType>(6, ColumnItemType::note(fret)), true};
}

template <typename Chord> QStringList namesOf(const QList<Chord> &chords)
{
    QStringList names;
    for (const Chord &chord : chords)
        names.append(chord.name);
    return names;
}

// A keyed archive whose object holds a key with a NUL in it: libplist stops the program when
// it meets such a key, so the reader must never hand one over.
QByteArray archiveWithNulKey(bool inTop)
{
    HandMadePlist plist;
    plist.add(HandMadePlist::dict({1, 3, 5}, {2, 4, 6}));
    plist.add(HandMadePlist::ascii("$archiver"));
    plist.add(HandMadePlist::ascii("NSKeyedArchiver"));
    plist.add(HandMadePlist::ascii("$top"));
    plist.add(inTop ? HandMadePlist::dict({7}, {8}) : HandMadePlist::dict({9}, {10}));
    plist.add(HandMadePlist::ascii("$objects"));
    plist.add(HandMadePlist::array({11, 12}));
    plist.add(HandMadePlist::utf16(u"b\u00e4\u0000d"_qs));
    plist.add(HandMadePlist::yes());
    plist.add(HandMadePlist::ascii("root"));
    plist.add(HandMadePlist::uid(1));
    plist.add(HandMadePlist::ascii("$null"));
    plist.add(HandMadePlist::dict({7}, {8}));
    return plist.data(0);
}

} // namespace

class TestSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>(
            QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"settingsXXXXXX"_qs));
        QVERIFY(folder->isValid());
        cloud = std::make_unique<CloudKeyValueStore>(folder->filePath(u"cloud"_qs));
    }

    void cleanup()
    {
        cloud.reset();
        folder.reset();
    }

    void anAbsentFileGivesTheStartValuesAndIsWrittenByKey()
    {
        SavedData settings(dataPath(), cloud.get());
        QCOMPARE(settings.defaultStringCount, 6);
        QVERIFY(settings.saveCustomChordsLocally);
        QVERIFY(!settings.recentChords);
        QVERIFY(!settings.customChordShortcuts);
        QVERIFY(!settings.lastReviewRequestDate);
        QVERIFY(!settings.hideColHeaders);
        QCOMPARE(settings.lastFretCount, 0);
        QCOMPARE(settings.tabTagFileURL, folder->filePath(u"tabtag.plist"_qs));
        QVERIFY(!QFile::exists(dataPath()));

        // Saved, the file uses the keys of the settings table.
        settings.hideColHeaders = true;
        settings.defaultStringCount = 5;
        settings.save();
        const auto top = KeyedUnarchiver::unarchivedTopLevel(readFile(dataPath()));
        QVERIFY(top);
        // The key says the opposite of the field: stored true means hidden.
        QCOMPARE(top->value(u"showcolheaderskey").type(), ArchiveValue::Type::Bool);
        QVERIFY(top->value(u"showcolheaderskey").toBool());
        QCOMPARE(top->value(u"defaultstringcountkey").toInteger(), 5);
        // Empty and absent lists and dates are not written at all.
        QVERIFY(!top->contains(u"rcsck"));
        QVERIFY(!top->contains(u"ccsck"));
        QVERIFY(!top->contains(u"lastrrtKey"));
        const QStringList keys{u"firsttabkey"_qs,        u"tabcreatecountkey"_qs,
                               u"icloudakey"_qs,         u"notk"_qs,
                               u"hasturnedicloudoff"_qs, u"lastfretcountkey"_qs,
                               u"autocursoramntkey"_qs,  u"playsoundskey"_qs,
                               u"flashnavkey"_qs,        u"freescrollkey"_qs,
                               u"appearancekey"_qs,      u"toolsseenkey"_qs};
        for (const QString &key : keys)
            QVERIFY2(top->contains(key), qPrintable(key));
    }

    void aFileFromBeforeAKeyExistedReadsZero()
    {
        writeFile(dataPath(), KeyedArchiver::archivedDataKeyedDirectly(
                                  {{u"firsttabkey"_qs, ArchiveValue::fromBool(true)},
                                   {u"lastrrtKey"_qs, ArchiveValue::fromReal(0.0)}}));
        const SavedData settings(dataPath(), cloud.get());
        QVERIFY(settings.createdFirstTab);
        QCOMPARE(settings.defaultStringCount, 0);
        // A stored 0 is no date.
        QVERIFY(!settings.lastReviewRequestDate);
        QVERIFY(settings.saveCustomChordsLocally);
    }

    void everyFieldSurvivesSaveAndLoad()
    {
        const QList<bool SavedData::*> flags{
            &SavedData::createdFirstTab, &SavedData::icloudOff,
            &SavedData::notesOnTab,      &SavedData::hasTurnedICloudOff,
            &SavedData::playSounds,      &SavedData::disableFlashNavArrows,
            &SavedData::hideColHeaders,  &SavedData::freeScrollSetting,
            &SavedData::toolsMarkedSeen};
        const QList<std::pair<qint64 SavedData::*, qint64>> counts{
            {&SavedData::tabCreateCount, 17},
            {&SavedData::lastFretCount, 24},
            {&SavedData::autoCursorAmount, 2},
            {&SavedData::defaultStringCount, 7},
            {&SavedData::appearanceSetting, 2}};
        // Names with a NUL in them: the text past it must survive too.
        const ChordShortcut mine = custom(u"Mi\u0000ne"_qs, 3);
        const QList<RecentChord> recent{
            {u"A\u0000m"_qs, false}, {mine.name, true}, {u"\u0000"_qs, true}};
        {
            SavedData settings(dataPath(), cloud.get());
            for (const auto flag : flags)
                settings.*flag = true;
            for (const auto &[field, value] : counts)
                settings.*field = value;
            settings.recentChords = recent;
            settings.customChordShortcuts = QList<ChordShortcut>{mine};
            settings.lastReviewRequestDate = 1'790'000'000.5;
            // Run-only fields are not stored.
            settings.toolsMarkedSeenTemporary = true;
            settings.tagMapLoaded = true;
            settings.save();
        }
        const SavedData loaded(dataPath(), cloud.get());
        for (qsizetype i = 0; i < flags.size(); ++i)
            QVERIFY2(loaded.*flags[i], qPrintable(u"flag %1"_qs.arg(i)));
        for (const auto &[field, value] : counts)
            QCOMPARE(loaded.*field, value);
        QCOMPARE(loaded.recentChords, recent);
        QCOMPARE(loaded.customChordShortcuts, QList<ChordShortcut>{mine});
        QCOMPARE(loaded.customChordShortcuts->first().colItems, mine.colItems);
        QCOMPARE(loaded.lastReviewRequestDate, std::optional<double>(1'790'000'000.5));
        QVERIFY(!loaded.toolsMarkedSeenTemporary);
        QVERIFY(!loaded.tagMapLoaded);
        // The local chords were the only copy, so this start pushed them to the cloud.
        QVERIFY(loaded.saveCustomChordsLocally);
        QCOMPARE(namesOf(loaded.loadCloudCustomChords()), QStringList{mine.name});
    }

    void recentChordsMoveToTheFront()
    {
        SavedData settings(dataPath(), cloud.get());
        for (int i = 1; i <= 10; ++i)
            QVERIFY(settings.addRecentChord(ChordShortcut{u"C%1"_qs.arg(i), {}, false}));
        QCOMPARE(settings.recentChords->size(), 10);
        QCOMPARE(settings.recentChords->first().name, u"C10"_qs);

        // A new chord: still ten, the oldest gone.
        QVERIFY(settings.addRecentChord(ChordShortcut{u"New"_qs, {}, false}));
        QCOMPARE(settings.recentChords->size(), 10);
        QCOMPARE(settings.recentChords->first().name, u"New"_qs);
        QVERIFY(!namesOf(*settings.recentChords).contains(u"C1"_qs));

        // Already first: no change.
        const QList<RecentChord> before = *settings.recentChords;
        QVERIFY(!settings.addRecentChord(ChordShortcut{u"New"_qs, {}, false}));
        QCOMPARE(*settings.recentChords, before);

        // From place 5 to the front, the length unchanged.
        const QString fifth = settings.recentChords->at(4).name;
        QVERIFY(settings.addRecentChord(ChordShortcut{fifth, {}, false}));
        QCOMPARE(settings.recentChords->size(), 10);
        QCOMPARE(settings.recentChords->first().name, fifth);
        QCOMPARE(namesOf(*settings.recentChords).count(fifth), 1);
        QCOMPARE(settings.recentChords->mid(1, 4), before.mid(0, 4));
        QCOMPARE(settings.recentChords->mid(5), before.mid(5));

        // The user's chord of the same name is another chord.
        QVERIFY(settings.addRecentChord(ChordShortcut{fifth, {}, true}));
        QCOMPARE(namesOf(*settings.recentChords).count(fifth), 2);
        // Adding never writes by itself.
        QVERIFY(!QFile::exists(dataPath()));
    }

    void customChordsKeepFifty()
    {
        SavedData settings(dataPath(), cloud.get());
        for (int i = 1; i <= 50; ++i)
            settings.saveCustomChord(custom(u"Chord%1"_qs.arg(i)));
        QCOMPARE(settings.customChordShortcuts->size(), 50);
        settings.addRecentChord(custom(u"Chord1"_qs));
        settings.addRecentChord(ChordShortcut{u"Chord1"_qs, {}, false});
        settings.save();

        settings.saveCustomChord(custom(u"Chord51"_qs));
        QCOMPARE(settings.customChordShortcuts->size(), 50);
        QCOMPARE(settings.customChordShortcuts->first().name, u"Chord51"_qs);
        QVERIFY(!namesOf(*settings.customChordShortcuts).contains(u"Chord1"_qs));
        // The dropped chord leaves the recent list; the library chord of that name stays.
        QCOMPARE(*settings.recentChords, (QList<RecentChord>{{u"Chord1"_qs, false}}));

        // Both lists were stored: the file and the cloud.
        const SavedData reloaded(dataPath(), nullptr);
        QCOMPARE(*reloaded.recentChords, (QList<RecentChord>{{u"Chord1"_qs, false}}));
        QCOMPARE(reloaded.customChordShortcuts->size(), 50);
        QCOMPARE(settings.loadCloudCustomChords().size(), 50);
        QCOMPARE(settings.loadCloudCustomChords().first().name, u"Chord51"_qs);
    }

    void editingTheNewestChordReplacesIt()
    {
        SavedData settings(dataPath(), cloud.get());
        settings.saveCustomChord(custom(u"Old"_qs));
        settings.saveCustomChord(custom(u"Mine"_qs, 2));
        settings.saveCustomChord(custom(u"Mine"_qs, 5));
        QCOMPARE(namesOf(*settings.customChordShortcuts), (QStringList{u"Mine"_qs, u"Old"_qs}));
        QCOMPARE(settings.customChordShortcuts->first().colItems.first(), ColumnItemType::note(5));
        QCOMPARE(settings.loadCloudCustomChords().first().colItems.first(),
                 ColumnItemType::note(5));

        settings.addRecentChord(custom(u"Old"_qs));
        settings.deleteCustomChord(custom(u"Old"_qs));
        QCOMPARE(namesOf(*settings.customChordShortcuts), QStringList{u"Mine"_qs});
        QVERIFY(settings.recentChords->isEmpty());
        QCOMPARE(namesOf(settings.loadCloudCustomChords()), QStringList{u"Mine"_qs});
    }

    void theCloudCopyWins()
    {
        saveLocalChord(u"Local"_qs);
        cloud->setObject(QVariantList{custom(u"Cloud"_qs, 4).archivedData()}, cloudKey);

        SavedData settings(dataPath(), cloud.get());
        QCOMPARE(namesOf(*settings.customChordShortcuts), QStringList{u"Cloud"_qs});
        QVERIFY(settings.customChordShortcuts->first().isCustom);
        QVERIFY(!settings.saveCustomChordsLocally);

        // Local chords are not written any more, not even after a change.
        settings.saveCustomChord(custom(u"Another"_qs));
        settings.save();
        const auto top = KeyedUnarchiver::unarchivedTopLevel(readFile(dataPath()));
        QVERIFY(top);
        QVERIFY(!top->contains(u"ccsck"));
        QCOMPARE(namesOf(settings.loadCloudCustomChords()),
                 (QStringList{u"Another"_qs, u"Cloud"_qs}));
    }

    void theChordBarTakesTheListAnotherMachineSynced()
    {
        SavedData settings(dataPath(), cloud.get());
        settings.customChordShortcuts = QList<ChordShortcut>{custom(u"Local"_qs)};
        QCOMPARE(namesOf(settings.currentCustomChords()), QStringList{u"Local"_qs});

        // Archived chords come back unmarked; the list they join marks them as the user's.
        ChordShortcut synced = custom(u"Synced"_qs, 2);
        synced.isCustom = false;
        settings.storeCloudCustomChords({synced});
        const QList<ChordShortcut> current = settings.currentCustomChords();
        QCOMPARE(namesOf(current), QStringList{u"Synced"_qs});
        QVERIFY(current.first().isCustom);
        QCOMPARE(namesOf(*settings.customChordShortcuts), QStringList{u"Synced"_qs});
    }

    void aCloudEntryThatDoesNotDecodeEmptiesTheCloudList_data()
    {
        QTest::addColumn<QVariant>("badEntry");
        QTest::newRow("garbage data") << QVariant(QByteArray("not an archive"));
        QTest::newRow("no data") << QVariant(u"Cloud"_qs);
        QTest::newRow("archive of another kind")
            << QVariant(KeyedArchiver::archivedData(RecentChord{u"X"_qs, true}.toArchiveValue()));
        QTest::newRow("NUL in a key") << QVariant(archiveWithNulKey(false));
    }

    void aCloudEntryThatDoesNotDecodeEmptiesTheCloudList()
    {
        QFETCH(QVariant, badEntry);
        saveLocalChord(u"Local"_qs);
        cloud->setObject(QVariantList{custom(u"Cloud"_qs).archivedData(), badEntry}, cloudKey);

        const SavedData settings(dataPath(), cloud.get());
        QCOMPARE(namesOf(*settings.customChordShortcuts), QStringList{u"Local"_qs});
        QVERIFY(settings.saveCustomChordsLocally);
        // The local list went to the cloud in place of the broken one.
        QCOMPARE(namesOf(settings.loadCloudCustomChords()), QStringList{u"Local"_qs});
    }

    void anUnreadableFileStartsOver_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<qint64>("stringCount");
        QByteArray noise(2048, '\0');
        QRandomGenerator random(3);
        random.fillRange(reinterpret_cast<quint32 *>(noise.data()), noise.size() / 4);
        QTest::newRow("noise") << noise << qint64(6);
        QTest::newRow("empty") << QByteArray() << qint64(6);
        QTest::newRow("text") << QByteArray("defaultstringcountkey = 8") << qint64(6);
        const QByteArray archive = KeyedArchiver::archivedDataKeyedDirectly(
            {{u"defaultstringcountkey"_qs, ArchiveValue::fromInteger(8)}});
        QTest::newRow("truncated archive") << archive.left(archive.size() - 10) << qint64(6);
        QTest::newRow("NUL in a key") << archiveWithNulKey(true) << qint64(6);
        // An archive, but with none of the keys: every one reads as 0.
        QTest::newRow("archive of an object")
            << KeyedArchiver::archivedData(RecentChord{u"X"_qs, true}.toArchiveValue())
            << qint64(0);
    }

    void anUnreadableFileStartsOver()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(qint64, stringCount);
        writeFile(dataPath(), bytes);
        SavedData settings(dataPath(), cloud.get());
        QVERIFY(!settings.createdFirstTab);
        QCOMPARE(settings.defaultStringCount, stringCount);
        QVERIFY(!settings.recentChords);
        settings.defaultStringCount = 8;
        settings.save();
        QCOMPARE(SavedData(dataPath(), cloud.get()).defaultStringCount, 8);
    }

private:
    QString dataPath() const { return folder->filePath(u"data.plist"_qs); }
    // As a start without the cloud leaves the file.
    void saveLocalChord(const QString &name)
    {
        SavedData settings(dataPath(), nullptr);
        settings.customChordShortcuts = QList<ChordShortcut>{custom(name)};
        settings.save();
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<CloudKeyValueStore> cloud;
};

LUTEGRID_TEST_MAIN(TestSettings)
#include "tst_settings.moc"
