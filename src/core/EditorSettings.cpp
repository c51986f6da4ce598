#include "core/EditorSettings.h"

#include <string_view>

namespace quillmark {
namespace {

constexpr double smallestFont = 9;
constexpr double largestFont = 24;

/// A setting: where it is, its key, its default (what it holds before), and which stored values are damaged.
template <class T> struct Setting {
    Variable<T> EditorSettings::* field;
    std::string_view key;
    bool (*isValid)(const T&) = [](const T&) { return true; };
};

bool isFontSize(const double& size)
{
    return size >= smallestFont && size <= largestFont;
}

constexpr Setting<std::string> strings[] = {
    {&EditorSettings::fontName, "editor.fontName"},
    {&EditorSettings::quickNoteHotKeyID, "quickNote.hotKey"},
};
constexpr Setting<double> reals[] = {
    {&EditorSettings::fontSize, "editor.fontSize", &isFontSize},
};
constexpr Setting<bool> flags[] = {
    {&EditorSettings::cleanupQuotes, "cleanup.quotes"},
    {&EditorSettings::cleanupDashes, "cleanup.dashes"},
    {&EditorSettings::cleanupTrimTrailing, "cleanup.trimTrailing"},
    {&EditorSettings::cleanupCollapseBlank, "cleanup.collapseBlank"},
};

auto stored(const UserDefaults& defaults, const Setting<std::string>& setting)
{
    return defaults.string(setting.key);
}
auto stored(const UserDefaults& defaults, const Setting<double>& setting)
{
    return defaults.real(setting.key);
}
auto stored(const UserDefaults& defaults, const Setting<bool>& setting)
{
    return defaults.boolean(setting.key);
}

void store(UserDefaults& defaults, std::string_view key, const std::string& value)
{
    defaults.setString(key, value);
}
void store(UserDefaults& defaults, std::string_view key, double value)
{
    defaults.setReal(key, value);
}
void store(UserDefaults& defaults, std::string_view key, bool value)
{
    defaults.setBoolean(key, value);
}

} // namespace

EditorSettings::EditorSettings(UserDefaults& defaults)
{
    const auto bind = [&](const auto& settings) {
        for (const auto& setting : settings) {
            auto& field = this->*setting.field;
            if (const auto value = stored(defaults, setting); value && setting.isValid(*value))
                field.set(*value);
            m_connections.push_back(field.onChange(
                [&defaults, key = setting.key](const auto& value) { store(defaults, key, value); }));
        }
    };
    bind(strings);
    bind(reals);
    bind(flags);
}

} // namespace quillmark
