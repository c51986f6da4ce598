// How an operation that can fail says so: a value, or an Error with the system's code and words for the user.
#pragma once

#include <expected>
#include <string>

namespace quillmark {

struct Error {
    int code = 0; ///< errno value, 0 when the failure is not the system's
    std::string message; ///< one Russian sentence without a full stop, UTF-8

    bool operator==(const Error&) const = default;
};

template <class T> using Result = std::expected<T, Error>;
using Status = std::expected<void, Error>;

/// The Russian words for an errno value; unknown values give "Системная ошибка N".
std::string systemErrorText(int code);

inline std::unexpected<Error> systemFailure(int code)
{
    return std::unexpected(Error{.code = code, .message = systemErrorText(code)});
}

} // namespace quillmark
