#include "pulsesoundoutput.h"

#include "sampler.h"
#include "soundlog.h"

#include <pulse/pulseaudio.h>
#include <pulse/rtclock.h>

namespace {

// A server that neither answers nor refuses must not hold up the program.
constexpr pa_usec_t connectTimeoutUs = 3 * PA_USEC_PER_SEC;

struct Wait {
    pa_threaded_mainloop *mainloop;
    bool timedOut = false;
};

void signalMainloop(pa_context *, void *mainloop)
{
    pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop *>(mainloop), 0);
}

void signalStream(pa_stream *, void *mainloop)
{
    pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop *>(mainloop), 0);
}

void timeUp(pa_mainloop_api *, pa_time_event *, const struct timeval *, void *wait)
{
    auto *state = static_cast<Wait *>(wait);
    state->timedOut = true;
    pa_threaded_mainloop_signal(state->mainloop, 0);
}

QString contextError(pa_context *context)
{
    return QString::fromUtf8(pa_strerror(pa_context_errno(context)));
}

} // namespace

PulseSoundOutput::PulseSoundOutput(Sampler &sampler) : sampler(sampler) {}

std::unique_ptr<PulseSoundOutput> PulseSoundOutput::open(Sampler &sampler, int targetLatencyUs,
                                                         QString *error)
{
    std::unique_ptr<PulseSoundOutput> output(new PulseSoundOutput(sampler));
    QString why;
    if (!output->start(targetLatencyUs, &why)) {
        if (error)
            *error = why;
        return nullptr;
    }
    return output;
}

bool PulseSoundOutput::start(int targetLatencyUs, QString *error)
{
    mainloop = pa_threaded_mainloop_new();
    if (!mainloop) {
        *error = u"no PulseAudio main loop"_qs;
        return false;
    }
    pa_mainloop_api *api = pa_threaded_mainloop_get_api(mainloop);
    context = pa_context_new(api, "Lutegrid");
    if (!context) {
        *error = u"no PulseAudio context"_qs;
        return false;
    }
    pa_context_set_state_callback(context, signalMainloop, mainloop);
    // No autospawn: a machine without a sound server runs on the null output instead.
    if (pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        *error = contextError(context);
        return false;
    }

    pa_threaded_mainloop_lock(mainloop);
    if (pa_threaded_mainloop_start(mainloop) < 0) {
        pa_threaded_mainloop_unlock(mainloop);
        *error = u"the PulseAudio thread did not start"_qs;
        return false;
    }
    Wait wait{mainloop};
    pa_time_event *timer =
        pa_context_rttime_new(context, pa_rtclock_now() + connectTimeoutUs, timeUp, &wait);
    auto waitFor = [&](auto ready, auto failed) {
        while (!ready() && !failed() && !wait.timedOut)
            pa_threaded_mainloop_wait(mainloop);
        return ready();
    };
    const bool connected =
        waitFor([&] { return pa_context_get_state(context) == PA_CONTEXT_READY; },
                [&] { return !PA_CONTEXT_IS_GOOD(pa_context_get_state(context)); });
    if (!connected) {
        *error = wait.timedOut ? u"the PulseAudio server did not answer"_qs : contextError(context);
        api->time_free(timer);
        pa_threaded_mainloop_unlock(mainloop);
        return false;
    }

    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, uint32_t(sampler.sampleRate()), 1};
    stream = pa_stream_new(context, "Notes", &spec, nullptr);
    if (!stream) {
        *error = contextError(context);
        api->time_free(timer);
        pa_threaded_mainloop_unlock(mainloop);
        return false;
    }
    pa_stream_set_state_callback(stream, signalStream, mainloop);
    pa_stream_set_write_callback(stream, writeCallback, this);

    // tlength is the whole latency the server aims for; minreq small so it asks often.
    pa_buffer_attr attr;
    attr.maxlength = uint32_t(-1);
    attr.tlength = uint32_t(pa_usec_to_bytes(pa_usec_t(targetLatencyUs), &spec));
    attr.prebuf = uint32_t(-1);
    attr.minreq = uint32_t(pa_usec_to_bytes(pa_usec_t(targetLatencyUs / 4), &spec));
    attr.fragsize = uint32_t(-1);
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE |
                                         PA_STREAM_INTERPOLATE_TIMING);
    if (pa_stream_connect_playback(stream, nullptr, &attr, flags, nullptr, nullptr) < 0) {
        *error = contextError(context);
        api->time_free(timer);
        pa_threaded_mainloop_unlock(mainloop);
        return false;
    }
    const bool playing = waitFor([&] { return pa_stream_get_state(stream) == PA_STREAM_READY; },
                                 [&] { return !PA_STREAM_IS_GOOD(pa_stream_get_state(stream)); });
    api->time_free(timer);
    if (!playing) {
        *error = wait.timedOut ? u"the PulseAudio stream did not start"_qs : contextError(context);
        pa_threaded_mainloop_unlock(mainloop);
        return false;
    }
    if (const pa_buffer_attr *got = pa_stream_get_buffer_attr(stream)) {
        qCDebug(lcSound) << "PulseAudio stream: tlength" << got->tlength << "minreq"
                            << got->minreq << "bytes";
    }
    pa_threaded_mainloop_unlock(mainloop);
    return true;
}

PulseSoundOutput::~PulseSoundOutput()
{
    if (mainloop) {
        pa_threaded_mainloop_lock(mainloop);
        if (stream) {
            pa_stream_set_write_callback(stream, nullptr, nullptr);
            pa_stream_set_state_callback(stream, nullptr, nullptr);
            pa_stream_disconnect(stream);
            pa_stream_unref(stream);
        }
        if (context) {
            pa_context_set_state_callback(context, nullptr, nullptr);
            pa_context_disconnect(context);
            pa_context_unref(context);
        }
        pa_threaded_mainloop_unlock(mainloop);
        pa_threaded_mainloop_stop(mainloop);
        pa_threaded_mainloop_free(mainloop);
    }
}

void PulseSoundOutput::writeCallback(pa_stream *stream, size_t bytes, void *self)
{
    auto *output = static_cast<PulseSoundOutput *>(self);
    while (bytes >= sizeof(float)) {
        void *data = nullptr;
        size_t chunk = bytes;
        // The server's own memory block: nothing is allocated here, and nothing copied.
        if (pa_stream_begin_write(stream, &data, &chunk) < 0 || !data || chunk < sizeof(float))
            return;
        chunk -= chunk % sizeof(float);
        output->sampler.render(static_cast<float *>(data), qsizetype(chunk / sizeof(float)));
        if (pa_stream_write(stream, data, chunk, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            return;
        bytes -= chunk;
    }
}

double PulseSoundOutput::outputLatency() const
{
    pa_threaded_mainloop_lock(mainloop);
    pa_usec_t latency = 0;
    int negative = 0;
    const bool known = pa_stream_get_latency(stream, &latency, &negative) == 0;
    pa_threaded_mainloop_unlock(mainloop);
    if (!known)
        return -1.0;
    return negative ? 0.0 : double(latency) / PA_USEC_PER_SEC;
}
