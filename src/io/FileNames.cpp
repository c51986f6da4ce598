#include "io/FileNames.h"

#include "io/Utf8.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <ctime>

namespace quillmark {

std::string timeName(WallTime time)
{
    using namespace std::chrono;
    const auto second = floor<seconds>(time);
    const std::time_t whole = system_clock::to_time_t(second);
    std::tm parts{};
    gmtime_r(&whole, &parts);
    std::array<char, 32> name{};
    std::strftime(name.data(), name.size(), "%Y-%m-%d %H.%M.%S", &parts);
    const auto thousandths = std::to_string(1000 + duration_cast<milliseconds>(time - second).count());
    return std::string(name.data()) + "." + thousandths.substr(1);
}

std::string_view nameEnding(std::string_view name, size_t size)
{
    assert(size > 3); // room for one character at least
    if (name.size() > size)
        name.remove_prefix(name.size() - size);
    while (!name.empty() && (name.front() & 0xC0) == 0x80 && name.size() >= size - 3)
        name.remove_prefix(1);
    return name;
}

std::string printable(const Path& path)
{
    std::string text = path.native();
    std::ranges::replace_if(text, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
    if (!isWellFormedUtf8(text))
        std::ranges::replace_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, '?');
    return text;
}

} // namespace quillmark
