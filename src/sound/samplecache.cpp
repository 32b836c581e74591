#include "samplecache.h"

#include "soundlog.h"

#include <QFile>
#include <QMutexLocker>

#include <sndfile.h>
#include <SoundTouch.h>

#include <algorithm>
#include <cmath>

namespace {

struct SndFileCloser {
    void operator()(SNDFILE *file) const { sf_close(file); }
};

// Changes rate and keeps pitch, or changes pitch and keeps duration, or both at once.
std::shared_ptr<SampleBuffer> stretch(const std::vector<float> &input, int inputRate,
                                      int outputRate, int semitoneDiff)
{
    auto result = std::make_shared<SampleBuffer>();
    result->sampleRate = outputRate;
    const auto wanted = std::size_t(std::llround(double(input.size()) * outputRate / inputRate));
    result->frames.reserve(wanted + 4096);

    soundtouch::SoundTouch touch;
    touch.setSampleRate(uint(inputRate));
    touch.setChannels(1);
    touch.setRate(double(inputRate) / outputRate);
    touch.setPitchSemiTones(semitoneDiff);
    // Plucked notes start with a sharp attack; the quick seek smears it. The seek window has to
    // hold a whole period of the lowest bass notes (E1 is 24 ms), or their pitch wanders.
    touch.setSetting(SETTING_USE_QUICKSEEK, 0);
    touch.setSetting(SETTING_SEQUENCE_MS, 80);
    touch.setSetting(SETTING_SEEKWINDOW_MS, 30);
    touch.setSetting(SETTING_OVERLAP_MS, 10);

    float chunk[4096];
    auto drain = [&] {
        // SoundTouch lines its output up with the input's start itself.
        uint got;
        while ((got = touch.receiveSamples(chunk, uint(std::size(chunk)))) > 0)
            result->frames.insert(result->frames.end(), chunk, chunk + got);
    };
    constexpr std::size_t step = 8192;
    for (std::size_t at = 0; at < input.size(); at += step) {
        touch.putSamples(input.data() + at, uint(std::min(step, input.size() - at)));
        drain();
    }
    // Flushing pushes silence through until the tail has come out.
    touch.flush();
    drain();
    result->frames.resize(wanted, 0.0f);
    return result;
}

} // namespace

SampleCache::SampleCache(int sampleRate) : outputRate(sampleRate) {}

std::shared_ptr<const SampleBuffer> SampleCache::find(const QString &path, int semitoneDiff) const
{
    QMutexLocker lock(&mutex);
    return buffers.value(Key(path, semitoneDiff));
}

bool SampleCache::contains(const QString &path, int semitoneDiff) const
{
    QMutexLocker lock(&mutex);
    return buffers.contains(Key(path, semitoneDiff));
}

qsizetype SampleCache::size() const
{
    QMutexLocker lock(&mutex);
    return buffers.size();
}

std::shared_ptr<const SampleBuffer> SampleCache::load(const QString &path, int semitoneDiff)
{
    {
        QMutexLocker lock(&mutex);
        const auto found = buffers.constFind(Key(path, semitoneDiff));
        if (found != buffers.cend())
            return *found;
    }
    // The work runs unlocked: two threads may make the same buffer, and the first one kept wins.
    std::shared_ptr<const SampleBuffer> made;
    if (semitoneDiff == 0) {
        made = decodeFile(path, outputRate);
    } else if (const auto original = load(path, 0)) {
        made = pitchShifted(*original, semitoneDiff);
    }
    QMutexLocker lock(&mutex);
    auto kept = buffers.find(Key(path, semitoneDiff));
    if (kept == buffers.end())
        kept = buffers.insert(Key(path, semitoneDiff), made);
    return *kept;
}

std::shared_ptr<SampleBuffer> SampleCache::decodeFile(const QString &path, int sampleRate)
{
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndFileCloser> file(
        sf_open(QFile::encodeName(path).constData(), SFM_READ, &info));
    if (!file) {
        qCDebug(lcSound) << "cannot open sample" << path << sf_strerror(nullptr);
        return nullptr;
    }
    // Two minutes is far beyond any note; a longer file is not a sample.
    constexpr sf_count_t maxFrames = 120 * 192000;
    if (info.channels < 1 || info.samplerate < 1000 || info.frames < 1 || info.frames > maxFrames) {
        qCDebug(lcSound) << "not a usable sample" << path;
        return nullptr;
    }
    std::vector<float> interleaved(std::size_t(info.frames) * std::size_t(info.channels));
    const sf_count_t read = sf_readf_float(file.get(), interleaved.data(), info.frames);
    if (read < 1) {
        qCDebug(lcSound) << "unreadable sample" << path;
        return nullptr;
    }
    std::vector<float> mono(std::size_t(read), 0.0f);
    const float share = 1.0f / float(info.channels);
    for (std::size_t frame = 0; frame < mono.size(); ++frame) {
        float sum = 0.0f;
        for (int channel = 0; channel < info.channels; ++channel)
            sum += interleaved[frame * std::size_t(info.channels) + std::size_t(channel)];
        mono[frame] = sum * share;
    }
    if (info.samplerate == sampleRate) {
        auto buffer = std::make_shared<SampleBuffer>();
        buffer->sampleRate = sampleRate;
        buffer->frames = std::move(mono);
        return buffer;
    }
    return stretch(mono, info.samplerate, sampleRate, 0);
}

std::shared_ptr<SampleBuffer> SampleCache::pitchShifted(const SampleBuffer &buffer,
                                                        int semitoneDiff)
{
    if (semitoneDiff == 0)
        return std::make_shared<SampleBuffer>(buffer);
    return stretch(buffer.frames, buffer.sampleRate, buffer.sampleRate, semitoneDiff);
}
