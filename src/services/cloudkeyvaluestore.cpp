#include "cloudkeyvaluestore.h"

#include "serviceslog.h"
#include "model/plistvariant.h"
#include "services/apppaths.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>
#include <QTimer>
#include <QVariantMap>

Q_LOGGING_CATEGORY(lcServices, "lutegrid.services")

namespace {

constexpr int pollInterval = 1000;

// What a stat tells about a file, to notice a change without reading it.
struct FileStamp {
    qint64 size = -1;
    qint64 modified = 0;

    static FileStamp of(const QString &path)
    {
        const QFileInfo info(path);
        if (!info.exists())
            return {};
        return {info.size(), info.lastModified().toMSecsSinceEpoch()};
    }
    bool exists() const { return size >= 0; }
    friend bool operator==(const FileStamp &, const FileStamp &) = default;
};

// How far a file may expand when read: libplist copies an object for every reference to it,
// so a few hundred bytes of shared lists can describe half a million nodes, which every later
// write would spend seconds writing out and then refuse. A value tree the store writes within
// its quota spends a reference and mostly an object of its own on every node, several bytes
// once the file holds more than 65,536 objects; an eighth of the quota in nodes and the quota
// in text and data is far beyond what labels and chords need. Writes are held to the same
// limits (see fitsQuota), so whatever the store writes always reads back.
PlistVariant::GraphLimits storeLimits()
{
    PlistVariant::GraphLimits limits;
    limits.expandedNodes = CloudKeyValueStore::maximumBytes / 8;
    limits.expandedPayloadBytes = CloudKeyValueStore::maximumBytes;
    return limits;
}

// The file the store would write for these values, or nothing if they pass the quota: too
// many keys, too many bytes, or a tree that would not read back within the store's limits.
std::optional<QByteArray> bytesWithinQuota(const QVariantMap &content)
{
    if (content.size() > CloudKeyValueStore::maximumKeys)
        return std::nullopt;
    auto bytes = PlistVariant::binaryData(content);
    if (!bytes || bytes->size() > CloudKeyValueStore::maximumBytes
        || !PlistVariant::isSafeBinaryPlist(*bytes, storeLimits()))
        return std::nullopt;
    return bytes;
}

struct FileRead {
    bool exists = false;
    QByteArray hash;
    std::optional<QVariantMap> values;
};

// Reads and checks a store file; one whose hash is `knownHash` is not parsed again.
FileRead readStoreFile(const QString &path, const QByteArray &knownHash = {})
{
    FileRead result;
    QFile file(path);
    if (!file.exists())
        return result;
    result.exists = true;
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcServices) << "cannot read key-value store" << path << file.errorString();
        return result;
    }
    if (file.size() > CloudKeyValueStore::maximumBytes) {
        qCWarning(lcServices) << "key-value store too large to read" << path;
        return result;
    }
    const QByteArray bytes = file.read(CloudKeyValueStore::maximumBytes + 1);
    if (bytes.size() > CloudKeyValueStore::maximumBytes) {
        qCWarning(lcServices) << "key-value store too large to read" << path;
        return result;
    }
    result.hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
    if (result.hash == knownHash)
        return result;
    result.values = CloudKeyValueStore::valuesFromFileData(bytes);
    if (!result.values)
        qCWarning(lcServices) << "key-value store unreadable or past its quota" << path;
    return result;
}

// The keys whose values differ between two states, including keys that only one holds.
QStringList changedKeys(const QVariantMap &before, const QVariantMap &after)
{
    QStringList keys;
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        const auto other = after.constFind(it.key());
        if (other == after.cend() || other.value() != it.value())
            keys.append(it.key());
    }
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (!before.contains(it.key()))
            keys.append(it.key());
    }
    return keys;
}

// Copies that sync clients leave when two machines changed the file at once: Syncthing's
// "name.sync-conflict-<date>-<time>-<device>.plist", Nextcloud's "name (conflicted copy
// <date>).plist" and Dropbox's "name (<user>'s conflicted copy <date>).plist".
bool isConflictCopyName(const QString &name)
{
    static const QRegularExpression pattern(
        u"^lutegrid-keyvalues(\\.sync-conflict-.*| \\(.*conflicted copy.*\\))\\.plist$"_qs,
        QRegularExpression::CaseInsensitiveOption);
    return pattern.match(name).hasMatch();
}

} // namespace

std::optional<QVariantMap> CloudKeyValueStore::valuesFromFileData(QByteArrayView bytes)
{
    if (bytes.size() > maximumBytes)
        return std::nullopt;
    auto values = PlistVariant::dictionaryFromData(bytes, storeLimits());
    // A file that the store could not write back within its quota is unreadable: held, it
    // would make every later write fail.
    if (values && !bytesWithinQuota(*values))
        return std::nullopt;
    return values;
}

std::optional<QByteArray> CloudKeyValueStore::fileDataForValues(const QVariantMap &values)
{
    return bytesWithinQuota(values);
}

struct CloudKeyValueStore::Private {
    Private(CloudKeyValueStore *store, const QString &dir) : q(store), folder(dir) {}

