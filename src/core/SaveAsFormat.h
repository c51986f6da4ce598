// The formats that the save panel offers, which are extensions of the file's name and nothing else.
#pragma once

#include "editor/Language.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quillmark {

struct SaveAsFormat {
    std::string_view label; ///< Russian, UTF-8
    std::optional<std::string_view> ext; ///< without the dot; none for a name without extension

    static std::span<const SaveAsFormat> all(); ///< in the order of the menu
};

std::string_view defaultSaveExtension(Language language);

/// The first format with exactly this extension, or nothing.
std::optional<size_t> formatWithExtension(std::string_view ext);

/// The name with the format's extension in place of its own, if it has one: what follows the last dot.
std::string nameInFormat(std::string_view name, const SaveAsFormat& format);

} // namespace quillmark
