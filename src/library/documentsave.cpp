#include "documentsave.h"

#include "library/fileversion.h"
#include "librarylog.h"
#include "model/tabfileformat.h"
#include "services/apppaths.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QThreadPool>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QLockFile>
#endif

namespace {

// How long a save waits for another process of ours that is saving the same file.
constexpr int lockWait = 1000;

std::optional<QByteArray> readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

#ifdef Q_OS_UNIX
// Keeps our other processes from saving the same file at once. The kernel lets go of an flock
// when its holder dies, however it dies, so a save killed halfway never keeps the next one out
// (a lock file that names its owner can be left empty by a kill, and then blocks for as long
// as it takes to look stale). The file itself stays.
class SaveLock {
public:
    explicit SaveLock(const QString &path)
        : fd(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644))
    {
    }
    ~SaveLock()
    {
        if (fd >= 0)
            ::close(fd);
    }
    SaveLock(const SaveLock &) = delete;
    SaveLock &operator=(const SaveLock &) = delete;

    bool tryLock(int timeout)
    {
        if (fd < 0)
            return false;
        QElapsedTimer waited;
        waited.start();
        while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            if ((errno != EWOULDBLOCK && errno != EINTR) || waited.elapsed() >= timeout)
                return false;
            QThread::msleep(5);
        }
        return true;
    }

private:
    int fd;
};
#else
using SaveLock = QLockFile;
#endif

// Saves have threads of their own: a sample preload on the global pool never holds one up.
QThreadPool &saveWorkers()
{
    static QThreadPool pool;
    static const bool configured = [] {
        pool.setMaxThreadCount(2);
        return true;
    }();
    Q_UNUSED(configured);
    return pool;
}

} // namespace

QByteArray documentContentHash(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5);
}

FileStamp FileStamp::of(const QString &path)
{
#ifdef Q_OS_UNIX
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode))
        return {};
    // Inode and change time fold into one number: equal stamps mean an untouched file.
    const qint64 modified = qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    const qint64 changed = qint64(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec;
    return {qint64(info.st_size), modified ^ (changed << 1) ^ (qint64(info.st_ino) << 20)};
#else
    const QFileInfo info(path);
    if (!info.isFile())
        return {};
    return {info.size(), info.lastModified().toMSecsSinceEpoch()};
#endif
}

bool keepAsConflictVersion(const QString &path, const QByteArray &bytes, const QDateTime &modified)
{
    const QString copyPath = FileVersion::newConflictCopyPath(
        path, modified.isValid() ? modified : QDateTime::currentDateTime());
    QString error;
    if (!writeFileAtomically(copyPath, bytes, &error)) {
        qCWarning(lcLibrary) << "cannot keep the outside version of" << path << error;
        return false;
    }
    if (modified.isValid()) {
        QFile copy(copyPath);
        if (copy.open(QIODevice::ReadWrite))
            copy.setFileTime(modified, QFileDevice::FileModificationTime);
    }
    return true;
}

DocumentSaveResult performDocumentSave(const DocumentSaveRequest &request, const DiskWriter &writer)
{
    DocumentSaveResult result;
    const QString &target = request.target;
    const QByteArray bytes = documentData(request.snapshot);
    AppPaths::ensureDirectory(QFileInfo(target).absolutePath());
    AppPaths::ensureDirectory(QFileInfo(request.lockPath).absolutePath());
    SaveLock lock(request.lockPath);
    if (!lock.tryLock(lockWait)) {
        result.error = u"the file is being saved by another process"_qs;
        return result;
    }
    // What lies there now and is not what the document last saw is someone else's work: it
    // stays as a conflict version rather than being overwritten.
    const QByteArray hash = documentContentHash(bytes);
    const FileStamp disk = FileStamp::of(target);
    const bool known = request.targetIsOwnFile && disk.size == request.knownSize &&
                       disk.modified == request.knownModified;
    if (disk.exists() && !known) {
        const auto current = readAll(target);
        const QByteArray currentHash = current ? documentContentHash(*current) : QByteArray();
        if (current && (!request.targetIsOwnFile || currentHash != request.baseHash) &&
            currentHash != hash) {
            keepAsConflictVersion(target, *current, QFileInfo(target).lastModified());
        }
    }
    result.saved = writer(target, bytes, &result.error);
    if (!result.saved)
        return result;
    result.hash = hash;
    result.written = FileStamp::of(target);
    result.hasConflictVersions =
        !FileVersion::unresolvedConflictVersionsOfItemAtUrl(target).isEmpty();
    return result;
}

std::shared_ptr<DocumentSaveJob>
DocumentSaveJob::start(DocumentSaveRequest request, DiskWriter writer, std::function<void()> posted)
{
    auto job = std::make_shared<DocumentSaveJob>();
    saveWorkers().start([job, request = std::move(request), writer = std::move(writer),
                         posted = std::move(posted)] {
        job->outcome = performDocumentSave(request, writer);
        job->done.store(true);
        if (posted)
            posted();
        job->finished.release();
    });
    return job;
}

void DocumentSaveJob::wait()
{
    if (waited)
        return;
    finished.acquire();
    waited = true;
}
