#include "library/lutegriddocument.h"
#include "library/tabtagstore.h"
#include "model/keyedarchive.h"
#include "model/plistvariant.h"
#include "model/tabfileformat.h"
#include "services/cloudkeyvaluestore.h"
#include "services/saveddata.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// Files from outside larger than their readers take are refused without being read: a sparse
// file of that size costs no disk, and reading it whole would cost the memory.
class ReadLimitsTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    // A file of `size` bytes that starts as a good file of its kind would.
    QString sparseFile(const QString &name, const QByteArray &start, qint64 size)
    {
        const QString path = dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(start) != start.size()
            || !file.resize(size))
            return QString();
        return path;
    }

private Q_SLOTS:
    void oversizedTabDocumentDoesNotOpen()
    {
        const QByteArray good = documentData(TabData(u"Big"_qs, 6));
        const QString path =
            sparseFile(u"Big.lgrdi"_qs, good, maximumTabFileBytes + 1);
        QVERIFY(!path.isEmpty());
        LutegridDocument document(path, std::nullopt);
        QVERIFY(!document.open());
        QVERIFY(!document.tabData);

        // At the limit a file is read, and damage past the tab makes it unreadable.
        QVERIFY(QFile::resize(path, good.size() + 1));
        LutegridDocument small(path, std::nullopt);
        QVERIFY(small.open());
        QVERIFY(small.close());
    }

    void oversizedSettingsLabelsAndStoreStartEmpty()
    {
        const QString cloudFolder = dir.filePath(u"cloud"_qs);
        QVERIFY(QDir().mkpath(cloudFolder));
        const QByteArray storeBytes =
            *CloudKeyValueStore::fileDataForValues({{u"k"_qs, qint64(5)}});
        QVERIFY(!sparseFile(u"cloud/"_qs + CloudKeyValueStore::fileName, storeBytes,
                            CloudKeyValueStore::maximumBytes + 1)
                     .isEmpty());
        CloudKeyValueStore cloud(cloudFolder);
        QVERIFY(!cloud.objectForKey(u"k"_qs).isValid());

        SavedData full(QString(), nullptr);
        full.defaultStringCount = 8;
        QVERIFY(!sparseFile(u"data.plist"_qs, full.fileData(), PlistVariant::maximumFileBytes + 1)
                     .isEmpty());
        SavedData settings(dir.filePath(u"data.plist"_qs), &cloud);
        QCOMPARE(settings.defaultStringCount, 6);

        const QByteArray labels = TabTagStore::localFileData({{u"Song"_qs, {u"Folk"_qs}}});
        QVERIFY(!sparseFile(u"tabtag.plist"_qs, labels, KeyedUnarchiver::maximumBytes + 1)
                     .isEmpty());
        settings.icloudOff = true;
        TabTagStore store(settings, cloud);
        QVERIFY(store.localTagMap().isEmpty());
    }

    void settingsBytesReadBackAsWritten()
    {
        SavedData written(QString(), nullptr);
        written.recentChords = QList<RecentChord>{{u"G"_qs, false}, {u"Mine"_qs, true}};
        written.customChordShortcuts =
            QList<ChordShortcut>{{u"Mine"_qs, {ColumnItemType::note(2)}, true}};
        written.cloudFolder = u"/sync"_qs;
        written.lastReviewRequestDate = 12.5;
        SavedData read(QString(), nullptr);
        read.readFileData(written.fileData());
        QCOMPARE(read.fileData(), written.fileData());
        QCOMPARE(read.cloudFolder, written.cloudFolder);
        // Past the limit the bytes are not looked at: the fields stay as they were.
        QByteArray tooLarge = written.fileData();
        tooLarge.resize(PlistVariant::maximumFileBytes + 1);
        SavedData untouched(QString(), nullptr);
        untouched.readFileData(tooLarge);
        QVERIFY(!untouched.cloudFolder);
    }
};

LUTEGRID_TEST_MAIN(ReadLimitsTest)
#include "tst_readlimits.moc"
