// SIGTERM, SIGINT and SIGHUP become an ordinary callback on the main thread, so that the program can save and
// end.
#pragma once

#include "base/Scheduler.h"

#include <functional>

namespace quillmark {

/// Catches the signals from its construction on; one that comes before listen() is kept for it. SIGPIPE is
/// ignored from then on; SIGHUP stays ignored when the parent wanted so. One a process. Main thread only.
class TerminationSignals {
public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// Calls `terminate` for signals as long as the Task is kept, which must go before this does.
    [[nodiscard]] Task listen(Scheduler& scheduler, std::function<void()> terminate);

private:
    int m_readEnd = -1;
};

} // namespace quillmark
