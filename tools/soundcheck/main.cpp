// SPDX-License-Identifier: MIT
// soundcheck: the ear (and the mouth) of the demonstration and of the end-to-end tests.
#include "tools/soundcheck/correlate.h"
#include "tools/soundcheck/microphone.h"
#include "tools/soundcheck/note_stream.h"
#include "tools/soundcheck/wav.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace soundcheck;

constexpr const char* kUsage =
    "usage: soundcheck correlate SPOKEN.wav HEARD.wav        how like they are, as JSON\n"
    "       soundcheck extract-note RAW OUT.wav PERIOD [RATE] stored note to wav; PERIOD in frames, RATE 40000\n"
    "       soundcheck wrap IN.raw OUT.wav [RATE]             bare 16-bit samples to wav\n"
    "       soundcheck microphone FIFO SPEECH.wav [--pulled]  silence; speech on SIGUSR1; --pulled: at the reader's "
    "pace\n";

std::uint32_t number(const std::string& text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value == 0)
        throw std::runtime_error(text + ": not a positive number");
    return value;
}

int run(const std::vector<std::string>& args) {
    const std::string command = args.empty() ? "" : args[0];
    const std::size_t count = args.size();
    if (command == "correlate" && count == 3) {
        std::puts(toJson(compare(readSound(args[1]), readSound(args[2]))).c_str());
    } else if (command == "extract-note" && (count == 4 || count == 5)) {
        writeWav(args[2], {count == 5 ? number(args[4]) : 40000, samplesOfNote(readBytes(args[1]), number(args[3]))});
    } else if (command == "wrap" && (count == 3 || count == 4)) {
        writeWav(args[2], readSound(args[1], count == 4 ? number(args[3]) : 40000));
    } else if (command == "microphone" && (count == 3 || (count == 4 && args[3] == "--pulled"))) {
        speakInto(args[1], readSound(args[2]), count == 3 ? Pace::Writer : Pace::Reader);
    } else {
        std::fputs(kUsage, stderr);
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soundcheck: %s\n", error.what());
        return 1;
    }
}
