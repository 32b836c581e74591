#include "analyticscapture.h"
#include "library/fileversion.h"
#include "library/lutegriddocument.h"
#include "library/tabedits.h"
#include "model/tabfileformat.h"
#include "services/lgundomanager.h"
#include "tablisting.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <thread>

namespace {

QString freshFolder(const QString &name)
{
    const QString folder = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"docs/"_qs + name);
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    return folder;
}

TabData tabWithNote(int fret)
{
    TabData tab(u"Tab"_qs, 6);
    tab.tabRowDatas = {TabRowData(16, 6)};
    tab.tabRowDatas[0].colDatas[0].setColumnItem(0, ColumnItemType::note(fret));
    return tab;
}

// The fret of the first cell of the file on disk; -1 if the file is no whole tab.
int fretOnDisk(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const auto tab = tabDataFromDocumentData(file.readAll());
    if (!tab)
        return -1;
    const ColumnItemType item = tab->tabRowDatas.value(0).colDatas.value(0).columnItems.value(0);
    return item.isNote() ? int(item.fret()) : -1;
}

// A typed fret, by the editor's road: the edit and its undo step.
void type(LutegridDocument &document, int fret)
{
    QVERIFY(document.edits()->setColumnItem(0, 0, 0, ColumnItemType::note(fret)));
    QCoreApplication::processEvents(); // closes the undo group, which marks the change
}

// A disk that holds every write until the test lets it through, and notes where writes ran.
struct GatedDisk {
    QSemaphore entered;
    QSemaphore gate;
    std::atomic<int> writesOnUiThread{0};
    QThread *uiThread = QThread::currentThread();

    DiskWriter writer()
    {
        return [this](const QString &path, const QByteArray &bytes, QString *error) {
            if (QThread::currentThread() == uiThread)
                ++writesOnUiThread;
            else {
                entered.release();
                // A bound rather than a hang should the gate never open.
                if (!gate.tryAcquire(1, 10000))
                    return false;
            }
            return writeFileAtomically(path, bytes, error);
        };
    }
    bool waitForWrite() { return entered.tryAcquire(1, 10000); }
    // Lets one write through a little later, from another thread, for a UI thread that waits.
    void openLater()
    {
        std::thread([this] {
            QThread::msleep(50);
            gate.release();
        }).detach();
    }
};

bool savingError(const LutegridDocument &document)
{
    return document.documentState().testFlag(LutegridDocument::SavingError);
}

} // namespace

