#include "analyticscapture.h"
#include "library/fileversion.h"
#include "library/lutegriddocument.h"
#include "library/tabedits.h"
#include "library/tabfilenames.h"
#include "model/tabfileformat.h"
#include "services/lgundomanager.h"
#include "testmain.h"
#include "undocounter.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <filesystem>
#include <memory>

namespace {

QString home()
{
    return qEnvironmentVariable("LUTEGRID_HOME");
}

// A fresh folder per test, so that conflict copies of one test don't meet another's file.
QString freshFolder(const QString &name)
{
    const QString folder = QDir(home()).filePath(u"docs/"_qs + name);
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    return folder;
}

TabData tabWithNote(int fret, int rows = 1)
{
    TabData tab(u"Tab"_qs, 6);
    tab.tabRowDatas = QList<TabRowData>(rows, TabRowData(16, 6));
    tab.tabRowDatas[0].colDatas[0].setColumnItem(0, ColumnItemType::note(fret));
    return tab;
}

// A change made in the editor, which the document is told of.
void edit(LutegridDocument &document, int fret)
{
    document.tabData = tabWithNote(fret);
    document.updateChangeCount(LutegridDocument::ChangeKind::Done);
}

bool inConflict(const LutegridDocument &document)
{
    return document.documentState().testFlag(LutegridDocument::InConflict);
}

int firstFret(const TabData &tab)
{
    const ColumnItemType item = tab.tabRowDatas.value(0).colDatas.value(0).columnItems.value(0);
    return item.isNote() ? int(item.fret()) : -1;
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

bool writeTab(const QString &path, int fret, int rows = 1)
{
    return writeFile(path, documentData(tabWithNote(fret, rows)));
}

std::optional<TabData> readTab(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return tabDataFromDocumentData(file.readAll());
}

struct Listener : DocumentChangeListener {
    int reloads = 0;
    int conflicts = 0;
    qsizetype lastVersionCount = -1;
    std::optional<TabData> reloaded;

    void documentConflictDetected(const std::optional<QList<FileVersion>> &versions) override
    {
        ++conflicts;
        lastVersionCount = versions ? versions->size() : -1;
    }
    void documentReloaded(const TabData &tabData) override
    {
        ++reloads;
        reloaded = tabData;
    }
};

} // namespace

class TestDocument : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { previousHandler = qInstallMessageHandler(captureAnalytics); }

    // The change count follows the undo manager: what was saved, undone past or redone.
    void changeCountFollowsUndo()
    {
        const QString path = QDir(home()).filePath(u"Count.lgrdi"_qs);
        LutegridDocument document(path, TabData(u"Count"_qs, 6));
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        QCOMPARE(document.changeCount(), 0);
        Counter model{document.undoManager(), {0, 0}};

        model.set(0, 1);
        model.set(1, 1);
        QCOMPARE(document.changeCount(), 0); // the group is not complete yet
        QCoreApplication::processEvents();
        QCOMPARE(document.changeCount(), 1);
        document.undoManager()->undo();
        QCOMPARE(document.changeCount(), 0);
        QVERIFY(!document.hasUnsavedChanges());
        document.undoManager()->redo();
        QCOMPARE(document.changeCount(), 1);

        // Saved, then undone past the saved state: unsaved again, in the other direction.
        QVERIFY(document.autosave());
        QCOMPARE(document.changeCount(), 0);
        document.undoManager()->undo();
        QCOMPARE(document.changeCount(), -1);
        QVERIFY(document.hasUnsavedChanges());
        document.updateChangeCount(LutegridDocument::ChangeKind::Done); // the tempo, no undo step
        QCOMPARE(document.changeCount(), 0);
        QVERIFY(document.close());
    }

