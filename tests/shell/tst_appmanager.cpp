#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "model/tabfileformat.h"
#include "services/cloudkeyvaluestore.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "shell/tabopenflow.h"
#include "testfiles.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

namespace {

struct ListScreen : TabsListScreen, TabOpenFlowScreen {
    bool deleted = false;
    std::optional<QString> folder;
    QList<std::optional<QList<TabUrlInfo>>> lists;
    QStringList messages;
    int standbyShown = 0;
    int standbyDismissed = 0;
    QList<LutegridDocument *> presented;

    void refreshList(const std::optional<QList<TabUrlInfo>> &tabs) override { lists.append(tabs); }
    bool isDeletedFolder() const override { return deleted; }
    void showMessage(const QString &text) override { messages.append(text); }
    std::optional<QString> docsUrl() const override { return folder; }
    void setActivity(bool) override {}
    void showStandbyDialog() override { ++standbyShown; }
    void dismissStandbyDialog() override { ++standbyDismissed; }
    void presentEditor(LutegridDocument *document) override { presented.append(document); }
};

struct Window : SceneWindow {
    std::optional<QString> editorFile;
    TopScreen top = TopScreen::Other;
    ListScreen list;
    ListScreen pushed;
    std::optional<QStringList> notes;
    int activations = 0;

