#include "io/JsonUserDefaults.h"

#include "io/Escape.h"
#include "io/FileNames.h"
#include "io/ReadFile.h"
#include "io/Utf8.h"

#include <cassert>
#include <cerrno>
#include <map>
#include <mutex>

#include <nlohmann/json.hpp>

namespace quillmark {
namespace {

using Json = nlohmann::json;
using Changes = std::map<std::string, std::optional<Json>>; ///< nothing: the key is removed

constexpr int64_t largestFile = 16 * 1024 * 1024; ///< bytes; no settings of ours are near that
constexpr int deepest = 64; ///< nesting that is believed: writing a value recurses
const char* const bytesKey = "base64";
const char* const percentKey = "percentEncoded";
constexpr int mostAttempts = 5; ///< at a file that other programs write all the time

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

bool isSame(const std::optional<Json>& a, const std::optional<Json>& b)
{
    return a.has_value() == b.has_value() && (!a || *a == *b);
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

struct JsonUserDefaults::Value {
    Json json;
};

struct JsonUserDefaults::Store {
    FileSystem& disk;
    DocumentWriter& writer;
    Scheduler& scheduler;
    Log& log;
    const Path file;
    bool mustSetAside = false; ///< what is there is not ours to overwrite; jobs only
    Json values = Json::object(); ///< main thread
    std::mutex mutex = {};
    Changes unwritten = {}; ///< guarded by the mutex

    /// `own` are all values as this program has them.
    Status write(const Json& own)
    {
        Status status = mustSetAside ? setAside() : Status();
        if (status)
            status = disk.makeFolders(file.parent_path());
        bool isDone = false;
        for (int attempt = 0; status && !isDone; ++attempt) {
            status = merge(own);
            isDone = status.has_value();
            const bool hasChanged
                = !status && (status.error().code == EBUSY || status.error().code == EEXIST);
            if (hasChanged && attempt + 1 < mostAttempts)
                status = {};
        }
        if (!status)
            log.line("Quillmark: settings not saved: " + status.error().message);
        return status;
    }

    /// Puts what was changed here into the file as it is by now: another program that uses the same settings
    /// keeps what it has written. EBUSY or EEXIST when it does so at this very moment.
    Status merge(const Json& own)
    {
        const Changes changes = copyOfUnwritten();
        auto present = readFile(disk, file, largestFile);
        if (!present && present.error().code != ENOENT)
            return std::unexpected(present.error());
        std::optional<Json> merged = present ? parse(present->bytes) : std::optional<Json>(own);
        if (!merged) {
            log.line("Quillmark: settings are damaged");
            if (auto status = setAside(); !status)
                return status;
            present = systemFailure(ENOENT);
            merged = own;
        }
        for (const auto& [key, value] : changes) {
            if (value)
                (*merged)[key] = *value;
            else
                merged->erase(key);
        }
        const auto isUnchanged = [&](const WrittenFile&) -> Status {
            const auto now = disk.stat(file);
            const bool isSame = present ? now && FileStamp(present->info, {}).matches(*now) : !now;
            return isSame ? Status() : systemFailure(EBUSY);
        };
        // Replacing ill-formed text, which a key could be, where the default is to throw.
        const std::string text = merged->dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
        if (const auto written = writer.write(text, file, isUnchanged); !written)
            return std::unexpected(written.error());
        dropUnwritten(changes);
        return {};
    }

    const Json* find(std::string_view key) const
    {
        const auto entry = values.find(key);
        return entry != values.end() ? &*entry : nullptr;
    }

    void change(const std::string& key, std::optional<Json> value)
    {
        const std::lock_guard lock(mutex);
        unwritten.insert_or_assign(key, std::move(value));
    }

    Changes copyOfUnwritten()
    {
        const std::lock_guard lock(mutex);
        return unwritten;
    }

    void dropUnwritten(const Changes& written) ///< but what has changed again meanwhile
    {
        const std::lock_guard lock(mutex);
        std::erase_if(unwritten, [&](const auto& change) {
            const auto found = written.find(change.first);
            return found != written.end() && isSame(found->second, change.second);
        });
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
    assert(m_store->file.is_absolute());
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
        m_store->values = std::move(*values);
        return;
    }
    m_store->log.line("Quillmark: settings are damaged");
    m_store->mustSetAside = true;
    save();
}

std::optional<std::string> JsonUserDefaults::string(std::string_view key) const
{
    const Json* value = m_store->find(key);
    if (!value)
        return std::nullopt;
    if (const std::string* encoded = textUnder(*value, percentKey))
        return percentDecoded(*encoded);
    return value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

std::optional<bool> JsonUserDefaults::boolean(std::string_view key) const
{
    const Json* value = m_store->find(key);
    return value && value->is_boolean() ? std::optional(value->get<bool>()) : std::nullopt;
}

std::optional<double> JsonUserDefaults::real(std::string_view key) const
{
    const Json* value = m_store->find(key);
    return value && value->is_number() ? std::optional(value->get<double>()) : std::nullopt;
}

std::optional<std::string> JsonUserDefaults::data(std::string_view key) const
{
    const Json* value = m_store->find(key);
    const std::string* encoded = value ? textUnder(*value, bytesKey) : nullptr;
    return encoded ? bytesOfBase64(*encoded) : std::nullopt;
}

void JsonUserDefaults::setString(std::string_view key, std::string_view value)
{
    if (isWellFormedUtf8(value))
        set(key, Value{std::string(value)});
    else
        set(key, Value{Json{{percentKey, percentEncoded(value)}}});
}

void JsonUserDefaults::setBoolean(std::string_view key, bool value)
{
    set(key, Value{value});
}

void JsonUserDefaults::setReal(std::string_view key, double value)
{
    set(key, Value{value});
}

void JsonUserDefaults::setData(std::string_view key, std::string_view bytes)
{
    set(key, Value{Json{{bytesKey, base64(bytes)}}});
}

void JsonUserDefaults::remove(std::string_view key)
{
    if (m_store->values.erase(std::string(key)) == 0)
        return;
    m_store->change(std::string(key), std::nullopt);
    save();
}

void JsonUserDefaults::set(std::string_view key, const Value& value)
{
    Json& stored = m_store->values[std::string(key)];
    if (stored == value.json && stored.type() == value.json.type())
        return;
    stored = value.json;
    m_store->change(std::string(key), value.json);
    save();
}

void JsonUserDefaults::save()
{
    m_jobs.put("settings", [store = m_store, own = m_store->values] { return store->write(own); });
}

Status JsonUserDefaults::flush()
{
    return m_jobs.finish("settings");
}

} // namespace quillmark
