#include "export/asciitabreader.h"
#include "export/musicxml.h"
#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "shell/tabbackup.h"
#include "shell/tablistoperations.h"
#include "tablisting.h"
#include "testfiles.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>

namespace {

QString storage()
{
    return *iCloudManager::shared().iCloudContainerUrl;
}

QString deletedFolder()
{
    return *AppManager::shared().deletedFolderUrl();
}

TabData tabWithFret(const QString &title, qint64 fret, int rows = 1)
{
    TabData tab(title, 6);
    for (int r = 0; r < rows; ++r)
        tab.tabRowDatas.append(TabRowData(16, 6));
    tab.tabRowDatas[0].colDatas[0].setColumnItem(1, ColumnItemType::note(fret));
    return tab;
}

void writeTab(const QString &folder, const QString &name, qint64 fret = 3)
{
    writeFile(QDir(folder).filePath(name + u".lgrdi"_qs),
              documentData(tabWithFret(name, fret)));
}

TabUrlInfo entry(const QString &fileName)
{
    return TabUrlInfo{fileName, TabFileNames::tabPathForEntry(fileName), std::nullopt, {}};
}

std::optional<qint64> fretOf(const QString &path)
{
    const auto tab = tabDataFromDocumentData(readFile(path));
    if (!tab)
        return std::nullopt;
    return tab->tabRowDatas[0].colDatas[0].columnItems[1].fret();
}

// Whether any column of the tab holds `fret` on `string`.
bool hasNote(const TabData &tab, int string, qint64 fret)
{
    for (const TabRowData &row : tab.tabRowDatas) {
        for (const auto &col : row.colDatas) {
            if (string < col.columnItems.size() && col.columnItems[string].fret() == fret)
                return true;
        }
    }
    return false;
}

} // namespace

