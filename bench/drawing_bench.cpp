// SPDX-License-Identifier: MIT
// Opening and saving a drawing, beside the least that any reader must do: map the file, split its lines, convert the
// numbers. The drawing is the first argument.
#include "merix/db/database_imp.h"
#include "merix/io/drawing_file.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

std::string g_drawing;

std::int64_t size() {
    return static_cast<std::int64_t>(std::filesystem::file_size(g_drawing));
}

/// The peer: a memory-mapped scan that keeps nothing.
void scanMapped(benchmark::State& state) {
    for (auto _ : state) {
        const int file = open(g_drawing.c_str(), O_RDONLY | O_CLOEXEC);
        const auto length = static_cast<std::size_t>(size());
        void* map = mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file, 0);
        if (map == MAP_FAILED) {
            state.SkipWithError("cannot map the drawing");
            return;
        }
        std::string_view text(static_cast<const char*>(map), length);
        double sum = 0;
        bool isValue = false;
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
            line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
            double number = 0;
            if (isValue && std::from_chars(line.data(), line.data() + line.size(), number).ec == std::errc())
                sum += number;
            isValue = !isValue;
        }
        benchmark::DoNotOptimize(sum);
        munmap(map, length);
        close(file);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * size());
}
BENCHMARK(scanMapped)->Unit(benchmark::kMillisecond);

void openDxf(benchmark::State& state) {
    for (auto _ : state) {
        MxDbDatabase database;
        if (const auto result = merix::io::readDrawing(g_drawing, database); !result) {
            state.SkipWithError(result.error.c_str());
            return;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * size());
}
BENCHMARK(openDxf)->Unit(benchmark::kMillisecond);

void save(benchmark::State& state, const char* suffix) {
    MxDbDatabase database;
    if (const auto result = merix::io::readDrawing(g_drawing, database); !result) {
        state.SkipWithError(result.error.c_str());
        return;
    }
    const auto target = std::filesystem::temp_directory_path() / ("bench_" + std::to_string(getpid()) + suffix);
    for (auto _ : state) {
        std::filesystem::remove(target);
        if (const auto result = merix::io::writeDrawing(target.string(), database); !result) {
            state.SkipWithError(result.error.c_str());
            return;
        }
    }
    std::filesystem::remove(target);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * size());
}
BENCHMARK_CAPTURE(save, dxf, ".dxf")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(save, merix, ".merix")->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc != 2) {
        std::fputs("usage: drawing_bench [benchmark options] DRAWING.dxf\n", stderr);
        return 1;
    }
    g_drawing = argv[1];
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
