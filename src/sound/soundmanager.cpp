#include "soundmanager.h"

#include "model/tabdata.h"
#include "music/stringpitches.h"
#include "samplecache.h"
#include "sampler.h"
#include "soundoutput.h"
#include "soundlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>
#include <QSet>

#include <algorithm>
#include <atomic>
#include <thread>

Q_LOGGING_CATEGORY(lcSound, "lutegrid.sound")

namespace {

constexpr int mappingSize = 75;
// Place of C in the note order that starts at A.
constexpr int placeOfC = 3;

AudioNote noteAt(int position)
{
    AudioNote note;
    note.musicNote = MusicNotes::allCases[std::size_t(position % 12)];
    note.octave = (position + 12 - placeOfC) / 12;
    return note;
}

QList<AudioNote> makeLibraryMapping()
{
    QList<AudioNote> mapping;
    mapping.reserve(mappingSize);
    for (int position = 0; position < mappingSize; ++position)
        mapping.append(noteAt(position));

    struct Recording {
        int position;
        const char16_t *fileName;
        int stringIndex;
        const char16_t *bassFileName;
        int bassStringIndex;
    };
    static constexpr Recording recordings[] = {
        {7, nullptr, -1, u"bassE", 3},       {10, nullptr, -1, u"bassEp3", 3},
        {12, nullptr, -1, u"bassA", 2},      {13, nullptr, -1, u"bassEp6", 3},
        {15, nullptr, -1, u"bassAp3", 2},    {16, nullptr, -1, u"bassEp9", 3},
        {17, nullptr, -1, u"bassD", 1},      {18, nullptr, -1, u"bassAp6", 2},
        {19, u"E", 5, nullptr, -1},          {20, nullptr, -1, u"bassDp3", 1},
        {21, nullptr, -1, u"bassAp9", 2},    {22, nullptr, -1, u"bassG", 0},
        {23, nullptr, -1, u"bassDp6", 1},    {24, u"A", 4, nullptr, -1},
        {25, u"Ep6", 5, nullptr, -1},        {26, nullptr, -1, u"bassDp9", 1},
        {27, nullptr, -1, u"bassAp15", 2},   {28, nullptr, -1, u"bassGp6", 0},
        {29, u"D", 3, nullptr, -1},          {30, u"Ap6", 4, nullptr, -1},
        {31, u"Ep12", 5, u"bassGp9", 0},     {34, u"G", 2, u"bassGp12", 0},
        {35, u"Dp6", 3, nullptr, -1},        {36, u"Ap12", 4, nullptr, -1},
        {38, u"B", 1, nullptr, -1},          {40, u"Gp6", 2, nullptr, -1},
        {41, u"Dp12", 3, nullptr, -1},       {43, u"Elittle", 0, nullptr, -1},
        {44, u"Bp6", 1, nullptr, -1},        {46, u"Gp12", 2, nullptr, -1},
        {49, u"Elittlep6", 0, nullptr, -1},  {50, u"Bp12", 1, nullptr, -1},
        {55, u"Elittlep12", 0, nullptr, -1},
    };
    for (const Recording &recording : recordings) {
        AudioNote &note = mapping[recording.position];
        if (recording.fileName) {
            note.fileName = QString::fromUtf16(recording.fileName);
            note.stringIndex = recording.stringIndex;
        }
        if (recording.bassFileName) {
            note.bassFileName = QString::fromUtf16(recording.bassFileName);
            note.bassStringIndex = recording.bassStringIndex;
        }
    }
    return mapping;
}

// Which recordings a tuning may use, chosen once per column.
struct LibraryMode {
    bool bass = false;
    bool restrictToString = false;
};

LibraryMode libraryModeFor(const QStringList &stringNotes)
{
    static const QStringList baritone = {u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"C"_qs};
    static const QStringList ukulele = {u"G"_qs, u"C"_qs, u"E"_qs, u"A"_qs};
    static const QStringList tenorGuitar = {u"A"_qs, u"D"_qs, u"F#"_qs, u"B"_qs};
    switch (stringNotes.size()) {
    case 6:
        return {false, stringNotes != baritone};
    case 4:
        if (stringNotes == ukulele || stringNotes == tenorGuitar)
            return {};
        return {true, true};
    default:
        return {};
    }
}

} // namespace

