#include "soundoutput.h"

#include "pulsesoundoutput.h"
#include "sampler.h"
#include "soundlog.h"

#include <chrono>

namespace {
constexpr int nullPeriodMs = 10;
}

NullSoundOutput::NullSoundOutput(Sampler &sampler)
    : sampler(sampler), scratch(std::size_t(sampler.sampleRate() * nullPeriodMs / 1000)),
      thread([this] { run(); })
{
}

NullSoundOutput::~NullSoundOutput()
{
    stopping.store(true);
    thread.join();
}

void NullSoundOutput::run()
{
    using clock = std::chrono::steady_clock;
    auto next = clock::now();
    while (!stopping.load(std::memory_order_relaxed)) {
        sampler.render(scratch.data(), qsizetype(scratch.size()));
        next += std::chrono::milliseconds(nullPeriodMs);
        std::this_thread::sleep_until(next);
    }
}

std::unique_ptr<SoundOutput> openDefaultSoundOutput(Sampler &sampler)
{
    QString error;
    if (auto pulse =
            PulseSoundOutput::open(sampler, PulseSoundOutput::defaultTargetLatencyUs, &error)) {
        return pulse;
    }
    qCDebug(lcSound) << "no sound device, playing to nowhere:" << error;
    return std::make_unique<NullSoundOutput>(sampler);
}
