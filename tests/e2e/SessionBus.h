// A session bus of the tests' own, with whatever the program meets there: an accessibility bus, a file
// manager.
#pragma once

#include "EndToEnd.h"
#include "desktop/Owned.h"

#include <mutex>
#include <string>
#include <vector>

namespace quillmark::test {

class SessionBus {
public:
    /// A call or a signal as it came over a bus.
    struct Message {
        std::string sender;
        std::string object;
        std::string member;
        std::string body; ///< in GVariant's text form
    };

    SessionBus(
        const std::filesystem::path& runFolder, const XServer& screen); ///< the folder takes the socket
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    const std::string& address() const { return m_address; }
    void becomeFileManager(); ///< one that hears every question and answers none
    void becomeScreenReader(); ///< of texts that change; before the program starts

    /// The first message so far whose member and body contain these, once there is one.
    std::optional<Message> waitFor(const std::string& member, const std::string& part);
    /// Calls an object of the program over the accessibility bus; the answer in text form.
    std::string ask(const Message& object, const char* interface, const char* method, GVariant* arguments);

private:
    Owned<GDBusConnection> connect(const std::string& address);
    static GDBusMessage* heard(GDBusConnection* bus, GDBusMessage* message, int incoming, void* self);

    std::string m_address;
    pid_t m_daemon = 0;
    std::mutex m_mutex;
    std::vector<Message> m_messages;
    Owned<GDBusConnection> m_session;
    Owned<GDBusConnection> m_accessible;
};

} // namespace quillmark::test
