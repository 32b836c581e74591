#pragma once

#include "spscqueue.h"

#include <QtGlobal>

#include <array>
#include <atomic>
#include <mutex>
#include <vector>

struct SampleBuffer;

// One persistent mixer for every sounding note. Notes ring for the length of their buffer and
// overlap freely up to maxVoices; past that the oldest voice fades out in fadeFrames. render()
// is the real-time side: it never allocates, locks, logs or touches a file.
class Sampler {
public:
    static constexpr int maxVoices = 48;
    // Voices cut short that are still fading; more than enough for a strummed burst.
    static constexpr int maxFadingVoices = 16;
    // About 3 ms at 44.1 kHz: short enough to free the voice at once, long enough not to click.
    static constexpr int fadeFrames = 128;
    // Leaves room for a six-string chord before the sum reaches full scale.
    static constexpr float voiceGain = 0.3f;

    explicit Sampler(int sampleRate = 44100);

    int sampleRate() const { return rate; }

    // From any thread but the audio thread. The mixer does not own the buffer: it must outlive
    // the voice (the sample cache never evicts, which is what keeps that promise). False when
    // the note could not be queued: an empty buffer, or the audio side has stopped taking notes.
    bool noteOn(const SampleBuffer &buffer, float gain = voiceGain);

    // Writes frameCount mono frames, replacing what was there.
    void render(float *out, qsizetype frameCount);
    // The same mix into a fresh buffer, for tests and benchmarks.
    std::vector<float> renderOffline(qsizetype frameCount);

    // As of the end of the last render.
    int activeVoiceCount() const { return activeVoices.load(std::memory_order_relaxed); }
    int fadingVoiceCount() const { return fadingVoices.load(std::memory_order_relaxed); }
    quint64 framesRendered() const { return renderedFrames.load(std::memory_order_relaxed); }
    // Nanoseconds from the last noteOn that reached a voice to the end of the render that
    // started it: when its first frame left the mixer. -1 before any.
    qint64 lastNoteDelayNs() const { return noteDelayNs.load(std::memory_order_relaxed); }

private:
    struct NoteOn {
        const float *data;
        qint64 length;
        float gain;
        qint64 queuedAtNs;
    };
    struct Voice {
        const float *data = nullptr;
        qint64 length = 0;
        qint64 position = 0;
        float gain = 0.0f;
        quint64 serial = 0;
        int fadeLeft = 0;
    };

    void startVoice(const NoteOn &note);
    static qint64 nowNs();

    int rate;
    std::mutex producerMutex; // several threads may queue notes; the queue wants one producer
    SpscQueue<NoteOn, 256> queue;

    // Owned by the audio thread alone.
    std::array<Voice, maxVoices> voices{};
    std::array<Voice, maxFadingVoices> fading{};
    quint64 nextSerial = 1;

    std::atomic<int> activeVoices{0};
    std::atomic<int> fadingVoices{0};
    std::atomic<quint64> renderedFrames{0};
    std::atomic<qint64> noteDelayNs{-1};
};