class TestAutosave : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { previousHandler = qInstallMessageHandler(captureAnalytics); }

    // The deferred save runs on a worker: typing goes on while the disk is stuck, the file
    // holds the snapshot and never the edits made after it, and those are saved next.
    void typingGoesOnWhileTheDiskIsSlow()
    {
        const QString path = QDir(freshFolder(u"typing"_qs)).filePath(u"Song.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(1));
        document.autosaveDelay = 60000;
        document.autosaveMaximumDelay = 60000;
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        GatedDisk disk;
        document.diskWriter = disk.writer();

        type(document, 2);
        QVERIFY(document.autosaveInBackground());
        QVERIFY(disk.waitForWrite());
        QVERIFY(document.isSaving());
        type(document, 3);
        type(document, 4);
        QCOMPARE(document.changeCount(), 3);
        QCOMPARE(fretOnDisk(path), 1);
        // Due again while the first is running: it follows once that one is in.
        QVERIFY(!document.autosaveInBackground());

        disk.gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(document.changeCount(), 2, 5000);
        QVERIFY(document.isSaving());
        QVERIFY(disk.waitForWrite());
        QCOMPARE(fretOnDisk(path), 2);

        // Undone while saving: the file then holds a state the model has left.
        document.undoManager()->undo();
        document.undoManager()->undo();
        QCOMPARE(document.changeCount(), 0);
        disk.gate.release();
        QTRY_VERIFY_WITH_TIMEOUT(!document.isSaving(), 5000);
        QCOMPARE(fretOnDisk(path), 4);
        QCOMPARE(document.changeCount(), -2);
        QVERIFY(document.hasUnsavedChanges());

        QVERIFY(document.autosave());
        QCOMPARE(fretOnDisk(path), 2);
        QVERIFY(!document.hasUnsavedChanges());
        QCOMPARE(disk.writesOnUiThread.load(), 1); // only the save asked to wait
        QVERIFY(document.close());
    }

    // Edits every few milliseconds against a disk that takes longer than that: whenever one
    // looks, the file is a whole tab that was typed, never older than the one before, and the
    // last edit is on disk at the end.
    void fileIsAlwaysAWholeTypedTab()
    {
        const QString path = QDir(freshFolder(u"whole"_qs)).filePath(u"Song.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(0));
        document.autosaveDelay = 0;
        document.autosaveMaximumDelay = 0;
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        std::atomic<int> writes{0};
        document.diskWriter = [&writes](const QString &path, const QByteArray &bytes,
                                        QString *error) {
            QThread::msleep(15);
            ++writes;
            return writeFileAtomically(path, bytes, error);
        };
        int seen = 0;
        for (int fret = 1; fret <= 24; ++fret) {
            type(document, fret);
            QTest::qWait(4);
            const int onDisk = fretOnDisk(path);
            QVERIFY2(onDisk >= seen && onDisk <= fret, qPrintable(QString::number(onDisk)));
            seen = onDisk;
        }
        QTRY_VERIFY_WITH_TIMEOUT(!document.isSaving() && !document.hasUnsavedChanges(), 5000);
        QCOMPARE(fretOnDisk(path), 24);
        // Saves gathered the edits that came while one ran.
        QVERIFY(writes.load() < 24);
        QVERIFY(!savingError(document));
        QVERIFY(document.close());
    }

    void failedSaveKeepsTheEdits()
    {
        const QString path = QDir(freshFolder(u"fail"_qs)).filePath(u"Song.lgrdi"_qs);
        LutegridDocument document(path, tabWithNote(1));
        document.autosaveDelay = 60000;
        document.autosaveMaximumDelay = 60000;
        QVERIFY(document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
        document.diskWriter = [](const QString &, const QByteArray &, QString *error) {
            *error = u"No space left on device"_qs;
            return false;
        };
        analyticsEvents.clear();
        type(document, 5);
        QVERIFY(document.autosaveInBackground());
        QTRY_VERIFY_WITH_TIMEOUT(!document.isSaving(), 5000);
        QVERIFY(savingError(document));
        QCOMPARE(analyticsEvents, QStringList{u"Gt_saving_error"_qs});
        QCOMPARE(document.changeCount(), 1);
        QCOMPARE(fretOnDisk(path), 1);
        QCOMPARE(document.tabData->tabRowDatas[0].colDatas[0].columnItems[0],
                 ColumnItemType::note(5));

        document.diskWriter = writeFileAtomically;
        QVERIFY(document.autosave());
        QVERIFY(!savingError(document));
        QCOMPARE(fretOnDisk(path), 5);
        QVERIFY(document.close());
    }

    // Closing, quitting and going away each wait for the save on the worker, then save what
    // came after it.
    void endingsWaitForTheRunningSave_data()
    {
        QTest::addColumn<QString>("ending");
        QTest::newRow("close") << u"close"_qs;
        QTest::newRow("quit") << u"quit"_qs;
        QTest::newRow("destroyed") << u"destroyed"_qs;
    }

    void endingsWaitForTheRunningSave()
    {
        QFETCH(QString, ending);
        const QString path = QDir(freshFolder(u"end-"_qs + ending)).filePath(u"Song.lgrdi"_qs);
        GatedDisk disk;
        {
            auto document = std::make_unique<LutegridDocument>(path, tabWithNote(1));
            QVERIFY(document->saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
            document->diskWriter = disk.writer();
            type(*document, 2);
            QVERIFY(document->autosaveInBackground());
            QVERIFY(disk.waitForWrite());
            type(*document, 3);
            disk.openLater();
            if (ending == u"close") {
                QVERIFY(document->close());
                QVERIFY(document->documentState().testFlag(LutegridDocument::Closed));
            } else if (ending == u"quit") {
                QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit"));
                QVERIFY(!document->hasUnsavedChanges());
            } else {
                document.reset();
            }
            QVERIFY(!document || !document->isSaving());
        }
        QCOMPARE(fretOnDisk(path), 3);
        QCOMPARE(disk.writesOnUiThread.load(), 1);
        QCoreApplication::processEvents(); // a stale notice of the finished save is harmless
    }

    // SIGKILL at random moments of a worker save, a few hundred times: the file is always
    // one whole version, and what the kills leave is never listed and is cleared in time.
    void killedMidSaveLeavesAWholeFile()
    {
        // A kill loses no page cache, so memory-backed files prove as much as a disk here and
        // spare each round the wait for the disk's flush.
        QTemporaryDir shm(u"/dev/shm/lutegrid-kill-XXXXXX"_qs);
        const QString base = shm.isValid() ? shm.path() : freshFolder(u"kill"_qs);
        const QString folder = QDir(base).filePath(u"tabs"_qs);
        QVERIFY(QDir().mkpath(folder));
        const QString path = QDir(folder).filePath(u"Loop.lgrdi"_qs);
        const int rounds = 200;
        QProcess loop;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"LUTEGRID_HOME"_qs, base);
        loop.setProcessEnvironment(environment);
        loop.start(QStringLiteral(LUTEGRID_SAVELOOP), {path, QString::number(rounds)});
        QVERIFY(loop.waitForFinished(300000));
        const QString output = QString::fromLocal8Bit(loop.readAllStandardOutput());
        QCOMPARE(loop.exitCode(), 0);
        const auto summary =
            QRegularExpression(u"rounds (\\d+) torn (\\d+) midsave (\\d+) temporaries (\\d+)"_qs)
                .match(output);
        QVERIFY2(summary.hasMatch(), qPrintable(output));
        qInfo().noquote() << output.trimmed();
        QCOMPARE(summary.captured(1).toInt(), rounds);
        QCOMPARE(summary.captured(2).toInt(), 0);
        // Most kills must land in a save, or the rounds prove little.
        QVERIFY2(summary.captured(3).toInt() >= rounds * 3 / 4, qPrintable(output));
        QCOMPARE(listedTabs(folder), QStringList{u"Loop.lgrdi"_qs});

        // Leftovers of killed saves go once they are old enough to be nobody's.
        const QDateTime old = QDateTime::currentDateTime().addSecs(-120);
        for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
            QFile file(QDir(folder).filePath(name));
            QVERIFY(file.open(QIODevice::ReadWrite));
            file.setFileTime(old, QFileDevice::FileModificationTime);
        }
        const QString young = QDir(folder).filePath(u".~lg.Loop.lgrdi.young.tmp"_qs);
        QFile fresh(young);
        QVERIFY(fresh.open(QIODevice::WriteOnly));
        fresh.close();
        LutegridDocument document(path, std::nullopt);
        QVERIFY(document.open());
        QVERIFY(document.tabData);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden),
                 QStringList({u".~lg.Loop.lgrdi.young.tmp"_qs, u"Loop.lgrdi"_qs}));
        document.close();
    }
};

LUTEGRID_TEST_MAIN(TestAutosave)
#include "tst_autosave.moc"
