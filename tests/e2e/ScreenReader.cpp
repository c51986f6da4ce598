#include "ScreenReader.h"

#include <stdexcept>

namespace quillmark::test {

using namespace std::chrono_literals;

namespace {

constexpr int callLimit = 30'000; ///< milliseconds
constexpr Duration eventLimit = 20s;
constexpr size_t largestTree = 400;
constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
constexpr const char* textInterface = "org.a11y.atspi.Text";
constexpr const char* editableTextInterface = "org.a11y.atspi.EditableText";

const Accessible registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};

Owned<GDBusConnection> connectTo(const std::string& address)
{
    GError* error = nullptr;
    auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    Owned<GDBusConnection> bus(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, &error));
    if (!bus)
        throw std::runtime_error("bus: " + takeMessage(error));
    return bus;
}

Owned<GVariant> callOn(GDBusConnection* bus, const Accessible& object, const char* interface,
    const char* method, GVariant* arguments)
{
    GError* error = nullptr;
    Owned<GVariant> answer(g_dbus_connection_call_sync(bus, object.program.c_str(), object.path.c_str(),
        interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, callLimit, nullptr, &error));
    if (!answer)
        throw std::runtime_error(std::string(method) + ": " + takeMessage(error));
    return answer;
}

template <class... Parts> void read(const Owned<GVariant>& tuple, const char* format, Parts*... parts)
{
    g_variant_get(tuple.get(), format, parts...);
}

} // namespace

ScreenReader::ScreenReader(const std::filesystem::path& runFolder, const XServer& screen)
{
    const std::string socket = "unix:path=" + (runFolder / "session").string();
    m_sessionAddress = socket;
    m_daemon = spawn({.program = "dbus-daemon",
        .arguments = {"--session", "--nofork", "--nopidfile", "--address=" + socket},
        .environment
        = {{"XDG_RUNTIME_DIR", runFolder}, {"GSETTINGS_BACKEND", "memory"}, {"DISPLAY", screen.display()}},
        .quiet = true});
    if (!eventually([&] { return std::filesystem::exists(runFolder / "session"); }, eventLimit))
        throw std::runtime_error("no session bus");
    const auto session = connectTo(socket);
    const char* address = nullptr;
    const auto answer
        = callOn(session.get(), {"org.a11y.Bus", "/org/a11y/bus"}, "org.a11y.Bus", "GetAddress", nullptr);
    read(answer, "(&s)", &address);
    m_bus = connectTo(address);
}

ScreenReader::~ScreenReader()
{
    m_bus.reset();
    killAndWait(m_daemon); // the accessibility bus ends with it
}

void ScreenReader::listen()
{
    for (const char* event :
        {"Object:TextChanged", "Object:TextCaretMoved", "Object:TextSelectionChanged", "Object:StateChanged"})
        callOn(m_bus.get(), {registry.program, "/org/a11y/atspi/registry"}, "org.a11y.atspi.Registry",
            "RegisterEvent", g_variant_new("(sass)", event, nullptr, ""));
    g_dbus_connection_signal_subscribe(m_bus.get(), nullptr, "org.a11y.atspi.Event.Object", nullptr, nullptr,
        nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &ScreenReader::received, new std::shared_ptr(m_events),
        [](void* events) { delete static_cast<std::shared_ptr<Events>*>(events); });
}

void ScreenReader::received(GDBusConnection*, const char* sender, const char* path, const char*,
    const char* signal, GVariant* arguments, void* events)
{
    const char* detail = nullptr;
    AccessibleEvent event;
    event.source = {sender, path};
    if (g_variant_n_children(arguments) < 4)
        return;
    g_variant_get_child(arguments, 0, "&s", &detail);
    g_variant_get_child(arguments, 1, "i", &event.first);
    g_variant_get_child(arguments, 2, "i", &event.second);
    const Owned<GVariant> boxed(g_variant_get_child_value(arguments, 3));
    if (const Owned<GVariant> value(g_variant_get_variant(boxed.get()));
        g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING))
        event.text = g_variant_get_string(value.get(), nullptr);
    event.name = *detail ? std::string(signal) + ":" + detail : signal;
    (*static_cast<std::shared_ptr<Events>*>(events))->push_back(std::move(event));
}

