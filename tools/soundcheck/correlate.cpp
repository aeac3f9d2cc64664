// SPDX-License-Identifier: MIT
// The cross-correlation of the speech with all that was heard is one product of two Fourier transforms; dividing each
// lag by the energy of the stretch it covers (running sums) makes it independent of level.
#include "tools/soundcheck/correlate.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <stdexcept>

namespace soundcheck {
namespace {

using Spectrum = std::vector<std::complex<double>>;

constexpr double kGapMs = 5;
constexpr double kEdgeMs = 100;
constexpr double kPresent = 0.8;

/// In place, radix 2; the size is a power of two. The inverse is not scaled.
void transform(Spectrum& data, bool inverse) {
    const std::size_t size = data.size();
    for (std::size_t i = 1, j = 0; i < size; ++i) {
        std::size_t bit = size >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(data[i], data[j]);
    }
    Spectrum roots(size / 2);
    const double turn = (inverse ? 2 : -2) * std::numbers::pi / static_cast<double>(size);
    for (std::size_t i = 0; i < roots.size(); ++i)
        roots[i] = std::polar(1.0, turn * static_cast<double>(i));
    for (std::size_t span = 1; span < size; span *= 2) {
        const std::size_t stride = size / (2 * span);
        for (std::size_t start = 0; start < size; start += 2 * span) {
            for (std::size_t i = start; i < start + span; ++i) {
                const std::complex<double> other = data[i + span] * roots[(i - start) * stride];
                data[i + span] = data[i] - other;
                data[i] += other;
            }
        }
    }
}

/// correlation[lag + first.size() - 1] = sum of first[i] * second[i + lag]; lags from 1 - first.size() up.
std::vector<double> crossCorrelation(const std::vector<double>& first, const std::vector<double>& second) {
    const std::size_t lags = first.size() + second.size() - 1;
    std::size_t size = 1;
    while (size < lags)
        size *= 2;
    Spectrum a(size);
    Spectrum b(size);
    std::copy(first.rbegin(), first.rend(), a.begin());
    std::copy(second.begin(), second.end(), b.begin());
    transform(a, false);
    transform(b, false);
    for (std::size_t i = 0; i < size; ++i)
        a[i] *= b[i];
    transform(a, true);
    std::vector<double> result(lags);
    for (std::size_t i = 0; i < lags; ++i)
        result[i] = a[i].real() / static_cast<double>(size);
    return result;
}

std::vector<double> asDoubles(const std::vector<std::int16_t>& samples) {
    return {samples.begin(), samples.end()};
}

double energy(const std::vector<double>& samples) {
    double sum = 0;
    for (const double sample : samples)
        sum += sample * sample;
    return sum;
}

struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
};

Range speechOf(const std::vector<double>& samples) {
    double peak = 0;
    for (const double sample : samples)
        peak = std::max(peak, std::abs(sample));
    if (peak == 0)
        throw std::runtime_error("nothing is spoken: every sample is zero");
    const auto loud = [peak](double sample) { return std::abs(sample) > peak / 100; };
    const auto begin = std::find_if(samples.begin(), samples.end(), loud) - samples.begin();
    const auto behind = std::find_if(samples.rbegin(), samples.rend(), loud) - samples.rbegin();
    return {static_cast<std::size_t>(begin), samples.size() - static_cast<std::size_t>(behind)};
}

/// What is heard in place of `speech` at a lag; silence beyond the ends of `heard`.
std::vector<double> stretch(const std::vector<double>& heard, std::ptrdiff_t begin, std::size_t length) {
    std::vector<double> result(length);
    for (std::size_t i = 0; i < length; ++i) {
        const std::ptrdiff_t at = begin + static_cast<std::ptrdiff_t>(i);
        if (at >= 0 && at < static_cast<std::ptrdiff_t>(heard.size()))
            result[i] = heard[static_cast<std::size_t>(at)];
    }
    return result;
}

double normalised(const std::vector<double>& a, const std::vector<double>& b, Range range) {
    double product = 0;
    double energyA = 0;
    double energyB = 0;
    for (std::size_t i = range.begin; i < range.end; ++i) {
        product += a[i] * b[i];
        energyA += a[i] * a[i];
        energyB += b[i] * b[i];
    }
    return energyA > 0 && energyB > 0 ? product / std::sqrt(energyA * energyB) : 0;
}

/// Where in `heard` the speech lies best. A stretch that holds less than a millionth of the speech's energy is no
/// candidate: a few faint samples may look like anything.
std::ptrdiff_t bestLag(const std::vector<double>& speech, const std::vector<double>& heard) {
    const std::vector<double> products = crossCorrelation(speech, heard);
    std::vector<double> sums(heard.size() + 1);
    for (std::size_t i = 0; i < heard.size(); ++i)
        sums[i + 1] = sums[i] + heard[i] * heard[i];
    const double speechEnergy = energy(speech);
    const auto length = static_cast<std::ptrdiff_t>(speech.size());
    const auto count = static_cast<std::ptrdiff_t>(heard.size());
    std::ptrdiff_t best = 0;
    double bestValue = 0;
    for (std::ptrdiff_t lag = 1 - length; lag < count; ++lag) {
        const auto from = static_cast<std::size_t>(std::max<std::ptrdiff_t>(lag, 0));
        const auto to = static_cast<std::size_t>(std::min(lag + length, count));
        const double covered = sums[to] - sums[from];
        if (covered < speechEnergy * 1e-6)
            continue;
        const double value = products[static_cast<std::size_t>(lag + length - 1)] / std::sqrt(covered * speechEnergy);
        if (value > bestValue) {
            bestValue = value;
            best = lag;
        }
    }
    return best;
}

/// Runs of exact zeros in `heard` that are long and cover something spoken: a pause of the speaker is no gap.
std::vector<Gap> gapsIn(const std::vector<double>& speech, const std::vector<double>& heard, double rate) {
    const double quiet = std::sqrt(energy(speech) / static_cast<double>(speech.size())) / 20;
    std::vector<Gap> gaps;
    for (std::size_t i = 0; i < heard.size();) {
        std::size_t end = i;
        double spokenThere = 0;
        for (; end < heard.size() && heard[end] == 0; ++end)
            spokenThere += speech[end] * speech[end];
        const auto length = static_cast<double>(end - i);
        if (length * 1000 > kGapMs * rate && std::sqrt(spokenThere / length) > quiet)
            gaps.push_back({static_cast<double>(i) * 1000 / rate, length * 1000 / rate});
        i = std::max(end, i + 1);
    }
    return gaps;
}

} // namespace

