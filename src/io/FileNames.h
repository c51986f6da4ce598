// Names for files that the program keeps for itself, and names of files in log lines.
#pragma once

#include "platform/FileSystem.h"

#include <string>
#include <string_view>

namespace quillmark {

inline constexpr size_t longestName = 255; ///< bytes, of all file systems that we meet

/// "2026-11-22 21.05.09.123": sorts by time. UTC, so that no hour comes twice.
std::string timeName(WallTime time);

/// At most `size` bytes from the end, where the extension is, without splitting a character.
std::string_view nameEnding(std::string_view name, size_t size);

/// What stands for a path in a log line, in which bytes that are not UTF-8 would make a mess.
std::string printable(const Path& path);

} // namespace quillmark