std::optional<AccessibleEvent> ScreenReader::waitForEvent(
    const std::string& name, const std::function<bool(const AccessibleEvent&)>& fits)
{
    std::optional<AccessibleEvent> found;
    eventually(
        [&] {
            while (g_main_context_iteration(nullptr, FALSE)) {}
            while (!m_events->empty() && !found) {
                if (m_events->front().name == name && fits(m_events->front()))
                    found = m_events->front();
                m_events->pop_front();
            }
            return found.has_value();
        },
        eventLimit);
    return found;
}

Owned<GVariant> ScreenReader::call(
    const Accessible& object, const char* interface, const char* method, GVariant* arguments)
{
    return callOn(m_bus.get(), object, interface, method, arguments);
}

Owned<GVariant> ScreenReader::property(const Accessible& object, const char* interface, const char* name)
{
    GVariant* value = nullptr;
    read(call(object, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface, name)),
        "(v)", &value);
    return Owned<GVariant>(value);
}

// The tree

void ScreenReader::addTree(const Accessible& object, std::vector<Node>& nodes)
{
    if (nodes.size() >= largestTree)
        return;
    Node node;
    node.object = object;
    read(call(object, accessibleInterface, "GetRole", nullptr), "(u)", &node.role);
    node.name = name(object);
    nodes.push_back(node);
    GVariantIter* children = nullptr;
    const auto answer = call(object, accessibleInterface, "GetChildren", nullptr);
    read(answer, "(a(so))", &children);
    const char* program = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_loop(children, "(&s&o)", &program, &path))
        if (std::string_view(path) != "/org/a11y/atspi/null")
            addTree({program, path}, nodes);
    g_variant_iter_free(children);
}

std::vector<ScreenReader::Node> ScreenReader::tree()
{
    std::vector<Node> nodes;
    addTree(registry, nodes);
    return nodes;
}

std::optional<Accessible> ScreenReader::waitFor(Role role)
{
    std::optional<Accessible> found;
    eventually(
        [&] {
            try {
                for (const Node& node : tree())
                    if (node.role == static_cast<uint32_t>(role) && !found)
                        found = node.object;
            } catch (const std::runtime_error&) { // the program changes its windows meanwhile
            }
            return found.has_value();
        },
        eventLimit);
    return found;
}

std::string ScreenReader::name(const Accessible& object)
{
    return g_variant_get_string(property(object, accessibleInterface, "Name").get(), nullptr);
}

bool ScreenReader::has(const Accessible& object, State state)
{
    const Owned<GVariant> words(
        g_variant_get_child_value(call(object, accessibleInterface, "GetState", nullptr).get(), 0));
    const auto number = static_cast<uint32_t>(state);
    uint32_t word = 0;
    g_variant_get_child(words.get(), number / 32, "u", &word);
    return word >> (number % 32) & 1;
}

// Texts

std::string ScreenReader::text(const Accessible& object, int start, int end)
{
    const char* text = nullptr;
    const auto answer = call(object, textInterface, "GetText", g_variant_new("(ii)", start, end));
    read(answer, "(&s)", &text);
    return text;
}

ScreenReader::Answer ScreenReader::textAt(const Accessible& object, int offset, uint32_t boundary)
{
    Answer found;
    const char* text = nullptr;
    const auto answer
        = call(object, textInterface, "GetTextAtOffset", g_variant_new("(iu)", offset, boundary));
    read(answer, "(&sii)", &text, &found.start, &found.end);
    found.text = text;
    return found;
}

int ScreenReader::characterCount(const Accessible& object)
{
    return g_variant_get_int32(property(object, textInterface, "CharacterCount").get());
}

int ScreenReader::caret(const Accessible& object)
{
    return g_variant_get_int32(property(object, textInterface, "CaretOffset").get());
}

void ScreenReader::setCaret(const Accessible& object, int offset)
{
    call(object, textInterface, "SetCaretOffset", g_variant_new("(i)", offset));
}

std::optional<std::pair<int, int>> ScreenReader::selection(const Accessible& object)
{
    int count = 0;
    read(call(object, textInterface, "GetNSelections", nullptr), "(i)", &count);
    if (count == 0)
        return std::nullopt;
    std::pair<int, int> range;
    read(call(object, textInterface, "GetSelection", g_variant_new("(i)", 0)), "(ii)", &range.first,
        &range.second);
    return range;
}

void ScreenReader::insert(const Accessible& object, int offset, const std::string& text, int count)
{
    call(object, editableTextInterface, "InsertText", g_variant_new("(isi)", offset, text.c_str(), count));
}

void ScreenReader::remove(const Accessible& object, int start, int end)
{
    call(object, editableTextInterface, "DeleteText", g_variant_new("(ii)", start, end));
}

} // namespace quillmark::test
