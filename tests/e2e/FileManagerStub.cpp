#include "FileManagerStub.h"

#include <stdexcept>
#include <utility>

namespace quillmark::test {

using namespace std::chrono_literals;

namespace {

constexpr const char* description = R"(<node><interface name="org.freedesktop.FileManager1">
    <method name="ShowItems"><arg type="as" direction="in"/><arg type="s" direction="in"/></method>
</interface></node>)";

} // namespace

FileManagerStub::FileManagerStub(const std::filesystem::path& runFolder, Behaviour behaviour)
    : m_behaviour(behaviour)
    , m_address("unix:path=" + (runFolder / "files-bus").string())
{
    m_daemon = spawn({.program = "dbus-daemon",
        .arguments = {"--session", "--nofork", "--nopidfile", "--address=" + m_address},
        .environment = {{"XDG_DATA_DIRS", runFolder}, {"XDG_DATA_HOME", runFolder}}, // nothing to activate
        .quiet = true});
    if (!eventually([&] { return std::filesystem::exists(runFolder / "files-bus"); }, 20s))
        throw std::runtime_error("no session bus");
    if (behaviour == Behaviour::isMissing)
        return;
    g_main_context_push_thread_default(
        m_context); // what is exported here is called on the thread that serves
    m_bus = g_dbus_connection_new_for_address_sync(m_address.c_str(),
        static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    if (!m_bus)
        throw std::runtime_error("no connection to the bus");
    static constexpr GDBusInterfaceVTable functions{&FileManagerStub::called, nullptr, nullptr, {}};
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
    g_dbus_connection_register_object(
        m_bus, "/org/freedesktop/FileManager1", node->interfaces[0], &functions, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    g_variant_unref(g_dbus_connection_call_sync(m_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus", "RequestName", g_variant_new("(su)", "org.freedesktop.FileManager1", 0u),
        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    g_main_context_pop_thread_default(m_context);
    m_thread = std::thread([this] { g_main_loop_run(m_loop); });
}

FileManagerStub::~FileManagerStub()
{
    g_main_loop_quit(m_loop);
    if (m_thread.joinable())
        m_thread.join();
    g_clear_object(&m_bus);
    killBus();
    g_main_loop_unref(m_loop);
    g_main_context_unref(m_context);
}

void FileManagerStub::called(GDBusConnection*, const char*, const char*, const char*, const char*,
    GVariant* arguments, GDBusMethodInvocation* call, void* self)
{
    auto& stub = *static_cast<FileManagerStub*>(self);
    const char* uri = nullptr;
    GVariantIter* uris = nullptr;
    g_variant_get(arguments, "(ass)", &uris, nullptr);
    {
        const std::lock_guard lock(stub.m_mutex);
        while (g_variant_iter_next(uris, "&s", &uri))
            stub.m_shown.emplace_back(uri);
    }
    g_variant_iter_free(uris);
    if (stub.m_behaviour == Behaviour::answers)
        g_dbus_method_invocation_return_value(call, nullptr);
    else
        g_object_unref(call); // lets it drop without a word
}

std::vector<std::string> FileManagerStub::shown() const
{
    const std::lock_guard lock(m_mutex);
    return m_shown;
}

void FileManagerStub::killBus()
{
    if (m_daemon)
        killAndWait(std::exchange(m_daemon, 0));
}

} // namespace quillmark::test