    CloudKeyValueStore *q;
    QString folder;
    QVariantMap values;
    // Keys changed here whose write has not reached the file yet; outside changes leave them.
    QSet<QString> pendingKeys;
    // The file as last written or read here, so that our own writes never count as outside.
    QByteArray knownHash;
    FileStamp knownStamp;
    // Conflict copies that could not be read, passed over until they change.
    QHash<QString, FileStamp> skippedCopies;
    QFileSystemWatcher watcher;
    QTimer pollTimer;

    QString path() const { return QDir(folder).filePath(fileName); }

    void announce(ChangeReason reason, const QStringList &keys)
    {
        // Listeners hear of changes from the event loop, never from inside our own calls, so
        // that they may call back into the store.
        QMetaObject::invokeMethod(
            q, [this, reason, keys] { Q_EMIT q->didChangeExternally(reason, keys); },
            Qt::QueuedConnection);
    }

    void arm()
    {
        if (QFileInfo::exists(folder) && !watcher.directories().contains(folder))
            watcher.addPath(folder);
        const QString file = path();
        if (QFileInfo::exists(file) && !watcher.files().contains(file))
            watcher.addPath(file);
    }

    void disarm()
    {
        const QStringList watched = watcher.files() + watcher.directories();
        if (!watched.isEmpty())
            watcher.removePaths(watched);
    }

    bool write(const QVariantMap &content, const QByteArray &bytes)
    {
        if (!AppPaths::ensureDirectory(folder)) {
            qCWarning(lcServices) << "cannot make key-value store folder" << folder;
            return false;
        }
        QSaveFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()
            || !file.commit()) {
            qCWarning(lcServices) << "cannot write key-value store" << path() << file.errorString();
            return false;
        }
        values = content;
        pendingKeys.clear();
        knownHash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
        knownStamp = FileStamp::of(path());
        // The rename put a new file in place; the watch on the old one is gone with it.
        watcher.removePath(path());
        arm();
        return true;
    }

    bool writeValues()
    {
        const auto bytes = bytesWithinQuota(values);
        if (!bytes) {
            qCWarning(lcServices) << "key-value store over its quota, not written" << path();
            return false;
        }
        return write(values, *bytes);
    }

    // Reads the file if it changed since we last wrote or read it, and takes in its values
    // key by key. An unreadable file leaves what we hold: a sync client may be partway through.
    void takeOutsideChanges(bool evenIfSameStamp)
    {
        const QString file = path();
        const FileStamp stamp = FileStamp::of(file);
        if (!stamp.exists()) {
            knownStamp = stamp;
            return;
        }
        if (stamp == knownStamp && !evenIfSameStamp)
            return;
        knownStamp = stamp;
        const FileRead read = readStoreFile(file, knownHash);
        if (!read.exists || read.hash.isEmpty() || read.hash == knownHash)
            return;
        knownHash = read.hash;
        if (!read.values) {
            qCWarning(lcServices) << "key-value store is unreadable, keeping what we hold" << file;
            return;
        }
        QVariantMap merged = *read.values;
        for (const QString &key : std::as_const(pendingKeys)) {
            if (values.contains(key))
                merged.insert(key, values.value(key));
            else
                merged.remove(key);
        }
        const QStringList keys = changedKeys(values, merged);
        values = merged;
        if (!keys.isEmpty())
            announce(ServerChange, keys);
    }

    void mergeConflictCopies()
    {
        const QDir dir(folder);
        if (!dir.exists())
            return;
        QStringList copies;
        QStringList merged;
        QVariantMap content = values;
        const QStringList names =
            dir.entryList({u"lutegrid-keyvalues*"_qs}, QDir::Files | QDir::Hidden);
        for (const QString &name : names) {
            if (!isConflictCopyName(name))
                continue;
            const QString copyPath = dir.filePath(name);
            const FileStamp stamp = FileStamp::of(copyPath);
            if (skippedCopies.value(copyPath) == stamp)
                continue;
            const FileRead read = readStoreFile(copyPath);
            if (!read.values) {
                qCWarning(lcServices) << "conflict copy is unreadable, left in place" << copyPath;
                skippedCopies.insert(copyPath, stamp);
                continue;
            }
            skippedCopies.remove(copyPath);
            for (auto it = read.values->cbegin(); it != read.values->cend(); ++it) {
                if (!content.contains(it.key()) && content.size() < maximumKeys) {
                    content.insert(it.key(), it.value());
                    merged.append(it.key());
                }
            }
            copies.append(copyPath);
        }
        if (copies.isEmpty())
            return;
        if (!merged.isEmpty()) {
            const auto bytes = bytesWithinQuota(content);
            // A merge that would pass the quota or can't be written keeps the copies for later.
            if (!bytes || !write(content, *bytes))
                return;
            announce(ServerChange, merged);
        }
        for (const QString &copyPath : std::as_const(copies)) {
            if (!QFile::remove(copyPath))
                qCWarning(lcServices) << "cannot remove conflict copy" << copyPath;
        }
    }

    void check(bool evenIfSameStamp)
    {
        takeOutsideChanges(evenIfSameStamp);
        mergeConflictCopies();
        arm();
    }

    // Loads what lies in the folder. Values held so far that the folder's file lacks are kept
    // and written there, so moving to a fresh folder loses nothing.
    void load()
    {
        skippedCopies.clear();
        knownHash.clear();
        const QString file = path();
        knownStamp = FileStamp::of(file);
        const FileRead read = readStoreFile(file);
        if (read.exists) {
            knownHash = read.hash;
            if (read.values) {
                QVariantMap loaded = *read.values;
                bool carried = false;
                for (auto it = values.cbegin(); it != values.cend(); ++it) {
                    if (!loaded.contains(it.key())) {
                        loaded.insert(it.key(), it.value());
                        carried = true;
                    }
                }
                // Values carried over that would take the file past its quota stay behind:
                // held, they would make every later write fail.
                if (carried && !bytesWithinQuota(loaded)) {
                    qCWarning(lcServices) << "values held here pass the quota of" << file
                                          << ", taking the file's alone";
                    loaded = *read.values;
                    carried = false;
                }
                const QStringList keys = changedKeys(values, loaded);
                values = loaded;
                announce(InitialSyncChange, keys);
                if (carried)
                    pendingKeys = QSet<QString>(values.keyBegin(), values.keyEnd());
            } else {
                qCWarning(lcServices) << "key-value store is unreadable, taken as empty" << file;
            }
        } else if (!values.isEmpty()) {
            pendingKeys = QSet<QString>(values.keyBegin(), values.keyEnd());
        }
        if (!pendingKeys.isEmpty())
            writeValues();
        mergeConflictCopies();
        arm();
    }
};

