// SPDX-License-Identifier: MIT
// Every decoder gets every stored case, whole and damaged in many ways.
#include "fuzz/decoders.h"
#include "tests/merix/io/drawing_fixture.h"

namespace merix::io::testing {
namespace {

std::vector<std::string> storedCases() {
    std::vector<std::string> cases;
    for (const auto& entry : std::filesystem::directory_iterator(MERIX_SOURCE_DIR "/fuzz/cases"))
        cases.push_back(readBytes(entry.path().string()));
    return cases;
}

void run(const fuzz::NamedDecoder& decoder, const std::string& bytes) {
    decoder.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

TEST(Decoders, ReturnForEveryStoredCase) {
    const WithSampleClass sample;
    const std::vector<std::string> cases = storedCases();
    ASSERT_FALSE(cases.empty());
    for (const auto& decoder : fuzz::kDecoders) {
        for (const std::string& bytes : cases)
            run(decoder, bytes);
    }
}

TEST(Decoders, ReturnForDamagedCases) {
    const WithSampleClass sample;
    std::uint32_t state = 1;
    const auto next = [&state](std::size_t bound) {
        state = state * 1664525U + 1013904223U;
        return bound == 0 ? 0 : (state >> 8) % bound;
    };
    for (const std::string& original : storedCases()) {
        for (int i = 0; i < 200; ++i) {
            std::string bytes = original;
            for (std::size_t k = 0; k <= next(6) && !bytes.empty(); ++k) {
                const std::size_t at = next(bytes.size());
                switch (next(4)) {
                case 0:
                    bytes[at] = static_cast<char>(next(256));
                    break;
                case 1:
                    bytes.erase(at, next(20));
                    break;
                case 2:
                    bytes.insert(at, bytes.substr(next(bytes.size()), next(60)));
                    break;
                default:
                    bytes[at] = '\n';
                }
            }
            for (const auto& decoder : fuzz::kDecoders)
                run(decoder, bytes);
        }
    }
}

} // namespace
} // namespace merix::io::testing