SoundManager &SoundManager::shared()
{
    static SoundManager instance;
    return instance;
}

SoundManager::SoundManager(const QString &sampleDirectory)
    : sampleDir(sampleDirectory), sampleCache(std::make_unique<SampleCache>()),
      mixer(std::make_unique<Sampler>(sampleCache->sampleRate()))
{
}

// The output goes first: its thread is the one that reads the mixer and the cached buffers.
SoundManager::~SoundManager()
{
    soundOutput.reset();
}

const QList<AudioNote> &SoundManager::libraryMapping()
{
    static const QList<AudioNote> mapping = makeLibraryMapping();
    return mapping;
}

QString SoundManager::defaultSampleDirectory()
{
    QStringList candidates;
    if (QCoreApplication::instance()) {
        const QString appDir = QCoreApplication::applicationDirPath();
        candidates << appDir + u"/samples" << appDir + u"/../share/lutegrid/samples";
    }
    candidates << QString::fromUtf8(LUTEGRID_SAMPLE_DIR);
    for (const QString &candidate : std::as_const(candidates)) {
        if (QFileInfo::exists(candidate + u"/E.wav"))
            return QDir::cleanPath(candidate);
    }
    return candidates.constLast();
}

QList<int> SoundManager::openStringOctaves(const QStringList &stringNotes)
{
    return StringPitches::openStringOctaves(stringNotes);
}

QList<NoteToPlay> SoundManager::notesToPlay(const QList<ColumnItemType> &columnItems,
                                            const QStringList &stringNotes) const
{
    const qsizetype count = columnItems.size();
    if (count != stringNotes.size())
        return {};

    const QList<int> octaves = openStringOctaves(stringNotes);
    const LibraryMode mode = libraryModeFor(stringNotes);
    const QList<AudioNote> &mapping = libraryMapping();

    QList<NoteToPlay> notes;
    for (int i = 0; i < count; ++i) {
        const ColumnItemType &item = columnItems[i];
        if (!item.isNote())
            continue;
        const auto openNote = MusicNotes::fromText(stringNotes[count - 1 - i]);
        if (!openNote)
            continue;
        const int n = MusicNotes::position(*openNote);
        const qint64 fret = item.fret();
        // Past the end of the reachable notes, or below the open string: this string is silent.
        if (fret < 0 || fret >= 48 - n || i >= octaves.size())
            continue;
        const MusicNote targetNote = MusicNotes::allCases[std::size_t((n + fret) % 12)];
        const int targetOctave = octaves[i] + int(fret + n + (n < placeOfC ? 9 : -3)) / 12;

        std::optional<int> exact;
        std::optional<int> lower;
        std::optional<int> upper;
        for (int position = 0; position < mapping.size(); ++position) {
            const AudioNote &entry = mapping[position];
            const std::optional<QString> &name = mode.bass ? entry.bassFileName : entry.fileName;
            const int recordedOn = mode.bass ? entry.bassStringIndex : entry.stringIndex;
            const bool usable = name && (!mode.restrictToString || recordedOn == i);
            if (usable && exact) {
                upper = position;
                break;
            }
            if (usable)
                lower = position;
            if (entry.musicNote == targetNote && entry.octave == targetOctave)
                exact = position;
        }
        if (!exact || (!lower && !upper))
            continue;

        // Shifting up is preferred for up to 9 semitones; down only when really nearer.
        int chosen = 0;
        if (!upper) {
            chosen = *lower;
        } else {
            const int below = lower ? *exact - *lower : 1000;
            if (below < 10)
                chosen = *lower;
            else
                chosen = *upper - *exact < below ? *upper : *lower;
        }

        const AudioNote &sample = mapping[chosen];
        const QString &name = mode.bass ? *sample.bassFileName : *sample.fileName;
        const QString path = sampleDir + u'/' + name + u".wav";
        if (!QFileInfo::exists(path))
            continue;
        notes.append({QUrl::fromLocalFile(path), *exact - chosen});
    }
    // The lowest string starts first.
    std::reverse(notes.begin(), notes.end());
    return notes;
}

