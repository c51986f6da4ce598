#include "text/Regex.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <unicode/uregex.h>

namespace quillmark {
namespace {

/// Bytes that backtracking may take. ICU's own 8 MB do not match a string literal of 500 KB.
constexpr int32_t stackLimit = 256 << 20;
constexpr int32_t idleStackLimit = 64 << 10; ///< what is kept between searches

/// Units of a pattern; nothing can stop ICU while it compiles one (about 0.1 µs a unit).
constexpr size_t longestPattern = 100'000;

struct Close {
    void operator()(URegularExpression* expression) const { uregex_close(expression); }
};
using Expression = std::unique_ptr<URegularExpression, Close>;

uint32_t flagsOf(Regex::Options options)
{
    uint32_t flags = 0;
    if (options.caseInsensitive)
        flags |= UREGEX_CASE_INSENSITIVE;
    if (options.anchorsMatchLines)
        flags |= UREGEX_MULTILINE;
    if (options.dotMatchesLineSeparators)
        flags |= UREGEX_DOTALL;
    if (options.wordBoundariesByUnicode)
        flags |= UREGEX_UWORD;
    return flags;
}

Error compileError(const UParseError& place)
{
    std::string message = "Ошибка в выражении";
    if (place.line > 1)
        message += ", строка " + std::to_string(place.line);
    if (place.offset > 0)
        message += ", символ " + std::to_string(place.offset);
    return {.code = 0, .message = std::move(message)};
}

bool fitsIcu(std::u16string_view text)
{
    return text.size() <= std::numeric_limits<int32_t>::max();
}

/// Decides whether a search goes on. ICU's own time limit counts the steps of one match, which bounds neither
/// many short matches nor the time of a step.
class Watch {
public:
    explicit Watch(const Regex::Limits& limits)
        : m_cancel(limits.cancel)
    {
        if (limits.time)
            m_deadline = std::chrono::steady_clock::now() + *limits.time;
    }

    bool goesOn() const
    {
        if (m_cancel.isCancelled())
            m_reason = Regex::Outcome::cancelled;
        else if (m_deadline && std::chrono::steady_clock::now() >= *m_deadline)
            m_reason = Regex::Outcome::timedOut;
        return m_reason == Regex::Outcome::finished;
    }

    Regex::Outcome reason() const { return m_reason; }

private:
    const CancelToken& m_cancel;
    std::optional<SteadyTime> m_deadline;
    mutable Regex::Outcome m_reason = Regex::Outcome::finished; ///< ICU hands the watch back as constant
};

UBool goesOnInMatch(const void* watch, int32_t)
{
    return static_cast<const Watch*>(watch)->goesOn();
}

UBool goesOnAtNextStart(const void* watch, int64_t)
{
    return static_cast<const Watch*>(watch)->goesOn();
}

/// An expression pointed at a text for the time of one search.
class Search {
public:
    Search(URegularExpression* expression, std::u16string_view text, Range within, const Watch& watch)
        : m_expression(expression)
        , m_watch(watch)
    {
        uregex_setStackLimit(expression, stackLimit, &m_status);
        uregex_setMatchCallback(expression, goesOnInMatch, &watch, &m_status);
        uregex_setFindProgressCallback(expression, goesOnAtNextStart, &watch, &m_status);
        uregex_useTransparentBounds(expression, true, &m_status);
        uregex_useAnchoringBounds(expression, false, &m_status);
        uregex_setText(
            expression, text.empty() ? u"" : text.data(), static_cast<int32_t>(text.size()), &m_status);
        uregex_setRegion64(expression, within.location, within.end(), &m_status);
    }

    ~Search()
    {
        UErrorCode status = U_ZERO_ERROR;
        uregex_setText(m_expression, u"", 0, &status);
        uregex_setStackLimit(m_expression, idleStackLimit, &status); // gives the memory back
        uregex_setMatchCallback(m_expression, nullptr, nullptr, &status);
        uregex_setFindProgressCallback(m_expression, nullptr, nullptr, &status);
    }

    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    bool findNext() { return uregex_findNext(m_expression, &m_status) && U_SUCCESS(m_status); }

    void read(Regex::Match& match)
    {
        for (size_t i = 0; i < match.groups.size(); ++i) {
            const auto group = static_cast<int32_t>(i);
            const int64_t start = uregex_start64(m_expression, group, &m_status);
            const int64_t end = uregex_end64(m_expression, group, &m_status);
            match.groups[i] = {start, end - start};
        }
    }

    Regex::Outcome outcome() const
    {
        if (m_watch.reason() != Regex::Outcome::finished)
            return m_watch.reason();
        return U_SUCCESS(m_status) ? Regex::Outcome::finished : Regex::Outcome::tooComplex;
    }

private:
    URegularExpression* m_expression;
    const Watch& m_watch;
    UErrorCode m_status = U_ZERO_ERROR;
};

} // namespace

struct Regex::Impl {
    Expression expression;
    int groupCount = 0;
};

Regex::Regex(std::unique_ptr<Impl> impl)
    : m_impl(std::move(impl))
{
}

Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;
Regex::~Regex() = default;

Result<Regex> Regex::compile(std::u16string_view pattern, Options options)
{
    if (pattern.empty())
        return std::unexpected(Error{.code = 0, .message = "Пустое выражение"});
    if (pattern.size() > longestPattern)
        return std::unexpected(Error{.code = 0, .message = "Слишком длинное выражение"});
    UParseError place{};
    UErrorCode status = U_ZERO_ERROR;
    Expression expression(
        uregex_open(pattern.data(), static_cast<int32_t>(pattern.size()), flagsOf(options), &place, &status));
    if (U_FAILURE(status))
        return std::unexpected(compileError(place));
    const int groupCount = uregex_groupCount(expression.get(), &status);
    return Regex(std::make_unique<Impl>(std::move(expression), groupCount));
}

Regex::Outcome Regex::forEachMatch(std::u16string_view text, Range within, const Limits& limits,
    const std::function<bool(const Match&)>& found)
{
    assert(m_impl && "the expression was moved away");
    if (!fitsIcu(text))
        return Outcome::tooComplex;
    const auto length = static_cast<int64_t>(text.size());
    const int64_t start = std::clamp<int64_t>(within.location, 0, length);
    const int64_t end = std::clamp(within.end(), start, length);
    const Watch watch(limits);
    Search search(m_impl->expression.get(), text, {start, end - start}, watch);
    Match match;
    match.groups.resize(static_cast<size_t>(m_impl->groupCount) + 1);
    while (watch.goesOn() && search.findNext()) {
        search.read(match);
        if (!found(match))
            return Outcome::finished;
    }
    return search.outcome();
}

std::optional<Regex::Match> Regex::firstMatch(std::u16string_view text)
{
    std::optional<Match> first;
    forEachMatch(text, {0, static_cast<int64_t>(text.size())}, {}, [&](const Match& match) {
        first = match;
        return false;
    });
    return first;
}

} // namespace quillmark
