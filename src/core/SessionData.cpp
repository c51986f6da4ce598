#include "core/SessionData.h"

#include "io/Escape.h"
#include "io/Utf8.h"

#include <nlohmann/json.hpp>

namespace quillmark {
namespace {

using Json = nlohmann::json;

constexpr std::string_view encodedPathPrefix = "file://"; // no absolute path starts like this

/// JSON is Unicode and a path is bytes: one that is not UTF-8 is written as a URL with its bytes
/// percent-encoded.
std::string textOfPath(const Path& path)
{
    const std::string& bytes = path.native();
    return isWellFormedUtf8(bytes) ? bytes : std::string(encodedPathPrefix) + percentEncoded(bytes);
}

Path pathOfText(std::string_view text)
{
    if (!text.starts_with(encodedPathPrefix))
        return text;
    return percentDecoded(text.substr(encodedPathPrefix.size()));
}

/// The string under a key; absent when there is none. Throws when something else is there.
std::optional<std::string> optionalString(const Json& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return std::nullopt;
    return found->get<std::string>();
}

SessionTab tabFromJson(const Json& json)
{
    if (!json.is_object())
        throw std::invalid_argument("not a tab");
    SessionTab tab;
    if (const auto path = optionalString(json, "notePath"))
        tab.notePath = pathOfText(*path);
    if (const auto bookmark = optionalString(json, "bookmark"))
        tab.bookmark = bytesOfBase64(*bookmark);
    return tab;
}

} // namespace

std::string encodeSession(const SessionData& session)
{
    Json tabs = Json::array();
    for (const SessionTab& tab : session.tabs) {
        Json json = Json::object();
        if (tab.notePath)
            json["notePath"] = textOfPath(*tab.notePath);
        if (tab.bookmark)
            json["bookmark"] = base64(*tab.bookmark);
        tabs.push_back(std::move(json));
    }
    return Json{{"tabs", std::move(tabs)}, {"activeIndex", session.activeIndex}}.dump();
}

std::optional<SessionData> decodeSession(std::string_view bytes)
{
    try {
        const Json json = Json::parse(bytes);
        const Json& index = json.at("activeIndex");
        const Json& tabs = json.at("tabs");
        if (!index.is_number_integer() || !tabs.is_array())
            return std::nullopt;
        SessionData session{.tabs = {}, .activeIndex = index.get<int64_t>()};
        for (const Json& tab : tabs)
            session.tabs.push_back(tabFromJson(tab));
        return session;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace quillmark