void SoundManager::playColumnItems(const QList<ColumnItemType> &columnItems,
                                   const QStringList &stringNotes, bool silent)
{
    const QList<NoteToPlay> notes = notesToPlay(columnItems, stringNotes);
    for (const NoteToPlay &note : notes)
        playSample(note.fileURL, note.semitoneDiff, silent);
}

void SoundManager::playSample(const QUrl &fileURL, int semitoneDiff, bool silent)
{
    const QString path = fileURL.toLocalFile();
    auto buffer = sampleCache->find(path, semitoneDiff);
    if (buffer && silent)
        return;
    if (!buffer)
        buffer = sampleCache->load(path, semitoneDiff);
    if (!buffer || silent)
        return;
    // While another thread opens the output (view mode does so as it opens), the note goes to
    // the mixer without waiting: the output pulls it as soon as it runs, and the caller, often
    // the GUI thread, never stalls on the sound server.
    if (outputMutex.tryLock()) {
        if (!soundOutput)
            soundOutput = openDefaultSoundOutput(*mixer);
        outputMutex.unlock();
    }
    mixer->noteOn(*buffer);
}

void SoundManager::preloadTab(const TabData &tabData)
{
    // The distinct samples first, so each shift is made by one worker only.
    QList<NoteToPlay> wanted;
    QSet<QPair<QString, int>> seen;
    for (const TabRowData &row : tabData.tabRowDatas) {
        for (const TabColumnData &column : row.colDatas) {
            for (const NoteToPlay &note : notesToPlay(column.columnItems, tabData.stringNotes)) {
                const QPair<QString, int> key(note.fileURL.toLocalFile(), note.semitoneDiff);
                if (!seen.contains(key)) {
                    seen.insert(key);
                    wanted.append(note);
                }
            }
        }
    }
    // Every shift starts from a decoded file, so all the decoding comes first.
    QList<NoteToPlay> decodes;
    QList<NoteToPlay> shifts;
    QSet<QString> decoded;
    for (const NoteToPlay &note : std::as_const(wanted)) {
        if (note.semitoneDiff != 0)
            shifts.append(note);
        if (!decoded.contains(note.fileURL.toLocalFile())) {
            decoded.insert(note.fileURL.toLocalFile());
            decodes.append({note.fileURL, 0});
        }
    }
    for (const QList<NoteToPlay> *batch : {&decodes, &shifts}) {
        std::atomic<qsizetype> next{0};
        auto work = [&] {
            for (qsizetype at = next++; at < batch->size(); at = next++)
                playSample(batch->at(at).fileURL, batch->at(at).semitoneDiff, true);
        };
        const qsizetype workers = std::min<qsizetype>(
            std::clamp(std::thread::hardware_concurrency(), 1u, 4u), batch->size());
        std::vector<std::thread> threads;
        for (qsizetype worker = 1; worker < workers; ++worker)
            threads.emplace_back(work);
        work();
        for (std::thread &thread : threads)
            thread.join();
    }
}

SoundOutput &SoundManager::output()
{
    QMutexLocker lock(&outputMutex);
    if (!soundOutput)
        soundOutput = openDefaultSoundOutput(*mixer);
    return *soundOutput;
}

bool SoundManager::useOutput(std::unique_ptr<SoundOutput> replacement)
{
    QMutexLocker lock(&outputMutex);
    if (soundOutput)
        return false;
    soundOutput = std::move(replacement);
    return true;
}

void setAudioSession(bool viewMode)
{
    Q_UNUSED(viewMode);
}
