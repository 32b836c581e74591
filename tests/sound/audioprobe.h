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

// Equal temperament from A4 = 440 Hz; position 0 of the sample table is A0.
inline double hzOfPosition(int position)
{
    return 27.5 * std::pow(2.0, position / 12.0);
}

inline std::vector<double> hannWindowed(const float *x, qsizetype n)
{
    std::vector<double> out(std::size_t(std::max<qsizetype>(n, 0)));
    for (qsizetype i = 0; i < n; ++i)
        out[std::size_t(i)] = x[i] * (0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * i / n));
    return out;
}

// Amplitude of the component at hz: a full-scale sine gives 1.
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

inline double amplitudeAt(const float *x, qsizetype n, int rate, double hz)
{
    return windowedAmplitudeAt(hannWindowed(x, n), rate, hz);
}

// The pitch that the first partials of a note near hz agree on, as cents off hz: each partial
// k is sought near k * hz and weighs by its strength. Plucked strings often carry less in the
// fundamental than in the partials above it, so it alone would read poorly. Nothing when no
// partial stands out of its search range.
inline std::optional<double> centsOffNear(const float *x, qsizetype n, int rate, double hz,
                                          int partials = 3)
{
    constexpr double range = 40.0;
    const std::vector<double> windowed = hannWindowed(x, n);
    double weighted = 0.0;
    double weights = 0.0;
    for (int k = 1; k <= partials; ++k) {
        double best = 0.0;
        double bestCents = 0.0;
        const auto search = [&](double from, double to, double step) {
            for (double c = from; c <= to + 0.01; c += step) {
                const double a =
                    windowedAmplitudeAt(windowed, rate, k * hz * std::pow(2.0, c / 1200.0));
                if (a > best) {
                    best = a;
                    bestCents = c;
                }
            }
        };
        // The strongest point within the range in steps of 2 cents, then to a tenth of a cent.
        // On the edge of the search the real peak is elsewhere: that partial doesn't count.
        search(-range, range, 2.0);
        if (std::abs(bestCents) >= range - 0.01)
            continue;
        search(bestCents - 2.0, bestCents + 2.0, 0.1);
        weighted += best * bestCents;
        weights += best;
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

// First and last frame at or above the given level; -1 if none.
inline qsizetype firstFrameAbove(const std::vector<float> &x, float level)
{
    const auto at = std::find_if(x.begin(), x.end(), [&](float v) { return std::abs(v) >= level; });
    return at == x.end() ? -1 : qsizetype(at - x.begin());
}

inline qsizetype lastFrameAbove(const std::vector<float> &x, float level)
{
    const auto at =
        std::find_if(x.rbegin(), x.rend(), [&](float v) { return std::abs(v) >= level; });
    return at == x.rend() ? -1 : qsizetype(x.rend() - at) - 1;
}

} // namespace AudioProbe
