#include "probe/Pulse.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <poll.h>
#include <string_view>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto interval = 10ms;
constexpr auto slow = 100ms;
constexpr auto patience = 10s;
constexpr size_t serialPlace = 3; ///< a field that the answer repeats

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name)
{
    const auto request = xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
        xcb_intern_atom_reply(connection, request, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// How long the main thread has been ready to run without a core, since the program started.
Duration timeWithoutCore(pid_t program)
{
    const std::string process = std::to_string(program);
    std::ifstream in("/proc/" + process + "/task/" + process + "/schedstat");
    int64_t running = 0;
    int64_t waiting = 0;
    in >> running >> waiting;
    return std::chrono::nanoseconds(waiting);
}

class Line {
public:
    Line(const std::string& display, xcb_window_t window)
        : m_connection(xcb_connect(display.c_str(), nullptr))
        , m_window(window)
    {
        if (!isOpen())
            return;
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const uint32_t mask
            = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // Qt sends its answers to whoever has this on the root
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        m_protocols = atom(m_connection, "WM_PROTOCOLS");
        m_ping = atom(m_connection, "_NET_WM_PING");
    }
    ~Line() { xcb_disconnect(m_connection); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    bool isOpen() const { return xcb_connection_has_error(m_connection) == 0; }

    void ask(uint32_t serial)
    {
        xcb_client_message_event_t question{};
        question.response_type = XCB_CLIENT_MESSAGE;
        question.format = 32;
        question.window = m_window;
        question.type = m_protocols;
        question.data.data32[0] = m_ping;
        question.data.data32[1] = XCB_CURRENT_TIME;
        question.data.data32[2] = m_window;
        question.data.data32[serialPlace] = serial;
        xcb_send_event(
            m_connection, 0, m_window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&question));
        xcb_flush(m_connection);
    }

    /// False when nothing came in time.
    bool waitForAnswer(uint32_t serial)
    {
        const auto deadline = Clock::now() + patience;
        while (isOpen() && Clock::now() < deadline) {
            while (const std::unique_ptr<xcb_generic_event_t, Free> event{xcb_poll_for_event(m_connection)}) {
                const auto* const message = reinterpret_cast<xcb_client_message_event_t*>(event.get());
                if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE && message->type == m_protocols
                    && message->data.data32[0] == m_ping && message->data.data32[serialPlace] == serial)
                    return true;
            }
            pollfd readable{.fd = xcb_get_file_descriptor(m_connection), .events = POLLIN, .revents = 0};
            poll(&readable, 1, 100);
        }
        return false;
    }

private:
    xcb_connection_t* m_connection;
    xcb_window_t m_window;
    xcb_window_t m_root = 0;
    xcb_atom_t m_protocols = 0;
    xcb_atom_t m_ping = 0;
};

} // namespace

Pulse::Pulse(const std::string& display, uint32_t window, pid_t program)
    : m_thread([this, display, window, program](
                   const std::stop_token& stopped) { run(stopped, display, window, program); })
{
}

Pulse::Findings Pulse::stop()
{
    m_thread.request_stop();
    m_thread.join();
    return m_findings;
}

void Pulse::run(const std::stop_token& stopped, const std::string& display, uint32_t window, pid_t program)
{
    Line line(display, window);
    for (uint32_t serial = 1; !stopped.stop_requested(); ++serial) {
        const auto asked = Clock::now();
        const Duration withoutCore = timeWithoutCore(program);
        line.ask(serial);
        if (!line.waitForAnswer(serial)) {
            m_findings.isSilent = true;
            return;
        }
        const auto took = Clock::now() - asked;
        ++m_findings.answers;
        m_findings.slow += took > slow;
        if (took > m_findings.longest) {
            m_findings.longest = took;
            m_findings.longestWithoutCore = timeWithoutCore(program) - withoutCore;
        }
        std::this_thread::sleep_for(interval);
    }
}

} // namespace quillmark::test
