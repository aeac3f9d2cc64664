// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/prompter.h"

#include <functional>
#include <utility>
#include <vector>

namespace merix::test {

/// Answers prompts one after the other, as a script does; after the last it cancels.
class Answers : public ed::InputSource {
public:
    explicit Answers(std::vector<QString> lines)
        : m_lines(std::move(lines)) {
        ed::Prompter::instance().setSource(this);
    }
    ~Answers() override { ed::Prompter::instance().setSource(nullptr); }

    /// `before`, when set, runs each time a prompt waits.
    std::function<void()> before;

    bool feed() override {
        if (before)
            before();
        if (m_next < m_lines.size())
            ed::Prompter::instance().submitLine(m_lines[m_next++]);
        else
            ed::Prompter::instance().cancel();
        return true;
    }
    std::size_t used() const { return m_next; }

private:
    std::vector<QString> m_lines;
    std::size_t m_next = 0;
};

} // namespace merix::test
