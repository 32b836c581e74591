#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <optional>
#include <vector>

// Pitch measurements on rendered or recorded audio, by evaluating the spectrum of a
// Hann-windowed stretch at exactly the frequencies in question.
namespace AudioProbe {

inline double cents(double hz, double referenceHz)
{
    return 1200.0 * std::log2(hz / referenceHz);
}

// Equal temperament from A4 = 440 Hz; position 0 of the sample table is A0.
inline double hzOfPosition(int position)
{
    return 27.5 * std::pow(2.0, position / 12.0);
}

inline std::vector<double> hannWindowed(const float *x, qsizetype n)
{
    std::vector<double> out(std::size_t(std::max<qsizetype>(n, 0)));
    for (qsizetype i = 0; i < n; ++i) {
        const double window = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * double(i) / double(n));
        out[std::size_t(i)] = double(x[i]) * window;
    }
    return out;
}

inline double windowedAmplitudeAt(const std::vector<double> &windowed, int rate, double hz)
{
    const std::complex<double> turn = std::polar(1.0, -2.0 * std::numbers::pi * hz / rate);
    std::complex<double> phasor = 1.0;
    std::complex<double> sum = 0.0;
    for (const double value : windowed) {
        sum += value * phasor;
        phasor *= turn;
    }
    return 4.0 * std::abs(sum) / double(windowed.size());
}

// Amplitude of the component at hz: a full-scale sine gives 1.
inline double amplitudeAt(const float *x, qsizetype n, int rate, double hz)
{
    return windowedAmplitudeAt(hannWindowed(x, n), rate, hz);
}

struct Peak {
    double hz = 0.0;
    double amplitude = 0.0;
    // The strongest point lay on the edge of the search: the real peak is elsewhere.
    bool atEdge = true;
};

// The strongest frequency within rangeCents of hz, to a tenth of a cent.
inline Peak peakNear(const float *x, qsizetype n, int rate, double hz, double rangeCents = 60.0)
{
    const std::vector<double> windowed = hannWindowed(x, n);
    auto probe = [&](double c) {
        const double at = hz * std::pow(2.0, c / 1200.0);
        return std::pair(at, windowedAmplitudeAt(windowed, rate, at));
    };
    Peak best;
    double bestCents = 0.0;
    for (double c = -rangeCents; c <= rangeCents + 0.01; c += 2.0) {
        const auto [at, amplitude] = probe(c);
        if (amplitude > best.amplitude) {
            best = {at, amplitude, std::abs(c) >= rangeCents - 0.01};
            bestCents = c;
        }
    }
    for (double c = bestCents - 2.0; c <= bestCents + 2.0; c += 0.1) {
        const auto [at, amplitude] = probe(c);
        if (amplitude > best.amplitude) {
            best.hz = at;
            best.amplitude = amplitude;
        }
    }
    return best;
}

// The pitch that the first partials of a note near hz agree on, as cents off hz: each partial
// k is sought near k * hz and weighs by its strength. Plucked strings often carry less in the
// fundamental than in the partials above it, so it alone would read poorly. Nothing when no
// partial stands out of its search range.
inline std::optional<double> centsOffNear(const float *x, qsizetype n, int rate, double hz,
                                          int partials = 3)
{
    double weighted = 0.0;
    double weights = 0.0;
    for (int k = 1; k <= partials; ++k) {
        const Peak peak = peakNear(x, n, rate, k * hz, 40.0);
        if (peak.atEdge)
            continue;
        weighted += peak.amplitude * cents(peak.hz, k * hz);
        weights += peak.amplitude;
    }
    if (weights <= 0.0)
        return std::nullopt;
    return weighted / weights;
}

inline float peakLevel(const float *x, qsizetype n)
{
    float peak = 0.0f;
    for (qsizetype i = 0; i < n; ++i)
        peak = std::max(peak, std::abs(x[i]));
    return peak;
}

// First frame at or above the given level; -1 if none.
inline qsizetype firstFrameAbove(const std::vector<float> &x, float level, qsizetype from = 0)
{
    for (qsizetype i = std::max<qsizetype>(from, 0); i < qsizetype(x.size()); ++i) {
        if (std::abs(x[std::size_t(i)]) >= level)
            return i;
    }
    return -1;
}

// Last frame at or above the given level; -1 if none.
inline qsizetype lastFrameAbove(const std::vector<float> &x, float level)
{
    for (qsizetype i = qsizetype(x.size()) - 1; i >= 0; --i) {
        if (std::abs(x[std::size_t(i)]) >= level)
            return i;
    }
    return -1;
}

} // namespace AudioProbe
