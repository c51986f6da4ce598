#pragma once

#include "platform/UserDefaults.h"

#include <map>
#include <variant>
#include <vector>

namespace quillmark::test {

/// User defaults that live as long as the test, and remember which keys were written in which order.
class MemoryDefaults final : public UserDefaults {
public:
    std::optional<std::string> string(std::string_view key) const override { return get<std::string>(key); }
    std::optional<bool> boolean(std::string_view key) const override { return get<bool>(key); }
    std::optional<double> real(std::string_view key) const override { return get<double>(key); }
    std::optional<std::string> data(std::string_view key) const override
    {
        const auto value = get<Data>(key);
        return value ? std::optional(value->bytes) : std::nullopt;
    }

    void setString(std::string_view key, std::string_view value) override { put(key, std::string(value)); }
    void setBoolean(std::string_view key, bool value) override { put(key, value); }
    void setReal(std::string_view key, double value) override { put(key, value); }
    void setData(std::string_view key, std::string_view bytes) override
    {
        put(key, Data{std::string(bytes)});
    }
    void remove(std::string_view key) override { m_values.erase(std::string(key)); }

    bool has(std::string_view key) const { return m_values.contains(std::string(key)); }
    const std::vector<std::string>& writtenKeys() const { return m_writtenKeys; }

private:
    struct Data {
        std::string bytes;
    };
    using Value = std::variant<std::string, bool, double, Data>;

    template <class T> std::optional<T> get(std::string_view key) const
    {
        const auto entry = m_values.find(std::string(key));
        if (entry == m_values.end() || !std::holds_alternative<T>(entry->second))
            return std::nullopt;
        return std::get<T>(entry->second);
    }

    void put(std::string_view key, Value value)
    {
        m_writtenKeys.emplace_back(key);
        m_values.insert_or_assign(std::string(key), std::move(value));
    }

    std::map<std::string, Value> m_values;
    std::vector<std::string> m_writtenKeys;
};

} // namespace quillmark::test
