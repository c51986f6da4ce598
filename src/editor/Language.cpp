#include "editor/Language.h"

#include "text/Unicode.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace quillmark {
namespace {

using Sample = std::u16string_view;

struct Entry {
    Language language;
    std::string_view name;
    std::string_view extensions; ///< each between spaces
};

constexpr std::array table = {
    Entry{Language::plain, "Текст", ""},
    Entry{Language::swift, "Swift", " swift "},
    Entry{Language::python, "Python", " py "},
    Entry{Language::javascript, "JavaScript", " js jsx ts tsx mjs "},
    Entry{Language::json, "JSON", " json "},
    Entry{Language::html, "HTML/XML", " html htm xml svg plist "},
    Entry{Language::css, "CSS", " css scss less "},
    Entry{Language::shell, "Shell", " sh bash zsh command "},
    Entry{Language::c, "C/C++", " c h cpp hpp cc cxx m mm "},
    Entry{Language::rust, "Rust", " rs "},
};

constexpr auto languages = [] {
    std::array<Language, table.size()> all{};
    std::ranges::transform(table, all.begin(), &Entry::language);
    return all;
}();

bool contains(Sample text, Sample part)
{
    return text.find(part) != Sample::npos;
}

bool containsAny(Sample text, std::initializer_list<Sample> parts)
{
    return std::ranges::any_of(parts, [text](Sample part) { return contains(text, part); });
}

bool startsWithAny(Sample text, std::initializer_list<Sample> parts)
{
    return std::ranges::any_of(parts, [text](Sample part) { return text.starts_with(part); });
}

Sample withoutLeadingSpace(Sample text)
{
    const auto first = std::ranges::find_if_not(text, [](char16_t c) { return isWhiteSpace(c); });
    return text.substr(static_cast<size_t>(first - text.begin()));
}

/// A property, a colon, a value and a semicolon: [a-z-]+\s*:\s*[^;{}]+;
bool hasDeclaration(Sample text)
{
    for (size_t colon = text.find(u':'); colon != Sample::npos; colon = text.find(u':', colon + 1)) {
        size_t name = colon;
        while (name > 0 && isWhiteSpace(text[name - 1]))
            --name;
        const char16_t last = name > 0 ? text[name - 1] : u'\0';
        const size_t end = text.find_first_of(u";{}", colon + 1);
        const bool hasValue = end != Sample::npos && end > colon + 1 && text[end] == u';';
        if (((last >= u'a' && last <= u'z') || last == u'-') && hasValue)
            return true;
    }
    return false;
}

/// Of a text that starts with "#!".
Language interpreter(Sample head)
{
    const Sample line = head.substr(0, head.find(u'\n'));
    if (contains(line, u"python"))
        return Language::python;
    return contains(line, u"node") ? Language::javascript : Language::shell;
}

} // namespace

std::span<const Language> allLanguages()
{
    return languages;
}

std::string_view displayName(Language language)
{
    return std::ranges::find(table, language, &Entry::language)->name;
}

std::optional<Language> languageNamed(std::string_view displayName)
{
    const auto entry = std::ranges::find(table, displayName, &Entry::name);
    return entry != table.end() ? std::optional(entry->language) : std::nullopt;
}

Language languageForURL(const std::optional<std::filesystem::path>& url)
{
    std::string extension = url ? url->extension().native() : std::string();
    if (extension.size() < 2 || extension.find(' ') != std::string::npos)
        return Language::plain;
    extension = utf8(lowercase(utf16(extension.substr(1))));
    const std::string word = " " + extension + " ";
    const auto entry = std::ranges::find_if(
        table, [&](const Entry& each) { return each.extensions.find(word) != std::string_view::npos; });
    return entry != table.end() ? entry->language : Language::plain;
}

Language guessLanguage(std::u16string_view sample)
{
    const std::u16string lowered = lowercase(sample);
    const Sample text = lowered;
    const Sample head = withoutLeadingSpace(text);
    if (startsWithAny(head, {u"<!doctype html", u"<?xml", u"<svg"}) || contains(text, u"<html"))
        return Language::html;
    if (head.starts_with(u"#!"))
        return interpreter(head);
    if (startsWithAny(head, {u"{", u"["}) && containsAny(text, {u"\":", u"\" :"}))
        return Language::json;
    if (containsAny(text, {u"#include", u"#import <"}))
        return Language::c;
    if (contains(text, u"fn ") && containsAny(text, {u"let mut", u"impl ", u"println!"}))
        return Language::rust;
    if (contains(text, u"func ") && containsAny(text, {u"let ", u"var ", u"guard "}))
        return Language::swift;
    if (contains(text, u"def ") && contains(text, u":"))
        return Language::python;
    if (containsAny(text, {u"function ", u"=> ", u"console."}))
        return Language::javascript;
    if (contains(text, u"const ") && contains(text, u"="))
        return Language::javascript;
    if (contains(text, u"{") && contains(text, u";") && hasDeclaration(text))
        return Language::css;
    return Language::plain;
}

} // namespace quillmark
