#include "core/SaveAsFormat.h"

#include <algorithm>
#include <array>

namespace quillmark {
namespace {

constexpr std::array formats = {
    SaveAsFormat{"Текст (.txt)", "txt"},
    SaveAsFormat{"Markdown (.md)", "md"},
    SaveAsFormat{"JSON (.json)", "json"},
    SaveAsFormat{"ENV (.env)", "env"},
    SaveAsFormat{"HTML (.html)", "html"},
    SaveAsFormat{"XML (.xml)", "xml"},
    SaveAsFormat{"YAML (.yaml)", "yaml"},
    SaveAsFormat{"CSV (.csv)", "csv"},
    SaveAsFormat{"JavaScript (.js)", "js"},
    SaveAsFormat{"Python (.py)", "py"},
    SaveAsFormat{"Swift (.swift)", "swift"},
    SaveAsFormat{"Shell (.sh)", "sh"},
    SaveAsFormat{"CSS (.css)", "css"},
    SaveAsFormat{"Лог (.log)", "log"},
    SaveAsFormat{"Конфиг (.conf)", "conf"},
    SaveAsFormat{"Без расширения", std::nullopt},
};

/// Without the extension. A dot at the start of a hidden file's name does not begin one, nor one in the name
/// of a folder: panels take paths for names.
std::string_view stemOf(std::string_view name)
{
    const size_t dot = name.rfind('.');
    const size_t start = name.rfind('/') + 1; // 0 without a folder
    const bool hasExtension = dot != name.npos && dot > start && dot + 1 < name.size();
    return hasExtension ? name.substr(0, dot) : name;
}

} // namespace

std::span<const SaveAsFormat> SaveAsFormat::all()
{
    return formats;
}

std::string_view defaultSaveExtension(Language language)
{
    switch (language) {
    case Language::plain:
        return "txt";
    case Language::swift:
        return "swift";
    case Language::python:
        return "py";
    case Language::javascript:
        return "js";
    case Language::json:
        return "json";
    case Language::html:
        return "html";
    case Language::css:
        return "css";
    case Language::shell:
        return "sh";
    case Language::c:
        return "c";
    case Language::rust:
        return "rs";
    }
    return "txt";
}

std::optional<size_t> formatWithExtension(std::string_view ext)
{
    const auto format = std::ranges::find(formats, std::optional(ext), &SaveAsFormat::ext);
    return format != formats.end() ? std::optional(static_cast<size_t>(format - formats.begin()))
                                   : std::nullopt;
}

std::string nameInFormat(std::string_view name, const SaveAsFormat& format)
{
    std::string result(stemOf(name));
    return format.ext ? result.append(".").append(*format.ext) : result;
}

} // namespace quillmark