CloudKeyValueStore &CloudKeyValueStore::shared()
{
    // Made on first use and never torn down, like the other application-wide services.
    static CloudKeyValueStore *store = new CloudKeyValueStore(AppPaths::libraryDirectory());
    return *store;
}

CloudKeyValueStore::CloudKeyValueStore(const QString &folder, QObject *parent)
    : QObject(parent), d(new Private(this, folder))
{
    // A rewrite within one clock tick of ours, of the same size, has our stamp: when the watcher
    // reports a change the file is read, and only its content tells.
    connect(&d->watcher, &QFileSystemWatcher::fileChanged, this, [this] { d->check(true); });
    connect(&d->watcher, &QFileSystemWatcher::directoryChanged, this, [this] { d->check(true); });
    // Some synced folders (network mounts, FUSE) report no changes: a cheap stat catches them.
    connect(&d->pollTimer, &QTimer::timeout, this, [this] { d->check(false); });
    d->pollTimer.start(pollInterval);
    d->load();
}

CloudKeyValueStore::~CloudKeyValueStore()
{
    if (!d->pendingKeys.isEmpty())
        d->writeValues();
    delete d;
}

void CloudKeyValueStore::setFolder(const QString &folder)
{
    if (folder == d->folder)
        return;
    if (!d->pendingKeys.isEmpty())
        d->writeValues();
    d->disarm();
    d->folder = folder;
    d->load();
}

QString CloudKeyValueStore::folder() const
{
    return d->folder;
}

QString CloudKeyValueStore::filePath() const
{
    return d->path();
}

QVariant CloudKeyValueStore::objectForKey(const QString &key) const
{
    return d->values.value(key);
}

QVariantMap CloudKeyValueStore::dictionaryForKey(const QString &key) const
{
    const QVariant value = d->values.value(key);
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

QVariantList CloudKeyValueStore::arrayForKey(const QString &key) const
{
    const QVariant value = d->values.value(key);
    return value.typeId() == QMetaType::QVariantList ? value.toList() : QVariantList();
}

void CloudKeyValueStore::setObject(const QVariant &value, const QString &key)
{
    if (!value.isValid()) {
        removeObjectForKey(key);
        return;
    }
    const auto stored = PlistVariant::normalized(value);
    if (!stored) {
        qCWarning(lcServices) << "not a property-list value, not stored:" << key << value;
        return;
    }
    // Outside changes not yet reported must be taken in first, or this write would bury them.
    d->takeOutsideChanges(true);
    const auto current = d->values.constFind(key);
    if (current != d->values.cend() && current.value() == *stored
        && current.value().typeId() == stored->typeId())
        return;
    QVariantMap content = d->values;
    content.insert(key, *stored);
    const auto bytes = bytesWithinQuota(content);
    if (!bytes) {
        d->announce(QuotaViolationChange, {key});
        return;
    }
    d->values = content;
    d->pendingKeys.insert(key);
    d->write(content, *bytes);
}

void CloudKeyValueStore::removeObjectForKey(const QString &key)
{
    d->takeOutsideChanges(true);
    if (!d->values.contains(key))
        return;
    d->values.remove(key);
    d->pendingKeys.insert(key);
    d->writeValues();
}

bool CloudKeyValueStore::synchronize()
{
    d->takeOutsideChanges(true);
    const bool written = d->pendingKeys.isEmpty() || d->writeValues();
    d->mergeConflictCopies();
    d->arm();
    return written;
}
