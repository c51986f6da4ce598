// A screen reader of the tests' own: a session bus, an accessibility bus and the protocol of AT-SPI on it. It
// knows of a program only what the program tells there.
#pragma once

#include "EndToEnd.h"
#include "desktop/Owned.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmark::test {

/// An accessible object: the name of its program on the bus and its path there.
struct Accessible {
    std::string program;
    std::string path;
    bool operator==(const Accessible&) const = default;
};

enum class Role : uint32_t { // as numbered by AT-SPI
    frame = 23,
    label = 29,
    list = 31,
    listItem = 32,
    pageTab = 37,
    pageTabList = 38,
    pushButton = 43,
    statusBar = 54,
    text = 61,
};

enum class State : uint32_t {
    editable = 7,
    focused = 12,
    multiLine = 17,
    readOnly = 43,
    selectableText = 38
};

struct AccessibleEvent {
    Accessible source;
    std::string name; ///< "TextChanged:insert", "TextCaretMoved"
    int first = 0; ///< for text: where
    int second = 0; ///< for text: how many characters
    std::string text;
};

class ScreenReader {
public:
    struct Node {
        Accessible object;
        uint32_t role = 0;
        std::string name;
    };
    struct Answer { ///< to a question for a unit of text
        std::string text;
        int start = 0;
        int end = 0;
    };

    /// Starts the buses; the folder takes their sockets.
    ScreenReader(const std::filesystem::path& runFolder, const XServer& screen);
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    const std::string& sessionBus() const { return m_sessionAddress; }
    void listen(); ///< to changes of text, caret, selection and states; before the program starts

    std::vector<Node> tree(); ///< of all programs, depth first, at most a few hundred objects
    std::optional<Accessible> waitFor(Role role); ///< the first object of a role in any program
    std::string name(const Accessible& object);
    bool has(const Accessible& object, State state);

    // The interfaces of texts.
    std::string text(const Accessible& object, int start, int end);
    Answer textAt(const Accessible& object, int offset, uint32_t boundary); ///< 0 character, 1 word, 5 line
    int characterCount(const Accessible& object);
    int caret(const Accessible& object);
    void setCaret(const Accessible& object, int offset);
    std::optional<std::pair<int, int>> selection(const Accessible& object);
    void insert(const Accessible& object, int offset, const std::string& text, int count);
    void remove(const Accessible& object, int start, int end);

    /// Until an event comes that fits, as do all those before it; those are dropped.
    std::optional<AccessibleEvent> waitForEvent(
        const std::string& name, const std::function<bool(const AccessibleEvent&)>& fits);

private:
    Owned<GVariant> call(
        const Accessible& object, const char* interface, const char* method, GVariant* arguments);
    Owned<GVariant> property(const Accessible& object, const char* interface, const char* name);
    void addTree(const Accessible& object, std::vector<Node>& nodes);
    static void received(GDBusConnection*, const char* sender, const char* path, const char* interface,
        const char* signal, GVariant* arguments, void* events);

    pid_t m_daemon = 0;
    std::string m_sessionAddress;
    Owned<GDBusConnection> m_bus;
    /// Shared with the subscription: the bus may hand over a late event when this object is gone.
    using Events = std::deque<AccessibleEvent>;
    std::shared_ptr<Events> m_events = std::make_shared<Events>();
};

} // namespace quillmark::test
