// Lines for whoever has to find out what went wrong. Never shown to the user.
#pragma once

#include <string_view>

namespace quillmark {

class Log {
public:
    virtual ~Log() = default;
    virtual void line(std::string_view text) = 0; ///< one line, UTF-8, without a line feed; any thread
};

} // namespace quillmark
