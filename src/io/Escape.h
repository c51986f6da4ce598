// Bytes as text that survives JSON.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

std::string base64(std::string_view bytes); ///< RFC 4648, padded
std::optional<std::string> bytesOfBase64(std::string_view text); ///< nothing when it is not base64

/// Percent-encodes '%' and all bytes that are not ASCII (RFC 3986, section 2.1).
std::string percentEncoded(std::string_view bytes);
std::string percentDecoded(std::string_view text); ///< a '%' without two digits stands for itself

} // namespace quillmark
