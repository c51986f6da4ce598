#include "io/Escape.h"

#include <cstdint>

namespace quillmark {
namespace {

constexpr std::string_view base64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view hexDigits = "0123456789ABCDEF";

uint32_t byteAt(std::string_view bytes, size_t i)
{
    return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
}

std::optional<uint32_t> hexValue(char digit)
{
    const char upper = digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
    const size_t value = hexDigits.find(upper);
    return value != std::string_view::npos ? std::optional(static_cast<uint32_t>(value)) : std::nullopt;
}

} // namespace

std::string base64(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const uint32_t group = byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
        const size_t digits = bytes.size() - i >= 3 ? 4 : bytes.size() - i + 1;
        for (size_t digit = 0; digit < 4; ++digit)
            text += digit < digits ? base64Digits[group >> (18 - 6 * digit) & 0x3F] : '=';
    }
    return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    for (int padding = 0; padding < 2 && text.ends_with('='); ++padding)
        text.remove_suffix(1);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    uint32_t group = 0;
    int bits = 0;
    for (const char digit : text) {
        const size_t value = base64Digits.find(digit);
        if (value == std::string_view::npos)
            return std::nullopt;
        group = group << 6 | static_cast<uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return bytes;
}

std::string percentEncoded(std::string_view bytes)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && c != '%')
            text += c;
        else
            text += {'%', hexDigits[byte >> 4], hexDigits[byte & 0xF]};
    }
    return text;
}

std::string percentDecoded(std::string_view text)
{
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size();
        const auto high = isEscape ? hexValue(text[i + 1]) : std::nullopt;
        const auto low = isEscape ? hexValue(text[i + 2]) : std::nullopt;
        if (high && low) {
            bytes += static_cast<char>(*high << 4 | *low);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

} // namespace quillmark
