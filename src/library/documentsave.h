#pragma once

#include "model/tabdata.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

#include <QSemaphore>

// Writes bytes to a path whole or not at all; the document's way to the disk, which a test can
// replace with a slow or failing one.
using DiskWriter =
    std::function<bool(const QString &path, const QByteArray &bytes, QString *error)>;

// The hash by which a document knows its own bytes on disk.
QByteArray documentContentHash(const QByteArray &bytes);

// A stat of a file: a rewrite in place, a rename over it and a new file all change it.
struct FileStamp {
    qint64 size = -1;
    qint64 modified = 0;

    static FileStamp of(const QString &path);
    bool exists() const { return size >= 0; }
};

// Keeps bytes found at `path` as a conflict version beside it, dated `modified`.
bool keepAsConflictVersion(const QString &path, const QByteArray &bytes, const QDateTime &modified);

// Everything one save needs, taken on the UI thread: the tab is a copy-on-write copy, so taking
// it costs next to nothing and later edits leave it alone.
struct DocumentSaveRequest {
    TabData snapshot;
    QString target;
    QString lockPath;
    // What the document last saw in its own file; anything else found at the target is
    // someone else's work and is kept as a conflict version.
    bool targetIsOwnFile = false;
    qint64 knownSize = -1;
    qint64 knownModified = 0;
    QByteArray baseHash;
};

struct DocumentSaveResult {
    bool saved = false;
    QString error;
    // Of the bytes written, and the file's stamp right after.
    QByteArray hash;
    FileStamp written;
    // Whether unresolved conflict versions lie beside the target after the save.
    bool hasConflictVersions = false;
};

// Encodes, checks what lies on disk, writes and hashes: the whole save, on whichever thread.
DocumentSaveResult performDocumentSave(const DocumentSaveRequest &request,
                                       const DiskWriter &writer);

// One save running on the save workers. `posted` runs on the worker once the result is in,
// before wait() returns to anyone, so whoever waits in a destructor never outlives a notice
// that the worker is still about to post.
class DocumentSaveJob {
public:
    static std::shared_ptr<DocumentSaveJob> start(DocumentSaveRequest request, DiskWriter writer,
                                                  std::function<void()> posted);
    void wait();
    bool isDone() const { return done.load(); }
    // Only once done.
    const DocumentSaveResult &result() const { return outcome; }

private:
    DocumentSaveResult outcome;
    std::atomic<bool> done{false};
    QSemaphore finished;
    bool waited = false;
};
