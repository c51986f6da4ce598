#include "SessionBus.h"

#include <stdexcept>

namespace quillmark::test {

using namespace std::chrono_literals;

namespace {

constexpr int callLimit = 30'000; ///< milliseconds

Owned<GVariant> call(GDBusConnection* bus, const char* name, const char* path, const char* interface,
    const char* method, GVariant* arguments)
{
    GError* error = nullptr;
    Owned<GVariant> answer(g_dbus_connection_call_sync(bus, name, path, interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, callLimit, nullptr, &error));
    if (!answer)
        throw std::runtime_error(std::string(method) + ": " + takeMessage(error));
    return answer;
}

std::string textOf(GVariant* value)
{
    return value ? Owned<char>(g_variant_print(value, FALSE)).get() : "";
}

} // namespace

SessionBus::SessionBus(const std::filesystem::path& runFolder, const XServer& screen)
    : m_address("unix:path=" + (runFolder / "session").string())
{
    m_daemon = spawn({.program = "dbus-daemon",
        .arguments = {"--session", "--nofork", "--nopidfile", "--address=" + m_address},
        .environment
        = {{"XDG_RUNTIME_DIR", runFolder}, {"GSETTINGS_BACKEND", "memory"}, {"DISPLAY", screen.display()}},
        .quiet = true});
    if (!eventually([&] { return std::filesystem::exists(runFolder / "session"); }, 20s))
        throw std::runtime_error("no session bus");
    m_session = connect(m_address);
}

SessionBus::~SessionBus()
{
    for (const auto* bus : {&m_accessible, &m_session})
        if (*bus)
            g_dbus_connection_close_sync(bus->get(), nullptr, nullptr); // nothing is heard from here on
    killAndWait(m_daemon); // the accessibility bus ends with it
}

Owned<GDBusConnection> SessionBus::connect(const std::string& address)
{
    GError* error = nullptr;
    Owned<GDBusConnection> bus(g_dbus_connection_new_for_address_sync(address.c_str(),
        static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error));
    if (!bus)
        throw std::runtime_error("bus: " + takeMessage(error));
    g_dbus_connection_add_filter(bus.get(), &SessionBus::heard, this, nullptr);
    return bus;
}

GDBusMessage* SessionBus::heard(GDBusConnection*, GDBusMessage* message, int incoming, void* self)
{
    const auto type = g_dbus_message_get_message_type(message);
    const bool isCall = type == G_DBUS_MESSAGE_TYPE_METHOD_CALL;
    if (!incoming || (!isCall && type != G_DBUS_MESSAGE_TYPE_SIGNAL))
        return message;
    auto& bus = *static_cast<SessionBus*>(self);
    const auto word = [](const char* text) { return std::string(text ? text : ""); };
    const std::lock_guard lock(bus.m_mutex);
    bus.m_messages.push_back(
        {word(g_dbus_message_get_sender(message)), word(g_dbus_message_get_path(message)),
            word(g_dbus_message_get_member(message)), textOf(g_dbus_message_get_body(message))});
    if (!isCall)
        return message;
    g_object_unref(message); // lets it drop without an answer
    return nullptr;
}

void SessionBus::becomeFileManager()
{
    call(m_session.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", "org.freedesktop.FileManager1", 0u));
}

void SessionBus::becomeScreenReader()
{
    const auto answer
        = call(m_session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr);
    const char* address = nullptr;
    g_variant_get(answer.get(), "(&s)", &address);
    m_accessible = connect(address);
    call(m_accessible.get(), "org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
        "RegisterEvent", g_variant_new("(sass)", "Object:TextChanged", nullptr, ""));
    g_dbus_connection_signal_subscribe(
        m_accessible.get(), nullptr, "org.a11y.atspi.Event.Object", nullptr, nullptr, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, void*) {},
        nullptr, nullptr);
}

std::optional<SessionBus::Message> SessionBus::waitFor(const std::string& member, const std::string& part)
{
    std::optional<Message> found;
    eventually(
        [&] {
            const std::lock_guard lock(m_mutex);
            for (const Message& each : m_messages)
                if (!found && each.member == member && each.body.find(part) != std::string::npos)
                    found = each;
            return found.has_value();
        },
        20s);
    return found;
}

std::string SessionBus::ask(
    const Message& object, const char* interface, const char* method, GVariant* arguments)
{
    return textOf(
        call(m_accessible.get(), object.sender.c_str(), object.object.c_str(), interface, method, arguments)
            .get());
}

} // namespace quillmark::test
