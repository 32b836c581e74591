#include "sampler.h"

#include "samplecache.h"

#include <algorithm>
#include <chrono>

Sampler::Sampler(int sampleRate) : rate(sampleRate) {}

qint64 Sampler::nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

bool Sampler::noteOn(const SampleBuffer &buffer, float gain)
{
    if (buffer.frames.empty())
        return false;
    const NoteOn note{buffer.frames.data(), qint64(buffer.frames.size()), gain, nowNs()};
    std::lock_guard lock(producerMutex);
    return queue.push(note);
}

void Sampler::startVoice(const NoteOn &note)
{
    Voice *slot = nullptr;
    for (Voice &voice : voices) {
        if (!voice.data) {
            slot = &voice;
            break;
        }
    }
    if (!slot) {
        // Full: the oldest voice leaves through a short fade, and its slot starts the new note.
        slot = &*std::min_element(voices.begin(), voices.end(), [](const Voice &a, const Voice &b) {
            return a.serial < b.serial;
        });
        Voice *tail = nullptr;
        for (Voice &voice : fading) {
            if (!voice.data) {
                tail = &voice;
                break;
            }
        }
        if (!tail) {
            tail = &*std::min_element(
                fading.begin(), fading.end(),
                [](const Voice &a, const Voice &b) { return a.fadeLeft < b.fadeLeft; });
        }
        *tail = *slot;
        tail->fadeLeft = fadeFrames;
    }
    *slot = Voice{note.data, note.length, 0, note.gain, nextSerial++, 0};
}

void Sampler::render(float *out, qsizetype frameCount)
{
    std::fill(out, out + frameCount, 0.0f);

    qint64 lastQueuedAt = -1;
    NoteOn note;
    while (queue.pop(note)) {
        startVoice(note);
        lastQueuedAt = note.queuedAtNs;
    }

    int active = 0;
    for (Voice &voice : voices) {
        if (!voice.data)
            continue;
        const qint64 count = std::min<qint64>(frameCount, voice.length - voice.position);
        const float *source = voice.data + voice.position;
        const float gain = voice.gain;
        for (qint64 i = 0; i < count; ++i)
            out[i] += source[i] * gain;
        voice.position += count;
        if (voice.position >= voice.length)
            voice = Voice{};
        else
            ++active;
    }

    int stillFading = 0;
    for (Voice &voice : fading) {
        if (!voice.data)
            continue;
        const qint64 count = std::min<qint64>(
            {qint64(frameCount), voice.length - voice.position, qint64(voice.fadeLeft)});
        const float *source = voice.data + voice.position;
        const float step = voice.gain / float(fadeFrames);
        float gain = step * float(voice.fadeLeft);
        for (qint64 i = 0; i < count; ++i) {
            out[i] += source[i] * gain;
            gain -= step;
        }
        voice.position += count;
        voice.fadeLeft -= int(count);
        if (voice.fadeLeft <= 0 || voice.position >= voice.length)
            voice = Voice{};
        else
            ++stillFading;
    }

    for (qsizetype i = 0; i < frameCount; ++i)
        out[i] = std::clamp(out[i], -1.0f, 1.0f);

    activeVoices.store(active, std::memory_order_relaxed);
    fadingVoices.store(stillFading, std::memory_order_relaxed);
    renderedFrames.fetch_add(quint64(frameCount), std::memory_order_relaxed);
    if (lastQueuedAt >= 0)
        noteDelayNs.store(nowNs() - lastQueuedAt, std::memory_order_relaxed);
}

std::vector<float> Sampler::renderOffline(qsizetype frameCount)
{
    std::vector<float> out(std::size_t(std::max<qsizetype>(frameCount, 0)));
    render(out.data(), qsizetype(out.size()));
    return out;
}
