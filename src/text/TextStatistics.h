// How much a text holds, counted in one pass, with what the minimap draws of it.
#pragma once

#include "base/Scheduler.h"
#include "text/Rope.h"

#include <optional>
#include <vector>

namespace quillmark {

struct TextStats {
    int64_t lines = 1; ///< line feeds + 1
    int64_t words = 0; ///< runs of characters that are not white space
    int64_t chars = 0; ///< user-perceived, line feeds included (UAX #29)

    bool operator==(const TextStats&) const = default;
};

struct TextStatistics {
    static constexpr int64_t mostSamples = 400;
    static constexpr int64_t fullWidth = 80; ///< characters of a line whose sample is 1

    TextStats stats;
    /// Lengths of lines as parts of the full width, 0 … 1: of all lines, or of 400 that lie evenly among
    /// them.
    std::vector<float> minimapSamples;

    bool operator==(const TextStatistics&) const = default;
};

/// Nothing when it was cancelled meanwhile. Any thread.
std::optional<TextStatistics> countText(const Rope& text, const CancelToken& cancel);

} // namespace quillmark
