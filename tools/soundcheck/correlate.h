// SPDX-License-Identifier: MIT
#pragma once

#include "tools/soundcheck/wav.h"

#include <string>
#include <vector>

namespace soundcheck {

/// A stretch of exact silence in what was heard, where something was spoken.
struct Gap {
    double atMs = 0; ///< from the beginning of the speech
    double lengthMs = 0;
};

/// How well `heard` repeats the speech of `spoken`. The speech runs from the first to the last sample of `spoken` that
/// is louder than a hundredth of its peak.
struct Likeness {
    double peak = 0;       ///< of the normalised cross-correlation over the speech, -1 to 1
    double lagMs = 0;      ///< what is at t in `spoken` is at t + lag in `heard`
    double speechMs = 0;   ///< length of the speech
    double gain = 0;       ///< level of `heard` over that of `spoken`
    double first100Ms = 0; ///< normalised correlation of the first 100 ms of the speech at that lag
    double last100Ms = 0;  ///< of the last 100 ms
    std::vector<Gap> gaps; ///< runs of zero samples longer than 5 ms inside the speech
};

/// Throws std::runtime_error if the rates differ or `spoken` is silent.
Likeness compare(const Sound& spoken, const Sound& heard);

/// The same as one JSON object, keys as the members in snake case, with "first_100ms_present" and
/// "last_100ms_present" (correlation of at least 0.8 there).
std::string toJson(const Likeness& likeness);

} // namespace soundcheck
