#pragma once

#include "platform/Log.h"

namespace quillmark {

/// Standard error and syslog. Any thread.
class SystemLog : public Log {
public:
    void line(std::string_view text) override;
};

} // namespace quillmark
