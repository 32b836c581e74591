// Kills worker saves: `lg_saveloop PATH ROUNDS` forks a child per round that opens the tab at
// PATH and saves it over and over on the save worker, swapping the tab for another while each
// save runs; a random moment into the saving it SIGKILLs the child and looks at what lies at
// PATH. Forking spares the start of a new program per round.
// The last line it prints is "rounds R torn T midsave M temporaries P"; tst_autosave checks it.
// Kill leftovers of the last round stay in place.
#include "library/fileversion.h"
#include "library/lutegriddocument.h"
#include "library/tabfilenames.h"
#include "model/tabfileformat.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <chrono>
#include <cstdio>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

TabData smallTab()
{
    TabData tab(u"Loop"_qs, 6);
    tab.tabRowDatas = {TabRowData(16, 6)};
    return tab;
}

TabData largeTab()
{
    TabData tab = smallTab();
    // A long word makes the bytes large and cheap to make, so much of a save is the writing.
    tab.tabRowDatas.append(TabRowData(16, 6));
    tab.tabRowDatas[1].lyricLines = {QString(64 * 1024, u'x')};
    return tab;
}

[[noreturn]] void saveForever(int argc, char *argv[], const QString &path, int signalFd)
{
    // Made in the child: the parent stays a plain process with no threads, safe to fork, and
    // the lock files carry the child's own process id.
    QCoreApplication app(argc, argv);
    const TabData versions[2] = {smallTab(), largeTab()};
    LutegridDocument document(path, std::nullopt);
    document.autosaveDelay = 600000;
    document.autosaveMaximumDelay = 600000;
    if (!document.open() || !document.tabData)
        _exit(3);
    for (int round = 0;; ++round) {
        document.tabData = versions[round % 2];
        document.updateChangeCount(LutegridDocument::ChangeKind::Done);
        if (!document.autosaveInBackground())
            _exit(4);
        (void)!write(signalFd, "s", 1);
        // The other version goes in while the worker writes this one: the file must still be
        // exactly the snapshot's.
        document.tabData = versions[(round + 1) % 2];
        document.updateChangeCount(LutegridDocument::ChangeKind::Done);
        while (document.isSaving())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        (void)!write(signalFd, "d", 1);
    }
}

int removeTemporaries(const QString &path)
{
    const QFileInfo info(path);
    const QString prefix = TabFileNames::saveTempPrefix + info.fileName();
    int removed = 0;
    for (const QString &name : info.absoluteDir().entryList(QDir::Files | QDir::Hidden)) {
        if (name.startsWith(prefix) && QFile::remove(info.absoluteDir().filePath(name)))
            ++removed;
    }
    return removed;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3)
        return 2;
    const QString path = QString::fromLocal8Bit(argv[1]);
    const int rounds = atoi(argv[2]);
    const QByteArray wholeVersions[2] = {documentData(smallTab()), documentData(largeTab())};
    if (!writeFileAtomically(path, wholeVersions[0]))
        return 1;

    qint64 saveNanoseconds = 0;
    int torn = 0, midSave = 0, temporaries = 0;
    for (int round = 0; round < rounds; ++round) {
        int fds[2];
        if (pipe(fds) != 0)
            return 1;
        std::fflush(stdout);
        const pid_t child = fork();
        if (child < 0)
            return 1;
        if (child == 0) {
            close(fds[0]);
            saveForever(argc, argv, path, fds[1]);
        }
        close(fds[1]);
        // The first save of a child also starts its worker; the kill goes into the second.
        char mark = 0;
        for (int marks = 0; marks < 3; ++marks) {
            if (read(fds[0], &mark, 1) != 1) {
                std::printf("round %d: the child did not save\n", round);
                return 1;
            }
        }
        // Kills are spread over the length of one save, measured in the first round.
        QElapsedTimer sinceStart;
        sinceStart.start();
        if (saveNanoseconds == 0) {
            for (int done = 0; done < 4;)
                done += read(fds[0], &mark, 1) == 1 && mark == 'd';
            saveNanoseconds = std::max<qint64>(sinceStart.nsecsElapsed() / 4, 1000);
        } else {
            const qint64 delay = QRandomGenerator::global()->bounded(saveNanoseconds);
            std::this_thread::sleep_for(std::chrono::nanoseconds(delay));
        }
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        // The last mark the child left says whether a save was running.
        char marks[4096];
        for (ssize_t n; (n = read(fds[0], marks, sizeof marks)) > 0;)
            mark = marks[n - 1];
        close(fds[0]);
        midSave += mark == 's';

        QFile file(path);
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (bytes != wholeVersions[0] && bytes != wholeVersions[1]) {
            ++torn;
            std::printf("round %d: %lld bytes that are neither version\n", round,
                        qlonglong(bytes.size()));
        }
        // The last round's stay, for the test to see them cleared away.
        temporaries += round + 1 < rounds ? removeTemporaries(path) : 0;
    }
    std::printf("one save %.2f ms\n", saveNanoseconds / 1e6);
    std::printf("rounds %d torn %d midsave %d temporaries %d\n", rounds, torn, midSave,
                temporaries);
    return 0;
}
