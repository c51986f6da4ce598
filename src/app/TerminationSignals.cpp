#include "app/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};

/// Where the handler writes; a handler can reach only what is global.
volatile std::sig_atomic_t writeEnd = -1;

void noteSignal(int)
{
    const int savedError = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
    errno = savedError;
}

void installHandler(int signal)
{
    struct sigaction old = {};
    sigaction(signal, nullptr, &old);
    if (signal == SIGHUP && old.sa_handler == SIG_IGN)
        return; // started under nohup
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit of file sizes fails like any other
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // without descriptors the signals keep their default: the program ends at once
    m_readEnd = ends[0];
    writeEnd = ends[1];
    for (const int signal : endingSignals)
        installHandler(signal);
}

TerminationSignals::~TerminationSignals()
{
    if (m_readEnd < 0)
        return;
    // Whoever still wants to end the program may: everything is written by now.
    for (const int signal : endingSignals)
        std::signal(signal, SIG_DFL);
    ::close(m_readEnd);
    ::close(writeEnd);
    writeEnd = -1;
}

Task TerminationSignals::listen(Scheduler& scheduler, std::function<void()> terminate)
{
    if (m_readEnd < 0)
        return {};
    return scheduler.watchDescriptor(m_readEnd, [end = m_readEnd, terminate = std::move(terminate)] {
        char bytes[16];
        while (::read(end, bytes, sizeof bytes) > 0) {}
        terminate();
    });
}

} // namespace quillmark
