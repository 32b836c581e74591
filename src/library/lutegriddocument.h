#pragma once

#include "library/documentsave.h"
#include "library/fileversion.h"
#include "model/tabdata.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFlags>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>

class LgUndoManager;
class QFileSystemWatcher;
class TabEdits;

// The editor that shows a document: it hears of reloads and conflicts. It edits the
// document's own rows through edits(), so a save never asks it for anything.
class DocumentChangeListener {
public:
    virtual ~DocumentChangeListener() = default;
    virtual void documentConflictDetected(const std::optional<QList<FileVersion>> &versions) = 0;
    virtual void documentReloaded(const TabData &tabData) = 0;
};

// One tab file and its model. Saves are deferred after changes and written whole, by way of a
// temporary file renamed into place; the deferred ones are encoded and written on a worker from
// a copy-on-write snapshot, so typing never waits on the disk, and closing or quitting waits
// for a save still running. The document states don't change while such a save runs: editing
// stays enabled, and the edits made meanwhile go in the next save. Changes to the file from outside (a sync client, another
// process) are noticed while the document is open: a document with no unsaved changes takes
// them in, one with unsaved changes keeps the outside version as a conflict version, so that
// the user chooses and nothing is lost.
class LutegridDocument : public QObject {
    Q_OBJECT

public:
    enum DocumentStateFlag {
        Normal = 0,
        Closed = 1,
        InConflict = 2,
        SavingError = 4,
        EditingDisabled = 8,
        ProgressAvailable = 16,
    };
    Q_DECLARE_FLAGS(DocumentState, DocumentStateFlag)
    enum class SaveOperation { ForCreating, ForOverwriting };
    enum class ChangeKind { Done, Undone, Redone, Cleared };

    LutegridDocument(const QString &fileURL, std::optional<TabData> tabData,
                     QObject *parent = nullptr);
    ~LutegridDocument() override;

    std::optional<TabData> tabData;
    std::optional<QString> tabName;
    std::optional<QString> prevFileURL;
    DocumentChangeListener *changeListener = nullptr;

    // Milliseconds: a save follows the last change after autosaveDelay, and the first unsaved
    // change after autosaveMaximumDelay at the latest. The file is looked at every
    // pollInterval besides the file system's own notices, which a rename can cut off.
    int autosaveDelay = 2000;
    int autosaveMaximumDelay = 10000;
    int pollInterval = 1000;

    QString fileURL() const { return path; }
    // The file name without its extension.
    QString localizedName() const;
    DocumentState documentState() const { return state; }
    LgUndoManager *undoManager() const { return undo; }
    // The edits of tabData, each with its step on undoManager(): the one way the rows change
    // while the tab is open.
    TabEdits *edits();
    int changeCount() const { return changes; }
    bool hasUnsavedChanges() const { return changes != 0; }
    void updateChangeCount(ChangeKind kind);

    // Reads the file. Success with tabData absent means the file could not be understood.
    bool open();
    // Saves now and returns when the file is written.
    bool saveToURL(const QString &url, SaveOperation operation);
    // Saves now if anything is unsaved, and returns when the file is written.
    bool autosave();
    // The deferred save: takes the tab as it stands and writes it on a worker, so the UI
    // thread goes on at once. Edits meanwhile stay unsaved and go in the next save. False
    // when no save was started.
    bool autosaveInBackground();
    bool isSaving() const { return running.has_value(); }
    // Returns once the save on the worker, if any, is written and taken in.
    void waitForSave();
    // The way to the disk; tests put a slow or failing one in.
    DiskWriter diskWriter = writeFileAtomically;
    // Saves what is unsaved, then stops watching the file.
    bool close();
    // Drops unsaved changes and loads the file at `url`.
    bool revertToContentsOfURL(const QString &url);

    // The bytes of the model, or nothing without one.
    std::optional<QByteArray> contentsForType() const;
    // False when the bytes are no tab; an open document then keeps the tab it has.
    bool loadFromContents(const QByteArray &contents);

    // Looks at the file now instead of at the next notice.
    void checkFile();
    QList<FileVersion> unresolvedConflictVersions() const;

Q_SIGNALS:
    void documentStateChanged();
    // New contents from outside have replaced the model.
    void documentReloaded();
    // The file was renamed from outside, and the document followed it.
    void documentMoved(const QString &oldPath, const QString &newPath);
    // The file the document stands for is another than before: whoever keeps documents by
    // file name follows it.
    void fileURLChanged(const std::optional<QString> &prevURL, const QString &url);

private:
    void docStateChange();
    void setState(DocumentState newState);
    void scheduleAutosave();
    void startWatching();
    void stopWatching();
    void queueCheck();
    void checkForConflicts();
    void followNameAndPlace();
    void takeOutsideChange(const QByteArray &bytes, const QByteArray &hash);
    void followMove(const QString &newPath);
    std::optional<DocumentSaveRequest> saveRequest(const QString &target) const;
    bool finishSave(const QString &target, SaveOperation operation, int changesAtSnapshot,
                    const DocumentSaveResult &result);
    void takeFinishedSave();
    std::optional<QString> findMovedFile() const;
    QString lockFilePath() const;

    QString path;
    DocumentState state = Closed;
    int changes = 0;
    LgUndoManager *undo;
    TabEdits *tabEdits;
    // What the file held when this document last read or wrote it.
    QByteArray baseHash;
    qint64 knownSize = -1;
    qint64 knownModified = 0;
    QFileSystemWatcher *watcher = nullptr;
    QTimer autosaveTimer;
    QTimer pollTimer;
    QElapsedTimer firstUnsavedChange;
    bool checkQueued = false;
    struct RunningSave {
        std::shared_ptr<DocumentSaveJob> job;
        QString target;
        // The change count the save's snapshot stands for.
        int changesAtSnapshot = 0;
    };
    std::optional<RunningSave> running;
    // The deferred save came due while another was running.
    bool saveAgainWhenDone = false;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(LutegridDocument::DocumentState)
