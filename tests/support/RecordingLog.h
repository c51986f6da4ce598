#pragma once

#include "platform/Log.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace quillmark::test {

/// A log that keeps its lines for the test to read.
class RecordingLog final : public Log {
public:
    void line(std::string_view text) override
    {
        const std::lock_guard lock(m_mutex);
        m_lines.emplace_back(text);
    }

    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

    bool hasLineStartingWith(std::string_view start) const
    {
        const std::lock_guard lock(m_mutex);
        return std::ranges::any_of(m_lines, [&](const std::string& line) { return line.starts_with(start); });
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

} // namespace quillmark::test
