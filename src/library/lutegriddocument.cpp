#include "lutegriddocument.h"

#include "library/tabedits.h"
#include "library/tabfilenames.h"
#include "librarylog.h"
#include "model/tabfileformat.h"
#include "services/analytics.h"
#include "services/apppaths.h"
#include "services/lgundomanager.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>

#include <algorithm>
#include <utility>

Q_LOGGING_CATEGORY(lcLibrary, "lutegrid.library")

namespace {

std::optional<QByteArray> readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

// A tab file to load: one larger than any tab is refused before a byte of it is read, and
// reads as unreadable.
std::optional<QByteArray> readTabFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maximumTabFileBytes)
        return std::nullopt;
    QByteArray bytes = file.read(maximumTabFileBytes + 1);
    if (file.error() != QFileDevice::NoError || bytes.size() > maximumTabFileBytes)
        return std::nullopt;
    return bytes;
}

} // namespace

LutegridDocument::LutegridDocument(const QString &fileURL, std::optional<TabData> tabData,
                                   QObject *parent)
    : QObject(parent), tabData(std::move(tabData)),
      prevFileURL(QFileInfo(fileURL).absoluteFilePath()),
      path(QFileInfo(fileURL).absoluteFilePath()), undo(new LgUndoManager(this)),
      tabEdits(new TabEdits(nullptr, undo, this))
{
    autosaveTimer.setSingleShot(true);
    connect(&autosaveTimer, &QTimer::timeout, this, [this] { autosaveInBackground(); });
    connect(&pollTimer, &QTimer::timeout, this, &LutegridDocument::checkFile);
    connect(this, &LutegridDocument::documentStateChanged, this, &LutegridDocument::docStateChange);
    connect(undo, &LgUndoManager::changed, this, [this](LgUndoManager::Change change) {
        switch (change) {
        case LgUndoManager::Change::Done:
            updateChangeCount(ChangeKind::Done);
            break;
        case LgUndoManager::Change::Undone:
            updateChangeCount(ChangeKind::Undone);
            break;
        case LgUndoManager::Change::Redone:
            updateChangeCount(ChangeKind::Redone);
            break;
        }
    });
    if (QCoreApplication::instance()) {
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
                [this] { autosave(); });
    }
}

LutegridDocument::~LutegridDocument()
{
    autosave();
}

TabEdits *LutegridDocument::edits()
{
    // tabData is the optional's own storage, so its address holds for as long as it is there.
    tabEdits->setTab(tabData ? &*tabData : nullptr);
    return tabEdits;
}

QString LutegridDocument::localizedName() const
{
    return QFileInfo(path).completeBaseName();
}

void LutegridDocument::setState(DocumentState newState)
{
    if (newState == state)
        return;
    state = newState;
    Q_EMIT documentStateChanged();
}

void LutegridDocument::docStateChange()
{
    if (state.testFlag(InConflict)) {
        Analytics::logEvent(u"Conflict detected"_qs);
        if (changeListener)
            changeListener->documentConflictDetected(unresolvedConflictVersions());
    }
    if (state.testFlag(SavingError))
        Analytics::logEvent(u"Gt saving error"_qs);
}

void LutegridDocument::updateChangeCount(ChangeKind kind)
{
    switch (kind) {
    case ChangeKind::Done:
    case ChangeKind::Redone:
        ++changes;
        break;
    case ChangeKind::Undone:
        --changes;
        break;
    case ChangeKind::Cleared:
        changes = 0;
        // Whatever the running save writes counts as saved too.
        if (running)
            running->changesAtSnapshot = 0;
        break;
    }
    if (changes == 0) {
        autosaveTimer.stop();
        firstUnsavedChange.invalidate();
        return;
    }
    scheduleAutosave();
}

void LutegridDocument::scheduleAutosave()
{
    if (state.testFlag(Closed))
        return;
    if (!firstUnsavedChange.isValid())
        firstUnsavedChange.start();
    const qint64 left = autosaveMaximumDelay - firstUnsavedChange.elapsed();
    autosaveTimer.start(
        int(std::clamp<qint64>(std::min<qint64>(autosaveDelay, left), 0, autosaveMaximumDelay)));
}

