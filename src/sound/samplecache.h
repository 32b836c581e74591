#pragma once

#include <QHash>
#include <QMutex>
#include <QString>

#include <memory>
#include <vector>

// One decoded note, mono, at the mixer's rate. Immutable once published, so the audio thread
// reads it without a lock.
struct SampleBuffer {
    std::vector<float> frames;
    int sampleRate = 0;

    qsizetype frameCount() const { return qsizetype(frames.size()); }
    double seconds() const { return sampleRate > 0 ? double(frames.size()) / sampleRate : 0.0; }
};

// Decoded and pitch-shifted samples, keyed by file path and semitones. Each shift is made once;
// entries are never evicted, so a buffer handed to the mixer outlives every voice that plays
// it. Any thread may fill it while others read it.
class SampleCache {
public:
    explicit SampleCache(int sampleRate = 44100);

    int sampleRate() const { return outputRate; }

    // The cached buffer, or null when the key isn't there yet or the file is unreadable.
    std::shared_ptr<const SampleBuffer> find(const QString &path, int semitoneDiff) const;
    bool contains(const QString &path, int semitoneDiff) const;
    // Decodes and shifts on the calling thread when needed. Null when the file is missing or
    // unreadable; that answer is cached too, so a bad file costs one attempt.
    std::shared_ptr<const SampleBuffer> load(const QString &path, int semitoneDiff);
    qsizetype size() const;

    // Any format libsndfile reads, mixed down to mono and brought to the given rate.
    static std::shared_ptr<SampleBuffer> decodeFile(const QString &path, int sampleRate);
    // SoundTouch keeps the duration: the result has as many frames as the input.
    static std::shared_ptr<SampleBuffer> pitchShifted(const SampleBuffer &buffer, int semitoneDiff);

private:
    using Key = std::pair<QString, int>;

    int outputRate;
    mutable QMutex mutex;
    QHash<Key, std::shared_ptr<const SampleBuffer>> buffers;
};
