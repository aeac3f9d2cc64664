// SPDX-License-Identifier: MIT
// Sound that a counting microphone gave, as it was kept.
#pragma once

#include "tests/phonomark/audio/counting_microphone.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

/// What a device granted.
struct Granted {
    unsigned rate = 0;   ///< samples a second
    unsigned period = 0; ///< frames
};

/// What the device of `direction` ("capture" or "playback") granted last, as the log that PHONOMARK_AUDIO_LOG names
/// tells it.
inline Granted lastGranted(const std::string& log, const std::string& direction) {
    std::ifstream file(log);
    Granted found;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(direction))
            std::sscanf(line.c_str() + direction.size(), " rate=%u period=%u", &found.rate, &found.period);
    }
    return found;
}

/// Places where a millisecond and more is missing, is silence or was heard twice. A server that adapts the rate does so
/// by steps that are not exactly one, and its filter rings where the count begins anew: neither is a gap.
inline int gapsIn(const std::vector<std::int16_t>& samples) {
    constexpr int kLeast = CountingMicrophone::kRate / 1000;
    constexpr int kRinging = CountingMicrophone::kCount / 2 - 2000;
    int gaps = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const int from = samples[i - 1], to = samples[i];
        gaps += std::abs(from) < kRinging && std::abs(to) < kRinging && std::abs(to - from) > kLeast ? 1 : 0;
    }
    return gaps;
}

/// What the server's loudspeaker was given, without the silence before and after it.
inline std::vector<std::int16_t> heardBy(const SoundServer& server) {
    std::ifstream file(server.path("heard.raw"), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    const std::string bytes = content.str();
    std::vector<std::int16_t> heard(bytes.size() / 2);
    std::memcpy(heard.data(), bytes.data(), heard.size() * 2);
    const auto loud = [](std::int16_t sample) { return sample != 0; };
    heard.erase(heard.begin(), std::find_if(heard.begin(), heard.end(), loud));
    heard.erase(std::find_if(heard.rbegin(), heard.rend(), loud).base(), heard.end());
    return heard;
}
