#pragma once

#include "music/chordshortcut.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

class CloudKeyValueStore;

// A reference to a chord by name: its shape is looked up again in the current tuning.
struct RecentChord {
    QString name;
    bool isCustom = false;

    friend bool operator==(const RecentChord &, const RecentChord &) = default;

    ArchiveValue toArchiveValue() const;
    static std::optional<RecentChord> fromArchiveValue(const ArchiveValue &value);
};

template <typename T> struct MoveToFrontResult {
    bool changed = false;
    std::optional<T> dropped;
};

// The rule of both chord lists: the chord goes to the front, an equal entry elsewhere leaves,
// and the list keeps at most `limit` entries.
template <typename T>
MoveToFrontResult<T> moveToFront(QList<T> &list, const T &item, qsizetype limit)
{
    MoveToFrontResult<T> result;
    if (!list.isEmpty() && list.first() == item)
        return result;
    list.removeOne(item);
    list.prepend(item);
    if (list.size() > limit)
        result.dropped = list.takeLast();
    result.changed = true;
    return result;
}

// Everything that outlives a run and does not belong to a tab, in "data.plist".
// Nothing is written by itself: whoever changes a field that must last calls save().
class SavedData {
public:
    // The process-wide settings, loaded from the library folder on first use.
    static SavedData &shared();
    // Loads the shared settings from the file again, as a new start would.
    static void resetShared();

    SavedData(const QString &filePath, CloudKeyValueStore *cloudStore);

    QString filePath;
    QString tabTagFileURL;
    static constexpr int recentChordLimit = 10;
    int customChordLimit = 50;
    bool createdFirstTab = false;
    qint64 tabCreateCount = 0;
    bool icloudOff = false;
    bool notesOnTab = false;
    bool hasTurnedICloudOff = false;
    std::optional<QList<RecentChord>> recentChords;
    std::optional<QList<ChordShortcut>> customChordShortcuts;
    bool saveCustomChordsLocally = true;
    std::optional<double> lastReviewRequestDate;
    std::optional<QMap<QString, QStringList>> localTagMap;
    qint64 lastFretCount = 0;
    qint64 autoCursorAmount = 0;
    bool playSounds = false;
    qint64 defaultStringCount = 6;
    bool disableFlashNavArrows = false;
    bool hideColHeaders = false;
    bool freeScrollSetting = false;
    qint64 appearanceSetting = 0;
    bool toolsMarkedSeen = false;
    bool toolsMarkedSeenTemporary = false;
    bool tagMapLoaded = false;
    // The folder that the user's sync client keeps in step across machines; absent: none.
    std::optional<QString> cloudFolder;

    // Writes the whole file atomically. Failures are not reported.
    void save();
    // The file as save() writes it.
    QByteArray fileData() const;
    // Takes the fields from a settings file's bytes; bytes past the size limit or unreadable
    // leave every field as it was.
    void readFileData(QByteArrayView bytes);
    bool addRecentChord(const ChordShortcut &chord);
    // The chord goes first among the user's, replacing one of its name; a recent chord of that
    // name now leads to it. Nothing is written when the newest chord is saved unchanged.
    void saveCustomChord(const ChordShortcut &chord);
    void deleteCustomChord(const ChordShortcut &chord);
    QList<ChordShortcut> loadCloudCustomChords() const;
    // The user's chords as the chord bar lists them: a list that another machine synced
    // replaces the one held here.
    QList<ChordShortcut> currentCustomChords();
    void storeCloudCustomChords(const QList<ChordShortcut> &chords);

private:
    void load();
    void storeCustomChords(bool recentChanged);
    CloudKeyValueStore *cloudStore;
};
