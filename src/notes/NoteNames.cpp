#include "notes/NoteNames.h"

#include "io/Utf8.h"
#include "text/Regex.h"
#include "text/Unicode.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <ctime>

namespace quillmark {
namespace {

constexpr int64_t titleCharacters = 80;
constexpr int64_t previewCharacters = 80;
constexpr int64_t baseNameCharacters = 60;

constexpr size_t longestFileName = 255; // bytes
constexpr std::string_view extension = ".txt";
constexpr size_t roomForNumber = 8; // " 9999999"
constexpr size_t roomForCopy = std::string_view(" copy").size();
constexpr size_t roomForConflict = std::string_view(" (conflict 2026-03-05 14-07)").size();

/// The whole characters at the start that fit into both limits.
std::u16string_view firstCharacters(std::u16string_view text, int64_t characters, size_t bytes)
{
    int64_t end = 0;
    size_t used = 0;
    const auto length = static_cast<int64_t>(text.size());
    for (int64_t n = 0; n < characters && end < length; ++n) {
        const int64_t next = nextGrapheme(text, end);
        used += utf8(text.substr(static_cast<size_t>(end), static_cast<size_t>(next - end))).size();
        if (used > bytes)
            break;
        end = next;
    }
    return text.substr(0, static_cast<size_t>(end));
}

/// Every run of white space becomes one space. White space has no character outside the basic plane.
std::u16string withSingleSpaces(std::u16string_view text)
{
    std::u16string result;
    bool inRun = false;
    for (const char16_t unit : text) {
        const bool isSpace = isWhiteSpace(unit);
        if (!isSpace)
            result += unit;
        else if (!inRun)
            result += u' ';
        inRun = isSpace;
    }
    return result;
}

} // namespace

TitleAndPreview titleAndPreview(std::u16string_view text)
{
    while (!text.empty()) {
        const size_t lineFeed = text.find(u'\n');
        const std::u16string_view line = trimmedHorizontally(text.substr(0, lineFeed));
        text.remove_prefix(lineFeed == std::u16string_view::npos ? text.size() : lineFeed + 1);
        if (line.empty())
            continue;
        std::u16string rest(text);
        for (char16_t& unit : rest)
            unit = unit == u'\n' ? u' ' : unit;
        return {utf8(firstGraphemes(line, titleCharacters)),
            utf8(firstGraphemes(trimmed(rest), previewCharacters))};
    }
    return {std::string(untitled), ""};
}

std::string fileBaseName(std::string_view title)
{
    constexpr size_t room
        = longestFileName - extension.size() - roomForNumber - roomForCopy - roomForConflict;
    std::u16string name(firstCharacters(utf16(title), baseNameCharacters, room));
    std::ranges::replace_if(
        name, [](char16_t unit) { return unit == u'/' || unit == u':' || unit == u'\0'; }, u'-');
    name = withSingleSpaces(name);
    std::u16string_view result = trimmedHorizontally(name);
    result.remove_prefix(std::min(result.find_first_not_of(u'.'), result.size()));
    return result.empty() ? std::string(untitled) : utf8(result);
}

std::string_view fileName(const Note& note)
{
    const std::string_view path = note.url.native();
    return path.substr(path.rfind('/') + 1);
}

std::string fileStem(const Path& path)
{
    return path.stem().native();
}

bool isNamedAfter(std::string_view stem, std::string_view baseName)
{
    const std::u16string current = utf16(stem);
    const std::u16string desired = utf16(baseName);
    if (canonicallyEqual(current, desired))
        return true;
    auto numberAtTheEnd = Regex::compile(u"\\s\\d+$");
    const auto match = numberAtTheEnd ? numberAtTheEnd->firstMatch(current) : std::nullopt;
    return match
        && canonicallyEqual(current.substr(0, static_cast<size_t>(match->range().location)), desired);
}

std::string nameWithSuffix(std::string_view stem, std::string_view suffix)
{
    assert(suffix.size() < longestFileName - extension.size() - roomForNumber);
    const size_t room = longestFileName - extension.size() - roomForNumber - suffix.size();
    std::string name(stem);
    if (name.size() > room) {
        const std::u16string text = utf16(stem);
        name = isWellFormedUtf8(stem) ? utf8(firstCharacters(text, static_cast<int64_t>(text.size()), room))
                                      : name.substr(0, room);
    }
    return name.append(suffix);
}

std::string conflictSuffix(WallTime time)
{
    const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
    std::tm local{};
    std::array<char, 64> text{};
    if (!localtime_r(&seconds, &local)
        || std::strftime(text.data(), text.size(), " (conflict %Y-%m-%d %H-%M)", &local) == 0)
        return " (conflict)";
    return text.data();
}

Result<Path> makeUnderFreeName(FileSystem& files, const Path& folder, std::string_view baseName,
    const std::function<Status(const Path&)>& make)
{
    assert(make && !baseName.empty());
    std::string name(baseName);
    for (int64_t counter = 2;; ++counter) {
        const Path path = folder / name.append(extension);
        if (!files.exists(path)) {
            const Status made = make(path);
            if (made)
                return path;
            if (made.error().code != EEXIST)
                return std::unexpected(made.error());
        }
        name.assign(baseName).append(" ").append(std::to_string(counter));
    }
}

} // namespace quillmark