Likeness compare(const Sound& spoken, const Sound& heard) {
    if (spoken.rate != heard.rate)
        throw std::runtime_error("the sample rates differ: " + std::to_string(spoken.rate) + " and " +
                                 std::to_string(heard.rate));
    const std::vector<double> all = asDoubles(spoken.samples);
    const Range range = speechOf(all);
    const std::vector<double> speech(all.begin() + static_cast<std::ptrdiff_t>(range.begin),
                                     all.begin() + static_cast<std::ptrdiff_t>(range.end));
    const std::vector<double> other = asDoubles(heard.samples);
    Likeness likeness;
    const double rate = spoken.rate;
    likeness.speechMs = static_cast<double>(speech.size()) * 1000 / rate;
    if (other.empty())
        return likeness;

    const std::ptrdiff_t lag = bestLag(speech, other);
    const std::vector<double> aligned = stretch(other, lag, speech.size());
    const std::size_t edge = std::min(static_cast<std::size_t>(kEdgeMs * rate / 1000), speech.size());
    likeness.peak = normalised(speech, aligned, {0, speech.size()});
    likeness.lagMs = static_cast<double>(lag - static_cast<std::ptrdiff_t>(range.begin)) * 1000 / rate;
    likeness.gain = std::sqrt(energy(aligned) / energy(speech));
    likeness.first100Ms = normalised(speech, aligned, {0, edge});
    likeness.last100Ms = normalised(speech, aligned, {speech.size() - edge, speech.size()});
    likeness.gaps = gapsIn(speech, aligned, rate);
    return likeness;
}

std::string toJson(const Likeness& likeness) {
    char text[512];
    std::snprintf(text, sizeof text,
                  "{\"peak\": %.4f, \"lag_ms\": %.3f, \"speech_ms\": %.1f, \"gain\": %.3f, \"first_100ms\": %.4f, "
                  "\"first_100ms_present\": %s, \"last_100ms\": %.4f, \"last_100ms_present\": %s, \"gaps\": [",
                  likeness.peak, likeness.lagMs, likeness.speechMs, likeness.gain, likeness.first100Ms,
                  likeness.first100Ms >= kPresent ? "true" : "false", likeness.last100Ms,
                  likeness.last100Ms >= kPresent ? "true" : "false");
    std::string json = text;
    for (const Gap& gap : likeness.gaps) {
        std::snprintf(text, sizeof text, "%s{\"at_ms\": %.1f, \"length_ms\": %.1f}", json.back() == '[' ? "" : ", ",
                      gap.atMs, gap.lengthMs);
        json += text;
    }
    return json + "]}";
}

} // namespace soundcheck