    std::optional<QString> rootEditorFileURL() const override { return editorFile; }
    TopScreen topScreen() const override { return top; }
    TabsListScreen *topTabsList() const override { return const_cast<ListScreen *>(&list); }
    TabsListScreen *pushAllTabsList() override
    {
        top = TopScreen::TabsList;
        return &pushed;
    }
    void requestSceneSessionActivation() override { ++activations; }
    std::optional<QStringList> shownTabStringNotes() const override { return notes; }
    void setOverrideUserInterfaceStyle(int) override {}
};

QString storage()
{
    return *iCloudManager::shared().iCloudContainerUrl;
}

void writeTab(const QString &name, const QDateTime &date = {})
{
    QFile file(QDir(storage()).filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    TabData tab(name, 6);
    tab.tabRowDatas = {TabRowData(4, 6)};
    file.write(documentData(tab));
    file.flush();
    if (date.isValid())
        file.setFileTime(date, QFileDevice::FileModificationTime);
}

void clearStorage()
{
    QDir(storage()).removeRecursively();
    QDir().mkpath(storage());
}

} // namespace

class TestAppManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        manager = &AppManager::shared();
        iCloudManager::shared().findCloudContainer();
        QVERIFY(iCloudManager::shared().iCloudContainerUrl);
        QCoreApplication::processEvents();
    }

    void init()
    {
        clearStorage();
        manager->activeDocUrls.clear();
        manager->existingTabPaths.clear();
    }

    // The screens of a test are gone with it.
    void cleanup() { manager->topTabViewController = nullptr; }

    void nextUntitledName_data()
    {
        QTest::addColumn<QStringList>("existing");
        QTest::addColumn<QString>("next");
        QTest::newRow("empty") << QStringList() << u"Untitled 1"_qs;
        QTest::newRow("only 2") << QStringList{u"Untitled 2.lgrdi"_qs} << u"Untitled 1"_qs;
        QTest::newRow("gap") << QStringList{u"Untitled 1.lgrdi"_qs, u"Untitled 3.lgrdi"_qs}
                             << u"Untitled 2"_qs;
        QTest::newRow("leading zeros")
            << QStringList{u"Untitled 1.lgrdi"_qs, u"Untitled 002.lgrdi"_qs} << u"Untitled 3"_qs;
        QTest::newRow("no number")
            << QStringList{u"Untitled .lgrdi"_qs,   u"Untitled.lgrdi"_qs,    u"Untitled x.lgrdi"_qs,
                           u"Untitled 1x.lgrdi"_qs, u"Untitled  1.lgrdi"_qs, u"My song.lgrdi"_qs}
            << u"Untitled 1"_qs;
        QTest::newRow("duplicates")
            << QStringList{u"Untitled 1.lgrdi"_qs, u"Untitled 1.lgrd"_qs, u"Untitled 2.lgrdi"_qs}
            << u"Untitled 3"_qs;
        QTest::newRow("overflow") << QStringList{u"Untitled 99999999999999999999.lgrdi"_qs}
                                  << u"Untitled 1"_qs;
    }

    void nextUntitledName()
    {
        QFETCH(QStringList, existing);
        QFETCH(QString, next);
        manager->existingTabPaths = existing;
        QCOMPARE(manager->nextUntitledName(), next);
    }

    void documentTable()
    {
        const QString a = QDir(storage()).filePath(u"A.lgrdi"_qs);
        LutegridDocument *document = manager->documentFor(a);
        QCOMPARE(manager->documentFor(a), document);
        QCOMPARE(manager->documentFor(u"/elsewhere/A.lgrdi"_qs), document);
        QVERIFY(document->documentState().testFlag(LutegridDocument::Closed));

        LutegridDocument *other = manager->documentFor(QDir(storage()).filePath(u"B.lgrdi"_qs));
        manager->documentMoved(std::nullopt, u"/x/C.lgrdi"_qs, other);
        QCOMPARE(manager->activeDocUrls.keys(),
                 QStringList({u"A.lgrdi"_qs, u"B.lgrdi"_qs, u"C.lgrdi"_qs}));
        manager->documentMoved(u"/x/B.lgrdi"_qs, u"/x/D.lgrdi"_qs, other);
        QCOMPARE(manager->activeDocUrls.keys(),
                 QStringList({u"A.lgrdi"_qs, u"C.lgrdi"_qs, u"D.lgrdi"_qs}));

        QPointer<LutegridDocument> pruned = document;
        manager->pruneActiveDocs({u"/y/D.lgrdi"_qs});
        QCOMPARE(manager->activeDocUrls.keys(), QStringList{u"D.lgrdi"_qs});
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(pruned.isNull());
        manager->pruneActiveDocs({});
        QVERIFY(manager->activeDocUrls.isEmpty());
    }

    void refreshListsTabsOnly()
    {
        const QDateTime now = QDateTime::currentDateTime();
        writeTab(u"Old.lgrdi"_qs, now.addDays(-3));
        writeTab(u"New.lgrdi"_qs, now.addDays(-1));
        writeTab(u"Middle.lgrd"_qs, now.addDays(-2));
        writeTab(u".Cloud.lgrdi.icloud"_qs, now.addDays(-4));
        // Names that begin with "~" or "." are tabs too.
        writeTab(u"~Tilde.lgrdi"_qs, now.addDays(-5));
        writeTab(u".Hidden.lgrdi"_qs, now.addDays(-6));
        for (const QString &notListed :
             {u"Song.txt"_qs, u".syncthing.New.lgrdi.tmp"_qs, u"~syncthing~New.lgrdi.tmp"_qs,
              u".~lg.New.lgrdi.abc.tmp"_qs, u".New.lgrdi.Xb3k9q"_qs,
              u"New.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs})
            writeTab(notListed);
        QVERIFY(QDir(storage()).mkdir(u"Folder.lgrd"_qs));
        manager->setTabTags(u"New"_qs, {u"rock"_qs});
        manager->setTabTags(u"Cloud"_qs, {u"rock"_qs, u"live"_qs});

        ListScreen list;
        manager->topTabViewController = &list;
        QPointer<LutegridDocument> stale =
            manager->documentFor(QDir(storage()).filePath(u"Gone.lgrdi"_qs));
        LutegridDocument *kept = manager->documentFor(QDir(storage()).filePath(u"Old.lgrdi"_qs));
        manager->refreshTabs();

        QCOMPARE(manager->existingTabPaths,
                 QStringList({u"New.lgrdi"_qs, u"Middle.lgrd"_qs, u"Old.lgrdi"_qs,
                              u"Cloud.lgrdi"_qs, u"~Tilde.lgrdi"_qs, u".Hidden.lgrdi"_qs}));
        QCOMPARE(list.lists.size(), 1);
        const QList<TabUrlInfo> tabs = *list.lists[0];
        QCOMPARE(tabs[4].plainName(), u"~Tilde"_qs);
        QCOMPARE(tabs[5].plainName(), u".Hidden"_qs);
        QCOMPARE(tabs[0].tags, QStringList{u"rock"_qs});
        QCOMPARE(tabs[3].unmodifiedTabPath, u".Cloud.lgrdi.icloud"_qs);
        QCOMPARE(tabs[3].plainName(), u"Cloud"_qs);
        QCOMPARE(tabs[3].tags, QStringList({u"rock"_qs, u"live"_qs}));
        QVERIFY(tabs[1].tags.isEmpty());
        QCOMPARE(manager->activeDocUrls.keys(), QStringList{u"Old.lgrdi"_qs});
        QCOMPARE(manager->activeDocUrls.value(u"Old.lgrdi"_qs), kept);

        // The Deleted folder is made on the way and listed without labels.
        const auto deleted = manager->deletedFolderUrl();
        QCOMPARE(deleted, QDir(storage()).filePath(u"Deleted"_qs));
        QVERIFY(QFile::copy(QDir(storage()).filePath(u"New.lgrdi"_qs),
                            QDir(*deleted).filePath(u"New.lgrdi"_qs)));
        ListScreen deletedList;
        deletedList.deleted = true;
        manager->topTabViewController = &deletedList;
        manager->refreshTabs();
        QCOMPARE(deletedList.lists.size(), 1);
        QCOMPARE(deletedList.lists[0]->size(), 1);
        QVERIFY(deletedList.lists[0]->first().tags.isEmpty());
        manager->removeTagFromAllTabs(u"rock"_qs);
        manager->removeTagFromAllTabs(u"live"_qs);
    }

    void newTabs()
    {
        SavedData::shared().tabCreateCount = 18;
        // A string count never set means six, and is set so.
        SavedData::shared().defaultStringCount = 0;
        LutegridDocument *first = manager->makeNewTab();
        QVERIFY(first);
        QCOMPARE(first->tabData->stringNotes.join(u' '), u"E A D G B E"_qs);
        QCOMPARE(SavedData::shared().defaultStringCount, 6);
        QCOMPARE(first->fileURL(), QDir(storage()).filePath(u"Untitled 1.lgrdi"_qs));
        QVERIFY(QFile::exists(first->fileURL()));
        QVERIFY(!first->documentState().testFlag(LutegridDocument::Closed));
        QVERIFY(manager->openedEditorThisSession);
        QVERIFY(!manager->activeDocUrls.contains(u"Untitled 1.lgrdi"_qs));
        first->close();
        manager->refreshTabs();

        SavedData::shared().defaultStringCount = 7;
        LutegridDocument *second = manager->makeNewTab(u"drafts"_qs);
        QCOMPARE(second->tabData->title, u"Untitled 2"_qs);
        QCOMPARE(second->tabData->stringCount(), 7);
        SavedData::shared().defaultStringCount = 6;
        QCOMPARE(manager->currentTagMap().value(u"Untitled 2"_qs), QStringList{u"drafts"_qs});
        second->close();
        manager->refreshTabs();
        delete manager->makeNewTab();
        QCOMPARE(SavedData::shared().tabCreateCount, 20);
        SavedData::resetShared();
        QCOMPARE(SavedData::shared().tabCreateCount, 20);
        manager->removeTagFromAllTabs(u"drafts"_qs);
        delete first;
        delete second;
    }

    void renameFromOutsideRekeysActiveDocuments()
    {
        writeTab(u"Before.lgrdi"_qs);
        const QString path = QDir(storage()).filePath(u"Before.lgrdi"_qs);
        LutegridDocument *document = manager->documentFor(path);
        QCOMPARE(manager->documentFor(path), document);
        QVERIFY(document->open());
        QSignalSpy moved(document, &LutegridDocument::documentMoved);

        QVERIFY(QFile::rename(path, QDir(storage()).filePath(u"After.lgrdi"_qs)));
        QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 1, 2000);
        QVERIFY(!manager->activeDocUrls.contains(u"Before.lgrdi"_qs));
        QCOMPARE(manager->activeDocUrls.value(u"After.lgrdi"_qs), document);
        QVERIFY(document->close());
        manager->activeDocUrls.clear();
    }

    void openFlowWaitsForBusyDocument()
    {
        writeTab(u"Busy.lgrdi"_qs);
        ListScreen screen;
        screen.folder = storage();
        TabOpenFlow flow(&screen);
        flow.roundInterval = 5;
        LutegridDocument *document =
            manager->documentFor(QDir(storage()).filePath(u"Busy.lgrdi"_qs));
        QVERIFY(document->open()); // still open from its last window

        QCOMPARE(flow.openTab(u"Busy.lgrdi"_qs), TabOpenFlow::Outcome::Waiting);
        QVERIFY(flow.waiting());
        for (int round = 2; round <= 17; ++round)
            QCOMPARE(flow.openRound(u"Busy.lgrdi"_qs), TabOpenFlow::Outcome::Waiting);
        QCOMPARE(flow.tabOpenStatusCheckerCount, 17);
        QCOMPARE(screen.standbyShown, 0);
        // From the 18th round on the standby dialog shows, once; the timer runs the rounds.
        QTRY_VERIFY(flow.tabOpenStatusCheckerCount >= 20);
        QCOMPARE(screen.standbyShown, 1);
        QVERIFY(screen.presented.isEmpty());

        document->close();
        QTRY_COMPARE(screen.presented.size(), 1);
        QCOMPARE(screen.presented[0], document);
        QCOMPARE(screen.standbyDismissed, 1);
        QVERIFY(!flow.waiting());
        QCOMPARE(document->tabName, u"Busy"_qs);
        QCOMPARE(document->tabData->title, u"Busy"_qs);
        document->close();

        // A new touch starts counting again (cancelling and showing the dialog again are
        // driven through the window).
        QVERIFY(document->open());
        QCOMPARE(flow.openTab(u"Busy.lgrdi"_qs), TabOpenFlow::Outcome::Waiting);
        QCOMPARE(flow.tabOpenStatusCheckerCount, 1);
        flow.stop();
        QVERIFY(!flow.waiting());
        document->close();
    }

    void openFlowOutcomes()
    {
        ListScreen screen;
        TabOpenFlow flow(&screen);
        QCOMPARE(flow.openTab(u"Any.lgrdi"_qs), TabOpenFlow::Outcome::NoFolder);
        QCOMPARE(screen.messages.last(),
                 u"Retrieving tab locations, please refresh and try again."_qs);

        screen.folder = storage();
        writeFile(QDir(storage()).filePath(u"Broken.lgrdi"_qs), "not a tab");
        QCOMPARE(flow.openTab(u"Broken.lgrdi"_qs), TabOpenFlow::Outcome::Failed);
        QCOMPARE(screen.messages.last(), u"Unable to open tab."_qs);
        // A second touch on a broken tab is driven through the window; a missing one fails too.
        QCOMPARE(flow.openTab(u"Missing.lgrdi"_qs), TabOpenFlow::Outcome::Failed);
        QCOMPARE(screen.messages.size(), 3);

        // A tab being edited in another window brings that window forward instead.
        Window window;
        window.editorFile = QDir(storage()).filePath(u"Shown.lgrdi"_qs);
        manager->registerWindow(&window);
        QCOMPARE(flow.openTab(u"Shown.lgrdi"_qs), TabOpenFlow::Outcome::BroughtForward);
        QCOMPARE(window.activations, 1);
        QVERIFY(screen.presented.isEmpty());
        manager->unregisterWindow(&window);
    }

    void windowQueries()
    {
        Window editor;
        editor.editorFile = u"/tabs/Song.lgrdi"_qs;
        editor.notes = QStringList{u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs};
        Window folders;
        folders.top = SceneWindow::TopScreen::Folders;
        Window lists;
        lists.top = SceneWindow::TopScreen::TabsList;

        QVERIFY(!manager->foremostTabsList());
        QCOMPARE(manager->stringNotesFor(nullptr),
                 QStringList({u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs}));
        QCOMPARE(manager->stringNotesFor(&folders), manager->stringNotesFor(nullptr));
        QCOMPARE(manager->stringNotesFor(&editor), *editor.notes);

        for (Window *window : {&editor, &folders, &lists})
            manager->registerWindow(window);
        QVERIFY(manager->isOpenInEditor(u"Song.lgrdi"_qs));
        QVERIFY(!manager->isOpenInEditor(u"Other.lgrdi"_qs));
        QVERIFY(!manager->activateEditorScene(u"/elsewhere/Song.lgrdi"_qs));
        QVERIFY(manager->activateEditorScene(u"/tabs/Song.lgrdi"_qs));
        QCOMPARE(editor.activations, 1);

        // The first window with a list on top wins; a folder screen gets an unfiltered list.
        QCOMPARE(manager->foremostTabsList(), &folders.pushed);
        QCOMPARE(manager->topTabViewController, &folders.pushed);
        QCOMPARE(manager->foremostTabsList(), &folders.list);
        for (Window *window : {&editor, &folders, &lists})
            manager->unregisterWindow(window);
        QVERIFY(!manager->isOpenInEditor(u"Song.lgrdi"_qs));
    }

    void reviewRequestRule()
    {
        QSignalSpy requested(manager, &AppManager::reviewRequested);
        SavedData &settings = SavedData::shared();
        const double now = double(QDateTime::currentSecsSinceEpoch());
        manager->openedEditorThisSession = true;
        manager->rateRequestShownThisSession = false;
        manager->existingTabPaths = {u"1"_qs, u"2"_qs, u"3"_qs, u"4"_qs};
        settings.lastReviewRequestDate.reset();
        manager->requestReviewIfDue();
        QVERIFY(!manager->rateRequestShownThisSession); // fewer than 5 tabs

        manager->existingTabPaths.append(u"5"_qs);
        settings.lastReviewRequestDate = now - 239 * 86400;
        manager->requestReviewIfDue();
        QVERIFY(!manager->rateRequestShownThisSession); // asked less than 240 days ago

        settings.lastReviewRequestDate = now - 241 * 86400;
        manager->requestReviewIfDue();
        QVERIFY(manager->rateRequestShownThisSession);
        QCOMPARE(requested.size(), 0); // made 0.2 s later
        QVERIFY(requested.wait(2000));
        QVERIFY(*settings.lastReviewRequestDate >= now);
        manager->requestReviewIfDue();
        QTest::qWait(300);
        QCOMPARE(manager->reviewRequestsMade, 1);
    }

    void keyValueStoreNotices()
    {
        ListScreen list;
        manager->topTabViewController = &list;
        QSignalSpy refreshed(manager, &AppManager::tabsRefreshed);
        manager->ubiquitousKeyValueStoreDidChange(CloudKeyValueStore::ServerChange);
        manager->ubiquitousKeyValueStoreDidChange(CloudKeyValueStore::InitialSyncChange);
        manager->ubiquitousKeyValueStoreDidChange(7);
        QCOMPARE(refreshed.size(), 0); // on the event loop, not at once
        QTRY_COMPARE(refreshed.size(), 2);
        manager->ubiquitousKeyValueStoreDidChange(CloudKeyValueStore::QuotaViolationChange);
        QTRY_COMPARE(list.messages,
                     QStringList{u"Warning: Reached storage limit for folder labels."_qs});
    }

private:
    AppManager *manager = nullptr;
};

LUTEGRID_TEST_MAIN(TestAppManager)
#include "tst_appmanager.moc"
