// Regular expressions in ICU's syntax, bounded in time and without a stack limit that makes a plain rule
// fail.
#pragma once

#include "base/Range.h"
#include "base/Result.h"
#include "base/Scheduler.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

struct RegexOptions {
    bool caseInsensitive = false;
    bool anchorsMatchLines = false; ///< ^ and $ match at line breaks
    bool dotMatchesLineSeparators = false;
    bool wordBoundariesByUnicode = false; ///< \b as UAX #29 has it
};

class Regex {
public:
    using Options = RegexOptions;

    /// What ended a search. All but `finished` mean that there may be matches which were not found.
    enum class Outcome {
        finished,
        cancelled,
        timedOut,
        tooComplex, ///< the search needed more memory than it is given
    };

    struct Match {
        std::vector<Range> groups; ///< group 0 is the whole match; a group that took no part has location −1
        Range range() const { return groups.front(); }
    };

    /// Limits of one search over all of its matches. Both are looked at between matches and, in a match that
    /// takes long, every few microseconds.
    struct Limits {
        CancelToken cancel;
        std::optional<Duration> time; ///< from the call on
    };

    /// The error says where the pattern is wrong; also a pattern of more than 100,000 units is an error.
    static Result<Regex> compile(std::u16string_view pattern, Options options = {});

    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;
    ~Regex();

    /// Calls `found(match)` for each match in `within` (cut to the text), in order, until it returns false.
    /// An empty match is followed by one that starts later. Assertions look around `within`, so that ^ does
    /// not match at its start unless a line begins there. Not from two threads at once, and not from within
    /// `found`.
    Outcome forEachMatch(std::u16string_view text, Range within, const Limits& limits,
        const std::function<bool(const Match&)>& found);

    /// The first match, without any limit: for short texts and patterns of the program's own.
    std::optional<Match> firstMatch(std::u16string_view text);

private:
    struct Impl;
    explicit Regex(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_impl;
};

} // namespace quillmark
