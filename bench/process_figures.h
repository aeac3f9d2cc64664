// SPDX-License-Identifier: MIT
// What a process uses and holds, as the kernel tells it.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <unistd.h>

namespace bench {

class ProcessFigures {
public:
    /// `process` is an id, or "self".
    explicit ProcessFigures(const std::string& process)
        : m_folder("/proc/" + process + "/") {}

    /// Processor time in seconds of each thread, by its id and name.
    std::map<std::string, double> threadTimes() const {
        std::map<std::string, double> times;
        for (const auto& task : std::filesystem::directory_iterator(m_folder + "task")) {
            std::ifstream file(task.path() / "stat");
            std::string text;
            std::getline(file, text);
            const std::size_t nameEnd = text.rfind(')');
            long user = 0, system = 0;
            if (nameEnd == std::string::npos ||
                std::sscanf(text.c_str() + nameEnd + 2, "%*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &user,
                            &system) != 2)
                continue;
            times[text.substr(0, nameEnd + 1)] =
                static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
        }
        return times;
    }

    /// What the threads that came up since `before` have used of a core in `seconds`.
    void printNewThreads(const char* what, const std::map<std::string, double>& before, double seconds) const {
        for (const auto& [thread, time] : threadTimes()) {
            if (!before.contains(thread))
                std::printf("%s: thread %s: %.2f %% of a core\n", what, thread.c_str(), time * 100 / seconds);
        }
    }

    void printHoldings(const char* when) const {
        long pages = 0, resident = 0;
        std::ifstream(m_folder + "statm") >> pages >> resident;
        std::printf("%-22s resident %ld KiB, threads %td, open files %td\n", when,
                    resident * sysconf(_SC_PAGESIZE) / 1024, entries("task"), entries("fd"));
    }

private:
    std::ptrdiff_t entries(const char* name) const {
        return std::distance(std::filesystem::directory_iterator(m_folder + name),
                             std::filesystem::directory_iterator());
    }
    std::string m_folder;
};

} // namespace bench
