#pragma once

#include "model/columnitemtype.h"
#include "music/musicnote.h"

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>

class SampleCache;
class Sampler;
class SoundOutput;
class TabData;

// One row of the sample table: a semitone on the scale, and the recordings made at that pitch.
struct AudioNote {
    MusicNote musicNote = MusicNote::A;
    int octave = 0;
    std::optional<QString> fileName;
    int stringIndex = -1;
    std::optional<QString> bassFileName;
    int bassStringIndex = -1;
};

// A sample and the shift that brings it to the wanted pitch.
struct NoteToPlay {
    QUrl fileURL;
    int semitoneDiff = 0;

    friend bool operator==(const NoteToPlay &, const NoteToPlay &) = default;
};

// Turns a tab column into sound: the pure half finds each string's pitch, the nearest usable
// recording and the shift; the sampler plays the shifted recordings on one persistent mixer.
class SoundManager {
public:
    static SoundManager &shared();

    // Samples from the given folder ("<name>.wav"), output opened on the first audible note.
    explicit SoundManager(const QString &sampleDirectory = defaultSampleDirectory());
    ~SoundManager();
    SoundManager(const SoundManager &) = delete;
    SoundManager &operator=(const SoundManager &) = delete;

    // Every semitone from A0 to B6, 75 entries; a difference of positions is a distance in
    // semitones.
    static const QList<AudioNote> &libraryMapping();
    // The octave of each open string, top line first. Strings whose names aren't notes may
    // leave no entry, as may the string above them.
    static QList<int> openStringOctaves(const QStringList &stringNotes);
    // The bundled samples: next to the program, in its share folder, or in the source tree.
    static QString defaultSampleDirectory();

    QString sampleDirectory() const { return sampleDir; }

    // The notes a column sounds, lowest string first. Empty when the lists differ in length.
    QList<NoteToPlay> notesToPlay(const QList<ColumnItemType> &columnItems,
                                  const QStringList &stringNotes) const;

    // The one entry point, from any thread. silent only warms the cache.
    void playColumnItems(const QList<ColumnItemType> &columnItems, const QStringList &stringNotes,
                         bool silent);
    void playSample(const QUrl &fileURL, int semitoneDiff, bool silent);

    // Warms the cache for every column of the tab on worker threads and waits for them.
    void preloadTab(const TabData &tabData);

    SampleCache &fileCache() { return *sampleCache; }
    Sampler &sampler() { return *mixer; }
    // Opens the default output if that hasn't happened yet.
    SoundOutput &output();
    // Puts another output in place of the default one, for tests that render offline; false
    // when an output is open already.
    bool useOutput(std::unique_ptr<SoundOutput> replacement);

private:
    QString sampleDir;
    std::unique_ptr<SampleCache> sampleCache;
    std::unique_ptr<Sampler> mixer;
    QMutex outputMutex;
    std::unique_ptr<SoundOutput> soundOutput;
};

// Nothing to configure here: the sound server decides how a player shares the device.
void setAudioSession(bool viewMode);
