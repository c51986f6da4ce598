// The language of a document, for highlighting and for its file's extension, and the two guesses that find
// it. Pure functions; any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace quillmark {

enum class Language { plain, swift, python, javascript, json, html, css, shell, c, rust };

std::span<const Language> allLanguages(); ///< in the order in which menus list them
std::string_view displayName(Language language); ///< UTF-8
std::optional<Language> languageNamed(std::string_view displayName); ///< exactly that name

/// By the extension of a file name, whatever its case; `plain` for an unknown one and for no file.
Language languageForURL(const std::optional<std::filesystem::path>& url);

/// By the beginning of a text; `plain` when nothing is recognised. Takes time in proportion to the sample.
Language guessLanguage(std::u16string_view sample);

} // namespace quillmark
