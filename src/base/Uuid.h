// Random identifiers of tabs, notes and temporary files.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>

namespace quillmark {

/// A version 4 UUID (RFC 9562). The default value is the nil UUID, which random() never returns.
struct Uuid {
    std::array<uint8_t, 16> bytes{};

    static Uuid random(); ///< from the kernel's random source; any thread
    std::string toString() const; ///< upper-case hexadecimal digits in groups of 8-4-4-4-12
    auto operator<=>(const Uuid&) const = default;
};

} // namespace quillmark

template <> struct std::hash<quillmark::Uuid> {
    size_t operator()(const quillmark::Uuid& id) const noexcept
    {
        size_t value;
        std::memcpy(&value, id.bytes.data(), sizeof value);
        return value;
    }
};