    // Edits change the document's own rows: its autosave writes them with an editor open or
    // closed, and asks the editor for nothing.
    void saveWritesWhatWasEdited()
    {
        const QString path = QDir(freshFolder(u"save"_qs)).filePath(u"Song.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(3));
        document.autosaveDelay = 60000;
        document.autosaveMaximumDelay = 60000;
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        QCOMPARE(firstFret(*readTab(path)), 3);

        // No editor.
        TabEdits *edits = document.edits();
        QVERIFY(edits->setColumnItem(0, 0, 0, ColumnItemType::note(7)));
        QCoreApplication::processEvents(); // the step's group closes and marks the change
        QVERIFY(document.hasUnsavedChanges());
        QVERIFY(document.autosave());
        QCOMPARE(firstFret(*readTab(path)), 7);

        // An editor open: the same rows, the same save, and no call to it.
        Listener listener;
        document.changeListener = &listener;
        QVERIFY(edits->insertTabRow(1, TabRowData(16, 6)));
        QVERIFY(edits->setColumnItem(1, 2, 5, ColumnItemType::note(12)));
        QCoreApplication::processEvents();
        QCOMPARE(document.changeCount(), 1);
        QVERIFY(document.autosave());
        auto saved = readTab(path);
        QCOMPARE(saved->tabRowDatas.size(), 2);
        QCOMPARE(saved->tabRowDatas[1].colDatas[2].columnItems[5], ColumnItemType::note(12));
        QCOMPARE(saved->tabRowDatas, document.tabData->tabRowDatas);
        // Undone past the save, the older rows are unsaved work in their turn.
        document.undoManager()->undo();
        QVERIFY(document.hasUnsavedChanges());
        QVERIFY(document.autosave());
        saved = readTab(path);
        QCOMPARE(saved->tabRowDatas.size(), 1);
        QCOMPARE(firstFret(*saved), 7);
        QCOMPARE(listener.reloads, 0);
        QCOMPARE(listener.conflicts, 0);
        document.changeListener = nullptr;
        QVERIFY(document.close());
    }

    void oddFilesOpen()
    {
        // Contents that are no tab open without a model; a missing file does not open.
        const QString folder = freshFolder(u"odd"_qs);
        const QString broken = QDir(folder).filePath(u"Broken.lgrdi"_qs);
        QVERIFY(writeFile(broken, "this is no archive"));
        LutegridDocument document(broken, std::nullopt);
        QVERIFY(document.open());
        QVERIFY(!document.tabData);
        QVERIFY(document.close());
        QVERIFY(!LutegridDocument(broken + u".gone"_qs, std::nullopt).open());

        // A blank name keeps the tab's name; a name with spaces around it is taken as it is.
        const QString blank = QDir(folder).filePath(u" \t .lgrdi"_qs);
        QVERIFY(writeTab(blank, 1));
        LutegridDocument blankDocument(blank, std::nullopt);
        blankDocument.tabName = u"Kept"_qs;
        QVERIFY(blankDocument.open());
        QCOMPARE(blankDocument.tabName, u"Kept"_qs);
        QCOMPARE(blankDocument.tabData->title, u"Kept"_qs);
        blankDocument.close();

        const QString named = QDir(folder).filePath(u" My Song .lgrdi"_qs);
        QVERIFY(writeTab(named, 1));
        LutegridDocument namedDocument(named, std::nullopt);
        QVERIFY(namedDocument.open());
        QCOMPARE(namedDocument.tabData->title, u" My Song "_qs);
        namedDocument.close();
    }

    void autosaveIsDeferredAndBounded()
    {
        const QString path = QDir(freshFolder(u"autosave"_qs)).filePath(u"Auto.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(1));
        document.autosaveDelay = 150;
        document.autosaveMaximumDelay = 500;
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));

        // One change: nothing at once, saved after the quiet delay.
        edit(document, 2);
        QCOMPARE(firstFret(*readTab(path)), 1);
        QTRY_COMPARE_WITH_TIMEOUT(firstFret(*readTab(path)), 2, 2000);
        // The worker has written it; the UI thread takes the news in a moment later.
        QTRY_VERIFY_WITH_TIMEOUT(!document.hasUnsavedChanges(), 2000);

        // Changes that never pause are saved all the same, by the bound on the first one.
        QElapsedTimer clock;
        clock.start();
        int fret = 3;
        bool savedWhileBusy = false;
        while (clock.elapsed() < 1500 && !savedWhileBusy) {
            edit(document, fret++);
            QTest::qWait(40);
            savedWhileBusy = firstFret(*readTab(path)) != 2;
        }
        QVERIFY(savedWhileBusy);
        document.close();
    }

    void closeAndQuitSaveAtOnce()
    {
        const QString path = QDir(freshFolder(u"close"_qs)).filePath(u"Close.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(1));
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        edit(document, 4);
        QVERIFY(document.close());
        QCOMPARE(firstFret(*readTab(path)), 4);
        QVERIFY(document.documentState().testFlag(LutegridDocument::Closed));

        QVERIFY(document.open());
        edit(document, 5);
        QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit"));
        QCOMPARE(firstFret(*readTab(path)), 5);
        document.close();
    }

    void outsideChangeReloads_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("rewritten in place") << u"inplace"_qs;
        QTest::newRow("renamed over") << u"renameover"_qs;
        QTest::newRow("deleted and created again") << u"recreate"_qs;
    }

