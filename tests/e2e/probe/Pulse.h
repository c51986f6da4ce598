// How long a window takes to answer: asked a hundred times a second by the protocol that window managers use
// to find out whether a program still lives. The answer comes from the program's event loop.
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <thread>

namespace quillmark::test {

class Pulse {
public:
    struct Findings {
        int64_t answers = 0;
        int64_t slow = 0; ///< took more than 100 ms
        Duration longest{};
        Duration longestWithoutCore{}; ///< of the longest: the main thread was ready, the machine was not
        bool isSilent = false; ///< the last question was never answered
    };

    Pulse(const std::string& display, uint32_t window, pid_t program);
    Findings stop(); ///< once

private:
    void run(const std::stop_token& stopped, const std::string& display, uint32_t window, pid_t program);

    Findings m_findings; ///< the thread's, until it has ended
    std::jthread m_thread;
};

} // namespace quillmark::test
