// The record of the open tabs that survives a restart, and its JSON form. Pure; never fails on damaged bytes.
#pragma once

#include "platform/FileSystem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

/// One tab. With neither field it cannot be restored and only keeps its place.
struct SessionTab {
    std::optional<Path> notePath; ///< absolute
    std::optional<std::string> bookmark; ///< of a file, opaque bytes

    bool operator==(const SessionTab&) const = default;
};

struct SessionData {
    std::vector<SessionTab> tabs;
    int64_t activeIndex = 0; ///< as stored: may lie outside of `tabs`

    bool operator==(const SessionData&) const = default;
};

std::string encodeSession(const SessionData& session);
std::optional<SessionData> decodeSession(std::string_view bytes); ///< nothing when they are no session

} // namespace quillmark