// The list's file operations on real files in LUTEGRID_HOME: delete and restore, rename and
// copy, import of good and bad files, and the back-up archive read back by another reader.
class TestTabLibrary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        iCloudManager::shared().findCloudContainer();
        QVERIFY(iCloudManager::shared().iCloudContainerUrl);
    }

    void init()
    {
        QDir(storage()).removeRecursively();
        QDir().mkpath(storage());
        AppManager::shared().activeDocUrls.clear();
        SavedData::shared().localTagMap = TabTagStore::TagMap();
        SavedData::shared().tagMapLoaded = true;
    }

    void deleteAndRestore()
    {
        AppManager &manager = AppManager::shared();
        writeTab(storage(), u"Song"_qs, 5);
        manager.setTabTags(u"Song"_qs, {u"Blues"_qs});
        QVERIFY(!TabListOperations::deleteTab(entry(u"Song.lgrdi"_qs), storage(), false));
        QVERIFY(!QFile::exists(QDir(storage()).filePath(u"Song.lgrdi"_qs)));
        QCOMPARE(listedTabs(deletedFolder()), QStringList{u"Song.lgrdi"_qs});
        // Deleting forgets the labels: the folder has gone with its last tab.
        QVERIFY(manager.allTagNames().isEmpty());

        // The same name again: "^" makes room once; a third is refused and the tab stays.
        writeTab(storage(), u"Song"_qs, 6);
        QVERIFY(!TabListOperations::deleteTab(entry(u"Song.lgrdi"_qs), storage(), false));
        writeTab(storage(), u"Song"_qs, 7);
        QCOMPARE(TabListOperations::deleteTab(entry(u"Song.lgrdi"_qs), storage(), false),
                 u"Failed in deleting Song."_qs);
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Song.lgrdi"_qs)), 7);
        QCOMPARE(fretOf(QDir(deletedFolder()).filePath(u"^Song.lgrdi"_qs)), 6);

        // Restoring onto a name in use is refused; once free, the content comes back.
        QCOMPARE(TabListOperations::restoreTab(entry(u"Song.lgrdi"_qs), deletedFolder()),
                 u"Could not restore Song. Another tab already exists with that name."_qs);
        QFile::remove(QDir(storage()).filePath(u"Song.lgrdi"_qs));
        QVERIFY(!TabListOperations::restoreTab(entry(u"Song.lgrdi"_qs), deletedFolder()));
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Song.lgrdi"_qs)), 5);
        QVERIFY(manager.currentTagMap().value(u"Song"_qs).isEmpty());

        // Permanently, from the Deleted list, then the rest with Clear.
        writeTab(deletedFolder(), u"Other"_qs);
        QVERIFY(!TabListOperations::deleteTab(entry(u"^Song.lgrdi"_qs), deletedFolder(), true));
        QCOMPARE(listedTabs(deletedFolder()), QStringList{u"Other.lgrdi"_qs});
        QVERIFY(!TabListOperations::emptyDeletedFolder());
        QVERIFY(listedTabs(deletedFolder()).isEmpty());
    }

    void aPlaceholderCannotBeMoved()
    {
        // A synced file not yet here: its document can't open it, and nothing moves.
        writeFile(QDir(storage()).filePath(u".Far.lgrdi.icloud"_qs), "placeholder");
        QCOMPARE(TabListOperations::deleteTab(entry(u".Far.lgrdi.icloud"_qs), storage(), false),
                 u"Failed to delete Far."_qs);
        QCOMPARE(TabListOperations::updateTabInfo(storage(), u"Far.lgrdi"_qs, u"Near"_qs, false, {}),
                 u"Failed to rename tab"_qs);
        QCOMPARE(TabListOperations::updateTabInfo(storage(), u"Far.lgrdi"_qs, u"Near"_qs, true, {}),
                 u"Failed to duplicate tab"_qs);
        QVERIFY(QFile::exists(QDir(storage()).filePath(u".Far.lgrdi.icloud"_qs)));
    }

    void renameAndDuplicate()
    {
        AppManager &manager = AppManager::shared();
        writeTab(storage(), u"Song"_qs, 4);
        writeTab(storage(), u"Taken"_qs, 9);
        manager.setTabTags(u"Song"_qs, {u"Jazz"_qs});

        QCOMPARE(TabListOperations::updateTabInfo(storage(), u"Song.lgrdi"_qs, u"Taken"_qs, false,
                                                  {u"Jazz"_qs}),
                 u"A tab with that name already exists"_qs);
        QCOMPARE(TabListOperations::updateTabInfo(storage(), u"Song.lgrdi"_qs, u"Taken"_qs, true,
                                                  {u"Jazz"_qs}),
                 u"A tab with that name already exists"_qs);
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Taken.lgrdi"_qs)), 9);
        QCOMPARE(TabListOperations::updateTabInfo(std::nullopt, u"Song.lgrdi"_qs, u"X"_qs, false, {}),
                 u"Unable to retrieve tabs. Please refresh list."_qs);

        QVERIFY(!TabListOperations::updateTabInfo(storage(), u"Song.lgrdi"_qs, u"Tune"_qs, false,
                                                  {u"Jazz"_qs, u"Live"_qs}));
        QCOMPARE(listedTabs(storage()), (QStringList{u"Taken.lgrdi"_qs, u"Tune.lgrdi"_qs}));
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Tune.lgrdi"_qs)), 4);
        QCOMPARE(manager.currentTagMap().value(u"Tune"_qs), (QStringList{u"Jazz"_qs, u"Live"_qs}));
        QVERIFY(!manager.currentTagMap().contains(u"Song"_qs));

        // The copy gets the dialog's labels; the source keeps its own.
        QVERIFY(!TabListOperations::updateTabInfo(storage(), u"Tune.lgrdi"_qs, u"Tune 2"_qs, true,
                                                  {u"Demo"_qs}));
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Tune 2.lgrdi"_qs)), 4);
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Tune.lgrdi"_qs)), 4);
        QCOMPARE(manager.currentTagMap().value(u"Tune 2"_qs), QStringList{u"Demo"_qs});
        QCOMPARE(manager.currentTagMap().value(u"Tune"_qs), (QStringList{u"Jazz"_qs, u"Live"_qs}));

        // Labels alone.
        QVERIFY(!TabListOperations::updateTabInfo(storage(), u"Taken.lgrdi"_qs, std::nullopt,
                                                  false, {u"Live"_qs}));
        QCOMPARE(manager.allTagNames(), (QStringList{u"Demo"_qs, u"Jazz"_qs, u"Live"_qs}));
    }

    void renameFollowsTheDocument()
    {
        // A closed document of the old name is dropped: the next open reads the new file.
        AppManager &manager = AppManager::shared();
        writeTab(storage(), u"Old"_qs, 2);
        LutegridDocument *document = manager.documentFor(QDir(storage()).filePath(u"Old.lgrdi"_qs));
        QVERIFY(document->open());
        QVERIFY(!TabListOperations::updateTabInfo(storage(), u"Old.lgrdi"_qs, u"New"_qs, false, {}));
        // Open, it may not be taken from under its editor... but no editor holds it here.
        document->close();
        QVERIFY(!TabListOperations::updateTabInfo(storage(), u"New.lgrdi"_qs, u"Newer"_qs, false, {}));
        QVERIFY(!manager.activeDocUrls.contains(u"New.lgrdi"_qs));
        LutegridDocument *reopened = manager.documentFor(QDir(storage()).filePath(u"Newer.lgrdi"_qs));
        QVERIFY(reopened->open());
        QCOMPARE(reopened->tabData->tabRowDatas[0].colDatas[0].columnItems[1].fret(), 2);
        reopened->close();
    }

    void importGoodFile()
    {
        const QString source = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"a.b.lgrd"_qs);
        writeFile(source, *exchangeData(tabWithFret(u"Whatever"_qs, 8, 2)));
        QCOMPARE(TabListOperations::proposedImportName(source), u"a.b"_qs);
        QCOMPARE(TabListOperations::proposedImportName(u"/x/noext"_qs), u"Imported Tab"_qs);
        auto reading = TabListOperations::readImportFile(source);
        QVERIFY2(reading.tabData, qPrintable(reading.message));
        reading.tabData->title = u"Imported"_qs;
        QVERIFY(!TabListOperations::importTabData(storage(), *reading.tabData));
        QCOMPARE(fretOf(QDir(storage()).filePath(u"Imported.lgrdi"_qs)), 8);
        QCOMPARE(tabDataFromDocumentData(readFile(QDir(storage()).filePath(u"Imported.lgrdi"_qs)))
                     ->tabRowDatas.size(),
                 2);
        // Again under the same name: refused, the first stays.
        QCOMPARE(TabListOperations::importTabData(storage(), *reading.tabData),
                 u"That name is already taken"_qs);
    }

    // Plain-text tabs and MusicXML scores, told apart by extension, come in as tabs too.
    void importOtherForms_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QByteArray>("bytes");
        const TabData score = tabWithFret(u"Score"_qs, 5, 2);
        QTest::newRow("txt") << u"riff.txt"_qs
                             << QByteArray("Riff\n\ne|-------|\nB|---5---|\nG|-------|\n"
                                           "D|-------|\nA|-------|\nE|-------|\n");
        QTest::newRow("musicxml") << u"s1.musicxml"_qs << *MusicXml::write(score, false);
        QTest::newRow("mxl") << u"s2.mxl"_qs << *MusicXml::write(score, true);
        QTest::newRow("xml with a score root") << u"s3.XML"_qs << MusicXml::scoreXml(score);
    }

    void importOtherForms()
    {
        QFETCH(QString, fileName);
        QFETCH(QByteArray, bytes);
        const QString source = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(fileName);
        writeFile(source, bytes);
        QVERIFY(TabListOperations::importSuffixes().contains(QFileInfo(source).suffix().toLower()));
        auto reading = TabListOperations::readImportFile(source);
        QVERIFY2(reading.tabData, qPrintable(reading.message));
        QVERIFY(hasNote(*reading.tabData, 1, 5));
        reading.tabData->title = QFileInfo(source).completeBaseName();
        QVERIFY(!TabListOperations::importTabData(storage(), *reading.tabData));
        QVERIFY(QFile::exists(QDir(storage()).filePath(reading.tabData->title + u".lgrdi"_qs)));
    }

    void importBadShapes_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("detail");
        const QString notLgrd = u"Not a proper .lgrd file."_qs;
        QTest::newRow("wrong json") << u"w.lgrd"_qs << QByteArray(R"({"rows": 3})") << QString();
        QTest::newRow("not json") << u"n.lgrd"_qs << QByteArray("hello") << QString();
        QTest::newRow("keyed archive named .lgrd")
            << u"k.lgrd"_qs << documentData(tabWithFret(u"K"_qs, 1)) << QString();
        QTest::newRow("deep nesting") << u"d.lgrd"_qs
                                      << (QByteArray(10000, '[') + QByteArray(10000, ']'))
                                      << QString();
        QTest::newRow("upper-case extension")
            << u"u.LGRD"_qs << *exchangeData(tabWithFret(u"U"_qs, 1)) << notLgrd;
        QTest::newRow("document form") << u"t.lgrdi"_qs << documentData(tabWithFret(u"T"_qs, 1))
                                        << notLgrd;
        QTest::newRow("empty") << u"e.lgrd"_qs << QByteArray() << QString();
        // Other forms say what their own reader found wrong.
        QTest::newRow("junk txt") << u"j.txt"_qs << QByteArray("just some words\n\x01\xff")
                                  << AsciiTabReader::noTabMessage();
        QTest::newRow("xml but no score")
            << u"x.xml"_qs << QByteArray("<?xml version=\"1.0\"?><html/>")
            << u"Not a MusicXML score."_qs;
        QTest::newRow("junk musicxml") << u"j.musicxml"_qs << QByteArray("<score-partwise")
                                       << QString();
        QTest::newRow("junk mxl") << u"j.mxl"_qs << QByteArray("PK\x03\x04 broken") << QString();
    }

    void importBadShapes()
    {
        QFETCH(QString, fileName);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, detail);
        const QString source = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(fileName);
        writeFile(source, bytes);
        const auto reading = TabListOperations::readImportFile(source);
        QVERIFY(!reading.tabData);
        QVERIFY2(reading.message.startsWith(u"Import was unsuccessful.\n\n"_qs),
                 qPrintable(reading.message));
        if (!detail.isEmpty())
            QCOMPARE(reading.message, u"Import was unsuccessful.\n\n"_qs + detail);
        QVERIFY(listedTabs(storage()).isEmpty());
    }

    void importHugeFileAndFolder()
    {
        const QDir home(qEnvironmentVariable("LUTEGRID_HOME"));
        const QString huge = home.filePath(u"huge.lgrd"_qs);
        {
            QFile file(huge);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.resize(100LL * 1024 * 1024));
        }
        auto reading = TabListOperations::readImportFile(huge);
        QVERIFY(!reading.tabData);
        QVERIFY(reading.message.startsWith(u"Import was unsuccessful.\n\n"_qs));
        // Past the most any tab file may hold, it isn't even read.
        {
            QFile file(huge);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.resize(maximumTabFileBytes + 1));
        }
        reading = TabListOperations::readImportFile(huge);
        QCOMPARE(reading.message, u"Import was unsuccessful.\n\nThe file is too large to be a tab."_qs);
        QFile::remove(huge);

        const QString folder = home.filePath(u"folder.lgrd"_qs);
        QDir().mkpath(folder);
        reading = TabListOperations::readImportFile(folder);
        QVERIFY(!reading.tabData);
        QVERIFY(reading.message.startsWith(u"Import was unsuccessful.\n\n"_qs));
        reading = TabListOperations::readImportFile(home.filePath(u"missing.lgrd"_qs));
        QVERIFY(!reading.tabData);
    }

    void backupOfThirtyTabs()
    {
        AppManager &manager = AppManager::shared();
        QList<TabData> tabs;
        for (int i = 0; i < 30; ++i) {
            tabs.append(tabWithFret(u"Tab "_qs + QString::number(i), i % 20, 3));
            writeFile(QDir(storage()).filePath(tabs.last().title + u".lgrdi"_qs),
                      documentData(tabs.last()));
        }
        // One tab is open in another window until the first round is over.
        LutegridDocument *held = manager.documentFor(QDir(storage()).filePath(u"Tab 7.lgrdi"_qs));
        QVERIFY(held->open());

        int pdfs = 0;
        TabBackup backup(storage(), [&pdfs](const TabData &tab, const QString &path) {
            QFile file(path);
            ++pdfs;
            return file.open(QIODevice::WriteOnly) &&
                   file.write("%PDF-1.4\n% " + tab.title.toUtf8() + "\n%%EOF\n") > 0;
        });
        backup.retryDelay = 10;
        int rounds = 0;
        connect(&backup, &TabBackup::roundFinished, this, [&](int) {
            ++rounds;
            held->close();
        });
        QSignalSpy finished(&backup, &TabBackup::finished);
        QVERIFY(!backup.start());
        QCOMPARE(backup.goalExportCount, 30);
        QVERIFY(finished.wait(30000));
        QCOMPARE(finished.first().first().toString(), QString());
        QCOMPARE(rounds, 1);
        QCOMPARE(backup.successfulExportCount, 30);
        QVERIFY(backup.failedNames.isEmpty());
        QCOMPARE(pdfs, 30);
        QCOMPARE(backup.progress(), 1.0);
        QVERIFY(backup.resultText().contains(u"30 tabs exported"_qs));
        QVERIFY(backup.resultText().contains(u"😎 0 tabs failed to export"_qs));
        QCOMPARE(QFileInfo(backup.zipPath).fileName(), u"Lutegrid_Backup.zip"_qs);
        // The temporary folder is gone, the documents closed.
        QVERIFY(!QFileInfo::exists(*backup.archiveURL));
        QVERIFY(held->documentState().testFlag(LutegridDocument::Closed));

        // Read back by another zip reader.
        const QString python = QStandardPaths::findExecutable(u"python3"_qs);
        QVERIFY(!python.isEmpty());
        const QString extracted = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"unzipped"_qs);
        QProcess reader;
        reader.start(python, {u"-c"_qs, u"import sys, zipfile\n"
                                        "z = zipfile.ZipFile(sys.argv[1])\n"
                                        "assert z.testzip() is None\n"
                                        "z.extractall(sys.argv[2])\n"
                                        "print('\\n'.join(z.namelist()))\n"_qs,
                              backup.zipPath, extracted});
        QVERIFY(reader.waitForFinished(30000));
        QCOMPARE(reader.exitCode(), 0);
        const QStringList names = QString::fromUtf8(reader.readAllStandardOutput())
                                      .split(u'\n', Qt::SkipEmptyParts);
        const QString top = TabBackup::archiveFolderName(QDate::currentDate());
        QVERIFY(!top.contains(u'/'));
        QCOMPARE(names.size(), 61);
        QVERIFY(names.contains(top + u'/'));
        for (const TabData &tab : std::as_const(tabs)) {
            QVERIFY(names.contains(top + u'/' + tab.title + u".pdf"_qs));
            const QString lgrd = QDir(extracted).filePath(top + u'/' + tab.title + u".lgrd"_qs);
            const auto back = tabDataFromExchangeData(readFile(lgrd));
            QVERIFY2(back, qPrintable(lgrd));
            QCOMPARE(back->tabRowDatas, tab.tabRowDatas);
            QCOMPARE(back->stringNotes, tab.stringNotes);
        }
    }

    void backupCountsAHeldTabAsFailed()
    {
        writeTab(storage(), u"Free"_qs);
        writeTab(storage(), u"Held"_qs);
        LutegridDocument *held =
            AppManager::shared().documentFor(QDir(storage()).filePath(u"Held.lgrdi"_qs));
        QVERIFY(held->open());
        TabBackup backup(storage(), {});
        backup.retryDelay = 0;
        backup.maxRetries = 2;
        QSignalSpy finished(&backup, &TabBackup::finished);
        QVERIFY(!backup.start());
        QVERIFY(finished.wait(10000));
        QCOMPARE(backup.successfulExportCount, 1);
        QCOMPARE(backup.failedNames, QStringList{u"Held"_qs});
        QVERIFY(backup.resultText().contains(u"1 tabs failed to export:\nHeld"_qs));
        held->close();
    }

    void backupWithoutFolderOrTabs()
    {
        TabBackup none(std::nullopt, {});
        QCOMPARE(none.start(),
                 u"Unable to locate documents. Please check connection and try again."_qs);

        TabBackup empty(storage(), {});
        QSignalSpy finished(&empty, &TabBackup::finished);
        QVERIFY(!empty.start());
        QVERIFY(finished.wait(10000));
        QCOMPARE(empty.resultText(), u"0 tabs exported\n😎 0 tabs failed to export"_qs);
        QProcess reader;
        reader.start(u"unzip"_qs, {u"-l"_qs, empty.zipPath});
        QVERIFY(reader.waitForFinished(30000));
        QCOMPARE(reader.exitCode(), 0);
        QVERIFY(reader.readAllStandardOutput().contains("Backup_"));
    }

    void cancelWaitsForTheOpenTab()
    {
        for (int i = 0; i < 5; ++i)
            writeTab(storage(), u"C"_qs + QString::number(i));
        TabBackup backup(storage(), {});
        QSignalSpy cancelled(&backup, &TabBackup::cancelled);
        QVERIFY(!backup.start());
        // Step by step until a tab is open, then cancel.
        for (int turns = 0; !backup.aTabIsOpen && turns < 1000; ++turns)
            QCoreApplication::processEvents();
        QVERIFY(backup.aTabIsOpen);
        backup.cancel();
        QVERIFY(backup.waitingToCloseDialogAfterTabClose);
        QCOMPARE(cancelled.size(), 0);
        QVERIFY(cancelled.wait(5000));
        QVERIFY(!backup.aTabIsOpen);
        for (LutegridDocument *document : std::as_const(AppManager::shared().activeDocUrls))
            QVERIFY(document->documentState().testFlag(LutegridDocument::Closed));
        QVERIFY(!QFileInfo::exists(*backup.archiveURL));
    }
};

LUTEGRID_TEST_MAIN(TestTabLibrary)
#include "tst_tablibrary.moc"