bool LutegridDocument::autosave()
{
    waitForSave();
    autosaveTimer.stop();
    if (changes == 0 || state.testFlag(Closed))
        return true;
    return saveToURL(path, SaveOperation::ForOverwriting);
}

std::optional<QByteArray> LutegridDocument::contentsForType() const
{
    if (!tabData)
        return std::nullopt;
    return documentData(*tabData);
}

QString LutegridDocument::lockFilePath() const
{
    const QByteArray key = QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5);
    return QDir(AppPaths::temporaryDirectory())
        .filePath(u"locks/"_qs + QString::fromLatin1(key.toHex()) + u".lock"_qs);
}

std::optional<DocumentSaveRequest> LutegridDocument::saveRequest(const QString &target) const
{
    if (!tabData) {
        qCWarning(lcLibrary) << "save before the tab was loaded" << target;
        return std::nullopt;
    }
    return DocumentSaveRequest{.snapshot = *tabData,
                               .target = target,
                               .lockPath = lockFilePath(),
                               .targetIsOwnFile = target == path,
                               .knownSize = knownSize,
                               .knownModified = knownModified,
                               .baseHash = baseHash};
}

bool LutegridDocument::saveToURL(const QString &url, SaveOperation operation)
{
    waitForSave();
    const QString target = QFileInfo(url).absoluteFilePath();
    const auto request = saveRequest(target);
    DocumentSaveResult result;
    if (request)
        result = performDocumentSave(*request, diskWriter);
    return finishSave(target, operation, changes, result);
}

bool LutegridDocument::autosaveInBackground()
{
    autosaveTimer.stop();
    if (changes == 0 || state.testFlag(Closed))
        return false;
    if (running) {
        // One save at a time: the edits since this one began go in the next.
        saveAgainWhenDone = true;
        return false;
    }
    auto request = saveRequest(path);
    if (!request)
        return false;
    saveAgainWhenDone = false;
    // From here the change count runs against what this save writes; edits from now on are
    // the next save's.
    firstUnsavedChange.invalidate();
    // The worker only posts; the destructor waits for the job, so `this` outlives the post.
    // A notice of a save that a wait has already taken in finds nothing to do.
    auto posted = [this] {
        QMetaObject::invokeMethod(this, &LutegridDocument::takeFinishedSave, Qt::QueuedConnection);
    };
    const auto job = DocumentSaveJob::start(std::move(*request), diskWriter, posted);
    running = RunningSave{job, path, changes};
    return true;
}

void LutegridDocument::takeFinishedSave()
{
    if (!running || !running->job->isDone())
        return;
    const RunningSave save = *std::exchange(running, std::nullopt);
    save.job->wait();
    finishSave(save.target, SaveOperation::ForOverwriting, save.changesAtSnapshot,
               save.job->result());
    if (changes != 0 && saveAgainWhenDone && !state.testFlag(SavingError))
        autosaveInBackground();
}

void LutegridDocument::waitForSave()
{
    if (!running)
        return;
    const RunningSave save = *std::exchange(running, std::nullopt);
    save.job->wait();
    // Whatever is still unsaved goes back to the deferred save, unless the caller saves it.
    saveAgainWhenDone = false;
    finishSave(save.target, SaveOperation::ForOverwriting, save.changesAtSnapshot,
               save.job->result());
}