    void outsideChangeReloads()
    {
        QFETCH(QString, how);
        const QString folder = freshFolder(u"outside-"_qs + how);
        const QString path = QDir(folder).filePath(u"Shared.lgrdi"_qs);
        QVERIFY(writeTab(path, 1));
        LutegridDocument document(path, std::nullopt);
        Listener listener;
        QVERIFY(document.open());
        document.changeListener = &listener;
        QSignalSpy reloaded(&document, &LutegridDocument::documentReloaded);

        const QByteArray newer = documentData(tabWithNote(9));
        if (how == u"inplace") {
            QVERIFY(writeFile(path, newer));
        } else if (how == u"renameover") {
            const QString temp = QDir(folder).filePath(u".syncthing.Shared.lgrdi.tmp"_qs);
            QVERIFY(writeFile(temp, newer));
            std::filesystem::rename(temp.toStdString(), path.toStdString());
        } else {
            QVERIFY(QFile::remove(path));
            QTest::qWait(50);
            QVERIFY(writeFile(path, newer));
        }
        QTRY_COMPARE_WITH_TIMEOUT(reloaded.size(), 1, 2000);
        QCOMPARE(firstFret(*document.tabData), 9);
        QCOMPARE(document.tabData->title, u"Shared"_qs);
        QCOMPARE(listener.reloads, 1);
        QCOMPARE(firstFret(*listener.reloaded), 9);
        QVERIFY(!inConflict(document));

        // The watch is still armed after the first change.
        QVERIFY(writeTab(path, 10));
        QTRY_COMPARE_WITH_TIMEOUT(reloaded.size(), 2, 2000);
        QCOMPARE(firstFret(*document.tabData), 10);
        document.changeListener = nullptr;
        document.close();
    }

