#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// The user's settings: a few values under fixed string keys, read at start, kept in memory and written at
/// each change. A value of another type than the one asked for reads as absent. Main thread only.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    virtual std::optional<std::string> string(std::string_view key) const = 0;
    virtual std::optional<bool> boolean(std::string_view key) const = 0;
    virtual std::optional<double> real(std::string_view key) const = 0;
    virtual std::optional<std::string> data(std::string_view key) const = 0; ///< bytes

    virtual void setString(std::string_view key, std::string_view value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void setReal(std::string_view key, double value) = 0;
    virtual void setData(std::string_view key, std::string_view bytes) = 0;
    virtual void remove(std::string_view key) = 0;
};

} // namespace quillmark