bool LutegridDocument::finishSave(const QString &target, SaveOperation operation,
                                  int changesAtSnapshot, const DocumentSaveResult &result)
{
    DocumentState next = state;
    if (result.saved) {
        if (target != path) {
            path = target;
            if (watcher)
                startWatching();
        }
        baseHash = result.hash;
        knownSize = result.written.size;
        knownModified = result.written.modified;
        // What was changed after the snapshot is still unsaved.
        changes -= changesAtSnapshot;
        next &= ~DocumentState(SavingError);
        if (operation == SaveOperation::ForCreating && state.testFlag(Closed)) {
            next &= ~DocumentState(Closed);
            startWatching();
        }
        if (changes == 0) {
            firstUnsavedChange.invalidate();
            autosaveTimer.stop();
        } else if (!autosaveTimer.isActive() && !saveAgainWhenDone) {
            scheduleAutosave();
        }
    } else {
        if (!result.error.isEmpty())
            qCWarning(lcLibrary) << "save failed" << target << result.error;
        next |= SavingError;
        if (!state.testFlag(Closed) && changes != 0) {
            // The edits stay unsaved; try again later, as an autosave would.
            saveAgainWhenDone = false;
            firstUnsavedChange.start();
            autosaveTimer.start(autosaveMaximumDelay);
        }
    }
    if (result.saved && !next.testFlag(Closed))
        next.setFlag(InConflict, result.hasConflictVersions);
    setState(next);
    return result.saved;
}

bool LutegridDocument::loadFromContents(const QByteArray &contents)
{
    followNameAndPlace();
    QString error;
    std::optional<TabData> loaded = tabDataFromDocumentData(contents, &error);
    if (!loaded) {
        qCWarning(lcLibrary) << "unreadable tab" << path << error;
        // Half-written or foreign bytes while the tab is open: the tab in hand (which an
        // editor may be editing in place) is worth more than nothing; a later save writes a
        // readable file over the damaged one.
        if (tabData && !state.testFlag(Closed))
            return false;
        tabData.reset();
        edits();
        return false;
    }
    if (tabName)
        loaded->title = *tabName;
    // Into the same storage: whoever edits the tab keeps a valid reference to it.
    if (tabData)
        *tabData = std::move(*loaded);
    else
        tabData = std::move(loaded);
    edits();
    if (changeListener)
        changeListener->documentReloaded(*tabData);
    return true;
}

void LutegridDocument::followNameAndPlace()
{
    const QString name = localizedName();
    if (!name.trimmed().isEmpty()) {
        bool onlyBlanks = true;
        for (QChar c : name) {
            if (c != u' ' && c != u'\t')
                onlyBlanks = false;
        }
        if (!onlyBlanks)
            tabName = name;
    }
    if (prevFileURL != std::optional<QString>(path)) {
        Q_EMIT fileURLChanged(prevFileURL, path);
        prevFileURL = path;
    }
}

bool LutegridDocument::open()
{
    if (!state.testFlag(Closed))
        return true;
    waitForSave();
    const FileStamp stamp = FileStamp::of(path);
    const auto bytes = readTabFile(path);
    if (!bytes)
        return false;
    baseHash = documentContentHash(*bytes);
    knownSize = stamp.size;
    knownModified = stamp.modified;
    changes = 0;
    loadFromContents(*bytes);
    removeStaleSaveTemporaries(path);
    startWatching();
    DocumentState next = state & ~DocumentState(Closed);
    if (!FileVersion::unresolvedConflictVersionsOfItemAtUrl(path).isEmpty())
        next |= InConflict;
    setState(next);
    return true;
}

bool LutegridDocument::close()
{
    if (state.testFlag(Closed))
        return true;
    const bool saved = autosave();
    stopWatching();
    setState((state | Closed) & ~DocumentState(InConflict));
    return saved;
}

bool LutegridDocument::revertToContentsOfURL(const QString &url)
{
    waitForSave();
    const QString target = QFileInfo(url).absoluteFilePath();
    const FileStamp stamp = FileStamp::of(target);
    const auto bytes = readTabFile(target);
    if (!bytes)
        return false;
    if (target != path) {
        path = target;
        if (watcher)
            startWatching();
    }
    baseHash = documentContentHash(*bytes);
    knownSize = stamp.size;
    knownModified = stamp.modified;
    changes = 0;
    autosaveTimer.stop();
    firstUnsavedChange.invalidate();
    loadFromContents(*bytes);
    Q_EMIT documentReloaded();
    checkForConflicts();
    return true;
}

