#pragma once

#include "soundoutput.h"

#include <QString>

#include <memory>

struct pa_threaded_mainloop;
struct pa_context;
struct pa_stream;

// A PulseAudio playback stream with a small target latency. The stream's write callback, on
// PulseAudio's own thread, is the mixing callback: it renders straight into the server's
// memory block.
class PulseSoundOutput : public SoundOutput {
public:
    static constexpr int defaultTargetLatencyUs = 10000;

    // Null when no server answers within a few seconds or the stream can't start; error then
    // says why.
    static std::unique_ptr<PulseSoundOutput>
    open(Sampler &sampler, int targetLatencyUs = defaultTargetLatencyUs, QString *error = nullptr);
    ~PulseSoundOutput() override;

    QString name() const override { return u"PulseAudio"_qs; }
    double outputLatency() const override;

private:
    explicit PulseSoundOutput(Sampler &sampler);
    bool start(int targetLatencyUs, QString *error);
    static void writeCallback(pa_stream *stream, size_t bytes, void *self);

    Sampler &sampler;
    pa_threaded_mainloop *mainloop = nullptr;
    pa_context *context = nullptr;
    pa_stream *stream = nullptr;
};
