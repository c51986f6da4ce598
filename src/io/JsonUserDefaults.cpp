#include "io/JsonUserDefaults.h"

#include "io/Escape.h"
#include "io/FileNames.h"
#include "io/ReadFile.h"
#include "io/Utf8.h"

#include <cerrno>

namespace quillmark {
namespace {

using Json = nlohmann::json;

constexpr int64_t largestFile = 16 * 1024 * 1024; ///< bytes; no settings of ours are near that
constexpr int deepest = 64; ///< nesting that is believed: writing a value recurses
const char* const bytesKey = "base64";
const char* const percentKey = "percentEncoded";

/// The settings in a file, or nothing when it is damaged. Throws nothing.
std::optional<Json> parse(const std::string& text)
{
    bool isTooDeep = false;
    const auto watchDepth = [&](int depth, Json::parse_event_t, Json&) {
        isTooDeep |= depth > deepest;
        return !isTooDeep;
    };
    Json values = Json::parse(text, watchDepth, false);
    if (isTooDeep || !values.is_object())
        return std::nullopt;
    return values;
}

/// The text of an object with a single key, which is how we write what JSON has no type for.
const std::string* textUnder(const Json& value, const char* key)
{
    if (!value.is_object() || value.size() != 1)
        return nullptr;
    const auto found = value.find(key);
    return found != value.end() && found->is_string() ? found->get_ptr<const std::string*>() : nullptr;
}

} // namespace

struct JsonUserDefaults::Store {
    FileSystem& disk;
    DocumentWriter& writer;
    Scheduler& scheduler;
    Log& log;
    const Path file;
    bool mustSetAside = false; ///< what is there is not ours to overwrite; jobs only

    Status write(const std::string& text)
    {
        Status status = mustSetAside ? setAside() : Status();
        if (status)
            status = disk.makeFolders(file.parent_path());
        if (status) {
            if (const auto written = writer.write(text, file); !written)
                status = std::unexpected(written.error());
        }
        if (!status)
            log.line("Quillmark: settings not saved: " + status.error().message);
        return status;
    }

    Status setAside()
    {
        Path name = file;
        name += ".damaged-" + timeName(scheduler.wallNow());
        const Status status = disk.renameNoReplace(file, name);
        if (!status && status.error().code != ENOENT)
            return status;
        if (status)
            log.line("Quillmark: settings set aside as " + printable(name));
        mustSetAside = false;
        return {};
    }
};

JsonUserDefaults::JsonUserDefaults(
    FileSystem& disk, DocumentWriter& writer, Scheduler& scheduler, Log& log, Path file)
    : m_store(std::make_shared<Store>(disk, writer, scheduler, log, std::move(file)))
    , m_jobs(scheduler, Priority::utility)
{
    load();
}

JsonUserDefaults::~JsonUserDefaults()
{
    static_cast<void>(flush());
}

void JsonUserDefaults::load()
{
    const auto file = readFile(m_store->disk, m_store->file, largestFile);
    if (!file) {
        if (file.error().code == ENOENT)
            return;
        m_store->log.line("Quillmark: settings not read: " + file.error().message);
        m_store->mustSetAside = true; // before the first change is written; until then it may get well
        return;
    }
    if (auto values = parse(file->bytes)) {
        m_values = std::move(*values);
        return;
    }
    m_store->log.line("Quillmark: settings are damaged");
    m_store->mustSetAside = true;
    save();
}

const nlohmann::json* JsonUserDefaults::find(std::string_view key) const
{
    const auto entry = m_values.find(key);
    return entry != m_values.end() ? &*entry : nullptr;
}

std::optional<std::string> JsonUserDefaults::string(std::string_view key) const
{
    const Json* value = find(key);
    if (!value)
        return std::nullopt;
    if (const std::string* encoded = textUnder(*value, percentKey))
        return percentDecoded(*encoded);
    return value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

std::optional<bool> JsonUserDefaults::boolean(std::string_view key) const
{
    const Json* value = find(key);
    return value && value->is_boolean() ? std::optional(value->get<bool>()) : std::nullopt;
}

std::optional<double> JsonUserDefaults::real(std::string_view key) const
{
    const Json* value = find(key);
    return value && value->is_number() ? std::optional(value->get<double>()) : std::nullopt;
}

std::optional<std::string> JsonUserDefaults::data(std::string_view key) const
{
    const Json* value = find(key);
    const std::string* encoded = value ? textUnder(*value, bytesKey) : nullptr;
    return encoded ? bytesOfBase64(*encoded) : std::nullopt;
}

void JsonUserDefaults::setString(std::string_view key, std::string_view value)
{
    if (isWellFormedUtf8(value))
        set(key, std::string(value));
    else
        set(key, Json{{percentKey, percentEncoded(value)}});
}

void JsonUserDefaults::setBoolean(std::string_view key, bool value)
{
    set(key, value);
}

void JsonUserDefaults::setReal(std::string_view key, double value)
{
    set(key, value);
}

void JsonUserDefaults::setData(std::string_view key, std::string_view bytes)
{
    set(key, Json{{bytesKey, base64(bytes)}});
}

void JsonUserDefaults::remove(std::string_view key)
{
    if (m_values.erase(std::string(key)) > 0)
        save();
}

void JsonUserDefaults::set(std::string_view key, Json value)
{
    Json& stored = m_values[std::string(key)];
    if (stored == value && stored.type() == value.type())
        return;
    stored = std::move(value);
    save();
}

void JsonUserDefaults::save()
{
    // Replacing ill-formed text, which a key could be, where the default is to throw.
    m_jobs.put("settings",
        [store = m_store, text = m_values.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"] {
            return store->write(text);
        });
}

Status JsonUserDefaults::flush()
{
    return m_jobs.finish("settings");
}

} // namespace quillmark
