#pragma once

#include <QString>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

class Sampler;

// Where the mixer's frames go. Each output pulls from the sampler on a thread of its own, so
// no GUI event loop ever stands between a tick and its sound.
class SoundOutput {
public:
    virtual ~SoundOutput() = default;

    virtual QString name() const = 0;
    virtual bool isNull() const { return false; }
    // Seconds from a frame leaving the mixer to its playing on the device; -1 when unknown.
    virtual double outputLatency() const = 0;
};

// Keeps the mixer running at the real pace with nowhere to play, so a headless machine
// behaves like any other, only quiet.
class NullSoundOutput : public SoundOutput {
public:
    explicit NullSoundOutput(Sampler &sampler);
    ~NullSoundOutput() override;

    QString name() const override { return u"null"_qs; }
    bool isNull() const override { return true; }
    double outputLatency() const override { return 0.0; }

private:
    void run();

    Sampler &sampler;
    std::vector<float> scratch;
    std::atomic<bool> stopping{false};
    std::thread thread;
};

// The system's default device with a small buffer (PulseAudio here), or the null output when
// there is none. Never fails and never tells the user.
std::unique_ptr<SoundOutput> openDefaultSoundOutput(Sampler &sampler);