    void ownWritesAreNotOutsideChanges()
    {
        const QString path = QDir(freshFolder(u"own"_qs)).filePath(u"Own.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(1));
        document.autosaveDelay = 0;
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        QSignalSpy reloaded(&document, &LutegridDocument::documentReloaded);
        QSignalSpy state(&document, &LutegridDocument::documentStateChanged);
        for (int fret = 2; fret < 8; ++fret) {
            edit(document, fret);
            QTest::qWait(30);
        }
        QTest::qWait(1300); // past a poll round
        QCOMPARE(firstFret(*readTab(path)), 7);
        QCOMPARE(reloaded.size(), 0);
        QCOMPARE(state.size(), 0);
        QCOMPARE(QDir(QFileInfo(path).absolutePath()).entryList(QDir::Files | QDir::Hidden).size(),
                 1);
        document.close();
    }

    void outsideChangeWithUnsavedWorkKeepsBoth()
    {
        const QString folder = freshFolder(u"unsaved"_qs);
        const QString path = QDir(folder).filePath(u"Both.lgrdi"_qs);
        QVERIFY(writeTab(path, 1));
        LutegridDocument document(path, std::nullopt);
        document.autosaveDelay = 60000;
        document.autosaveMaximumDelay = 60000;
        Listener listener;
        QVERIFY(document.open());
        document.changeListener = &listener;
        document.tabData->tabRowDatas = tabWithNote(2).tabRowDatas;
        document.updateChangeCount(LutegridDocument::ChangeKind::Done);

        QVERIFY(writeTab(path, 8));
        QTRY_VERIFY_WITH_TIMEOUT(inConflict(document), 2000);
        QCOMPARE(listener.reloads, 0);
        QCOMPARE(listener.conflicts, 1);
        QCOMPARE(listener.lastVersionCount, 1);
        const QList<FileVersion> versions = document.unresolvedConflictVersions();
        QCOMPARE(versions.size(), 1);
        QCOMPARE(firstFret(*readTab(versions[0].url)), 8);
        QVERIFY(versions[0].modificationDate.has_value());

        // The user's work is written over the file; the outside version waits in its copy.
        QVERIFY(document.autosave());
        QCOMPARE(firstFret(*readTab(path)), 2);
        QCOMPARE(document.unresolvedConflictVersions().size(), 1);
        QVERIFY(!TabFileNames::isTabEntryName(QFileInfo(versions[0].url).fileName()));
        document.changeListener = nullptr;
        document.close();
    }

    void saveOverUnseenChangeKeepsDiskVersion()
    {
        const QString path = QDir(freshFolder(u"stale"_qs)).filePath(u"Stale.lgrdi"_qs);
        QVERIFY(writeTab(path, 1));
        LutegridDocument document(path, std::nullopt);
        QVERIFY(document.open());
        edit(document, 2);
        // Changed outside and saved over before any notice could arrive.
        QVERIFY(writeTab(path, 6, 3));
        QVERIFY(document.autosave());
        QCOMPARE(firstFret(*readTab(path)), 2);
        const auto versions = document.unresolvedConflictVersions();
        QCOMPARE(versions.size(), 1);
        QCOMPARE(readTab(versions[0].url)->tabRowDatas.size(), 3);
        QVERIFY(inConflict(document));

        // A new tab saved for creating over a file that appeared meanwhile keeps that one too.
        const QString taken = QDir(QFileInfo(path).absolutePath()).filePath(u"Untitled 1.lgrdi"_qs);
        QVERIFY(writeTab(taken, 11));
        LutegridDocument fresh(taken, tabWithNote(0));
        QVERIFY(fresh.saveToURL(taken, LutegridDocument::SaveOperation::ForCreating));
        QCOMPARE(FileVersion::unresolvedConflictVersionsOfItemAtUrl(taken).size(), 1);
        document.close();
        fresh.close();
    }

    void renameFromOutsideIsFollowed()
    {
        const QString folder = freshFolder(u"rename"_qs);
        const QString path = QDir(folder).filePath(u"Before.lgrdi"_qs);
        QVERIFY(writeTab(path, 4));
        LutegridDocument document(path, std::nullopt);
        QVERIFY(document.open());
        QCOMPARE(document.tabData->title, u"Before"_qs);
        QSignalSpy moved(&document, &LutegridDocument::documentMoved);
        QSignalSpy urlChanged(&document, &LutegridDocument::fileURLChanged);

        const QString renamed = QDir(folder).filePath(u"After.lgrdi"_qs);
        QVERIFY(QFile::rename(path, renamed));
        QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 1, 2000);
        QCOMPARE(document.fileURL(), renamed);
        QCOMPARE(urlChanged.size(), 1);
        QCOMPARE(urlChanged[0][1].toString(), renamed);
        QCOMPARE(document.tabData->title, u"After"_qs);
        QCOMPARE(firstFret(*document.tabData), 4);

        // It keeps watching the file under its new name.
        QSignalSpy reloaded(&document, &LutegridDocument::documentReloaded);
        QVERIFY(writeTab(renamed, 5));
        QTRY_COMPARE_WITH_TIMEOUT(reloaded.size(), 1, 2000);
        QVERIFY(document.close());
    }

    void conflictCopyPutsDocumentInConflict()
    {
        const QString folder = freshFolder(u"copy"_qs);
        const QString path = QDir(folder).filePath(u"Song.lgrdi"_qs);
        QVERIFY(writeTab(path, 1));
        LutegridDocument document(path, std::nullopt);
        Listener listener;
        QVERIFY(document.open());
        document.changeListener = &listener;
        analyticsEvents.clear();

        // Another tab's copy is not this document's conflict.
        QVERIFY(writeTab(
            QDir(folder).filePath(u"Song 2.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs), 2));
        QTest::qWait(1200);
        QVERIFY(!inConflict(document));

        QVERIFY(writeTab(
            QDir(folder).filePath(u"Song (conflicted copy 2026-11-21 101530).lgrdi"_qs), 3));
        QTRY_VERIFY_WITH_TIMEOUT(inConflict(document), 2000);
        QCOMPARE(listener.conflicts, 1);
        QCOMPARE(listener.lastVersionCount, 1);
        QCOMPARE(analyticsEvents, QStringList{u"Conflict_detected"_qs});

        // Without a listener a conflict is only logged.
        document.changeListener = nullptr;
        QVERIFY(FileVersion::removeOtherVersionsOfItemAtUrl(path));
        QTRY_VERIFY_WITH_TIMEOUT(!inConflict(document), 2000);
        QVERIFY(writeTab(QDir(folder).filePath(u"Song (Ann's conflicted copy 2026-11-21).lgrdi"_qs),
                         4));
        QTRY_VERIFY_WITH_TIMEOUT(inConflict(document), 2000);
        QCOMPARE(listener.conflicts, 1);
        QCOMPARE(analyticsEvents.count(u"Conflict_detected"_qs), 2);
        document.close();
    }
};

LUTEGRID_TEST_MAIN(TestDocument)
#include "tst_document.moc"