void LutegridDocument::startWatching()
{
    if (!watcher) {
        watcher = new QFileSystemWatcher(this);
        connect(watcher, &QFileSystemWatcher::fileChanged, this, &LutegridDocument::queueCheck);
        connect(watcher, &QFileSystemWatcher::directoryChanged, this,
                &LutegridDocument::queueCheck);
    }
    const QStringList watched = watcher->files() + watcher->directories();
    if (!watched.isEmpty())
        watcher->removePaths(watched);
    watcher->addPath(QFileInfo(path).absolutePath());
    if (QFileInfo::exists(path))
        watcher->addPath(path);
    pollTimer.start(pollInterval);
}

void LutegridDocument::stopWatching()
{
    pollTimer.stop();
    delete watcher;
    watcher = nullptr;
}

void LutegridDocument::queueCheck()
{
    if (checkQueued)
        return;
    checkQueued = true;
    QTimer::singleShot(0, this, [this] {
        checkQueued = false;
        checkFile();
    });
}

std::optional<QString> LutegridDocument::findMovedFile() const
{
    // A rename keeps the bytes: the file that now holds exactly what this document last saw.
    const QDir dir = QFileInfo(path).absoluteDir();
    const QStringList names = dir.entryList(QDir::Files | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        if (!TabFileNames::isTabEntryName(name))
            continue;
        const QString candidate = dir.filePath(name);
        if (candidate == path || QFileInfo(candidate).size() != knownSize)
            continue;
        const auto bytes = readAll(candidate);
        if (bytes && documentContentHash(*bytes) == baseHash)
            return candidate;
    }
    return std::nullopt;
}

void LutegridDocument::checkFile()
{
    // Our own save is changing the file: what it leaves is looked at once it is taken in.
    if (state.testFlag(Closed) || running)
        return;
    const FileStamp stamp = FileStamp::of(path);
    if (!stamp.exists()) {
        // Gone: renamed, or deleted and perhaps about to come back. Until then the document
        // keeps what it has, and a save writes it anew.
        if (knownSize >= 0) {
            if (const auto moved = findMovedFile())
                followMove(*moved);
        }
    } else if (stamp.size != knownSize || stamp.modified != knownModified) {
        const auto bytes = readTabFile(path);
        if (bytes) {
            knownSize = stamp.size;
            knownModified = stamp.modified;
            const QByteArray hash = documentContentHash(*bytes);
            if (hash != baseHash)
                takeOutsideChange(*bytes, hash);
        }
    }
    if (watcher && QFileInfo::exists(path) && !watcher->files().contains(path))
        watcher->addPath(path);
    checkForConflicts();
}

void LutegridDocument::takeOutsideChange(const QByteArray &bytes, const QByteArray &hash)
{
    baseHash = hash;
    if (hasUnsavedChanges()) {
        // Unsaved work and a new outside version: keep both and let the user choose. The
        // next save writes this document's version over the file.
        keepAsConflictVersion(path, bytes, QFileInfo(path).lastModified());
        checkForConflicts();
        return;
    }
    if (loadFromContents(bytes))
        Q_EMIT documentReloaded();
}

void LutegridDocument::followMove(const QString &newPath)
{
    const QString oldPath = path;
    path = newPath;
    const FileStamp stamp = FileStamp::of(path);
    knownSize = stamp.size;
    knownModified = stamp.modified;
    if (watcher)
        startWatching();
    if (!hasUnsavedChanges()) {
        if (const auto bytes = readTabFile(path))
            loadFromContents(*bytes);
    } else {
        // The bytes on disk are older than the model: follow the name, keep the model.
        followNameAndPlace();
        if (tabName && tabData)
            tabData->title = *tabName;
    }
    Q_EMIT documentMoved(oldPath, newPath);
}

void LutegridDocument::checkForConflicts()
{
    if (state.testFlag(Closed))
        return;
    const bool conflict = !unresolvedConflictVersions().isEmpty();
    if (conflict != state.testFlag(InConflict))
        setState(conflict ? (state | InConflict) : (state & ~DocumentState(InConflict)));
}

QList<FileVersion> LutegridDocument::unresolvedConflictVersions() const
{
    return FileVersion::unresolvedConflictVersionsOfItemAtUrl(path);
}
