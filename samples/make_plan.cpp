// SPDX-License-Identifier: MIT
// Writes the sample drawings: make_plan OUT.dxf [--entities N]
#include "samples/office_plan.h"

#include <charconv>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

int main(int argc, char** argv) {
    constexpr std::size_t kMostEntities = 10'000'000;
    std::size_t entities = 0;
    bool understood = argc == 2;
    if (argc == 4 && std::string_view(argv[2]) == "--entities") {
        const std::string_view digits = argv[3];
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), entities);
        understood =
            error == std::errc() && end == digits.data() + digits.size() && entities > 0 && entities <= kMostEntities;
    }
    if (!understood) {
        std::fprintf(stderr, "usage: make_plan OUT.dxf [--entities N]   (N from 1 to %zu)\n", kMostEntities);
        return 1;
    }
    const std::string dxf = (entities == 0 ? samples::officePlan() : samples::roomGrid(entities)).toDxf();
    std::ofstream out(argv[1], std::ios::binary);
    out << dxf << std::flush;
    if (!out) {
        std::fprintf(stderr, "make_plan: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
