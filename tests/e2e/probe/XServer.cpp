#include "probe/XServer.h"

#include "probe/Process.h"

#include <xcb/xtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <utility>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <class T> using Reply = std::unique_ptr<T, Free>;

constexpr uint32_t rootColour = 0x00FF00FF; ///< nothing that a program paints

struct NamedKey {
    std::string_view name;
    uint32_t keysym;
};
constexpr std::array namedKeys = {
    NamedKey{"ctrl", 0xFFE3},
    NamedKey{"shift", 0xFFE1},
    NamedKey{"alt", 0xFFE9},
    NamedKey{"altgr", 0xFFEA},
    NamedKey{"menu", 0xFF67},
    NamedKey{"space", 0x20},
    NamedKey{"Return", 0xFF0D},
    NamedKey{"BackSpace", 0xFF08},
    NamedKey{"Delete", 0xFFFF},
    NamedKey{"Tab", 0xFF09},
    NamedKey{"Escape", 0xFF1B},
    NamedKey{"Home", 0xFF50},
    NamedKey{"End", 0xFF57},
    NamedKey{"Left", 0xFF51},
    NamedKey{"Up", 0xFF52},
    NamedKey{"Right", 0xFF53},
    NamedKey{"Down", 0xFF54},
    NamedKey{"Prior", 0xFF55},
    NamedKey{"Next", 0xFF56},
};

uint32_t keysymOf(std::string_view name)
{
    for (const NamedKey& key : namedKeys)
        if (key.name == name)
            return key.keysym;
    if (name.size() == 1)
        return static_cast<unsigned char>(name[0]);
    throw std::invalid_argument("no such key: " + std::string(name));
}

} // namespace

XServer::XServer(WindowManager windowManager)
{
    int fds[2];
    if (pipe(fds) != 0)
        throw std::runtime_error("pipe");
    m_server = spawn({.program = "Xvfb",
        .arguments = {"-displayfd", std::to_string(fds[1]), "-screen", "0", "1600x1000x24", "-nolisten",
            "tcp", "-noreset", "-dpi", "96"},
        .quiet = true,
        .keepDescriptor = fds[1]});
    close(fds[1]);
    std::string number; // ends with a line feed, and may come in pieces
    char digit = 0;
    while (read(fds[0], &digit, 1) == 1 && digit != '\n')
        number += digit;
    close(fds[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not start");
    m_display = ":" + number;

    m_connection = xcb_connect(m_display.c_str(), nullptr);
    if (xcb_connection_has_error(m_connection))
        throw std::runtime_error("no connection to Xvfb");
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    xcb_change_window_attributes(m_connection, m_screen->root, XCB_CW_BACK_PIXEL, &rootColour);
    xcb_clear_area(m_connection, 0, m_screen->root, 0, 0, 0, 0);
    xcb_flush(m_connection);
    readKeyboard();

    if (windowManager == WindowManager::openbox) {
        m_manager = spawn({.program = "openbox",
            .arguments = {"--sm-disable"},
            .environment = {{"DISPLAY", m_display}},
            .quiet = true});
        // Ready when it owns the selection of window managers.
        const std::string name = "WM_S0";
        for (int i = 0; i < 500; ++i) {
            const auto atom
                = xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.c_str());
            const Reply<xcb_intern_atom_reply_t> a(xcb_intern_atom_reply(m_connection, atom, nullptr));
            const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
                m_connection, xcb_get_selection_owner(m_connection, a->atom), nullptr));
            if (owner && owner->owner != XCB_NONE)
                return;
            std::this_thread::sleep_for(10ms);
        }
        throw std::runtime_error("openbox did not start");
    }
}

XServer::~XServer()
{
    if (m_manager)
        killAndWait(m_manager);
    xcb_disconnect(m_connection);
    killAndWait(m_server);
}

std::string XServer::output(const std::string& command) const
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
        popen(("DISPLAY=" + m_display + " " + command).c_str(), "r"), pclose);
    std::string text;
    std::array<char, 512> buffer;
    while (pipe && fgets(buffer.data(), buffer.size(), pipe.get()))
        text += buffer.data();
    return text;
}

void XServer::readKeyboard()
{
    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    m_firstKeycode = setup->min_keycode;
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const Reply<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
        m_connection, xcb_get_keyboard_mapping(m_connection, m_firstKeycode, count), nullptr));
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
    m_keysyms.assign(keysyms, keysyms + xcb_get_keyboard_mapping_keysyms_length(mapping.get()));
    m_keysymsPerKeycode = mapping->keysyms_per_keycode;
}

uint8_t XServer::keycodeOf(uint32_t keysym, bool& shifted) const
{
    for (size_t column = 0; column < 2; ++column)
        for (size_t i = column; i < m_keysyms.size(); i += static_cast<size_t>(m_keysymsPerKeycode))
            if (m_keysyms[i] == keysym) {
                shifted = column == 1;
                return static_cast<uint8_t>(m_firstKeycode + i / static_cast<size_t>(m_keysymsPerKeycode));
            }
    throw std::invalid_argument("no key on this keyboard for a keysym");
}

void XServer::press(uint8_t keycode, bool down)
{
    xcb_test_fake_input(m_connection, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode, XCB_CURRENT_TIME,
        m_screen->root, 0, 0, 0);
    xcb_flush(m_connection);
}

void XServer::key(std::string_view combination)
{
    std::vector<uint8_t> held;
    while (!combination.empty()) {
        const size_t plus = combination.find('+', 1);
        const std::string_view name = combination.substr(0, plus);
        combination = plus == std::string_view::npos ? "" : combination.substr(plus + 1);
        bool shifted = false;
        const uint8_t keycode = keycodeOf(keysymOf(name), shifted);
        if (shifted) {
            bool ignored;
            held.push_back(keycodeOf(keysymOf("shift"), ignored));
            press(held.back(), true);
        }
        held.push_back(keycode);
        press(keycode, true);
    }
    for (auto it = held.rbegin(); it != held.rend(); ++it)
        press(*it, false);
}

void XServer::type(std::string_view ascii)
{
    for (const char c : ascii)
        key(c == '\n' ? std::string_view("Return") : std::string_view(&c, 1));
}

void XServer::click(int x, int y, uint8_t button)
{
    pressButton(x, y, button);
    releaseButton(button);
}

void XServer::pressButton(int x, int y, uint8_t button)
{
    moveTo(x, y);
    xcb_test_fake_input(m_connection, XCB_BUTTON_PRESS, button, XCB_CURRENT_TIME, m_screen->root, 0, 0, 0);
    xcb_flush(m_connection);
}

void XServer::moveTo(int x, int y)
{
    xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_screen->root,
        static_cast<int16_t>(x), static_cast<int16_t>(y), 0);
    xcb_flush(m_connection);
}

void XServer::releaseButton(uint8_t button)
{
    xcb_test_fake_input(m_connection, XCB_BUTTON_RELEASE, button, XCB_CURRENT_TIME, m_screen->root, 0, 0, 0);
    xcb_flush(m_connection);
}

void XServer::hold(std::string_view key, bool down)
{
    bool ignored = false;
    press(keycodeOf(keysymOf(key), ignored), down);
}

int XServer::mappedWindows()
{
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_screen->root), nullptr));
    int count = 0;
    const xcb_window_t* windows = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, windows[i]), nullptr));
        const Reply<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, windows[i]), nullptr));
        if (attributes && geometry && attributes->map_state == XCB_MAP_STATE_VIEWABLE && geometry->width > 200
            && geometry->height > 100)
            ++count;
    }
    return count;
}

/// A window manager that is still starting can sleep over the first request to map a window until something
/// else happens.
void XServer::nudgeWindowManager()
{
    const char nothing = 0;
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_screen->root, XCB_ATOM_CUT_BUFFER7,
        XCB_ATOM_STRING, 8, 1, &nothing);
    xcb_flush(m_connection);
}

xcb_window_t XServer::focusedWindow()
{
    const Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return focus ? focus->focus : XCB_NONE;
}

/// Whether it is a program's window rather than one of the window manager's own.
bool XServer::hasClass(xcb_window_t window)
{
    const auto request = xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64);
    const Reply<xcb_get_property_reply_t> name(xcb_get_property_reply(m_connection, request, nullptr));
    return name
        && std::string_view(static_cast<const char*>(xcb_get_property_value(name.get())),
               static_cast<size_t>(xcb_get_property_value_length(name.get())))
               .find("uillmark")
        != std::string_view::npos;
}

bool XServer::waitForWindow(pid_t program, Duration limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < deadline) {
        const bool hasKeyboard = m_manager == 0 || hasClass(focusedWindow());
        if (hasKeyboard && mappedWindows() > 0)
            return true;
        nudgeWindowManager();
        if (!isRunning(program))
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

XServer::Picture XServer::picture(const Area& area)
{
    const auto request = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root,
        static_cast<int16_t>(area.x), static_cast<int16_t>(area.y), static_cast<uint16_t>(area.width),
        static_cast<uint16_t>(area.height), ~0U);
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(m_connection, request, nullptr));
    if (!image)
        return {};
    Picture pixels(static_cast<size_t>(xcb_get_image_data_length(image.get())) / sizeof(uint32_t));
    std::memcpy(pixels.data(), xcb_get_image_data(image.get()), pixels.size() * sizeof(uint32_t));
    for (uint32_t& pixel : pixels)
        pixel &= 0xFFFFFF;
    return pixels;
}

XServer::Area XServer::focusedArea()
{
    const xcb_window_t window = focusedWindow();
    const Reply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_screen->root, 0, 0), nullptr));
    if (!size || !place)
        return {};
    return {.x = place->dst_x, .y = place->dst_y, .width = size->width, .height = size->height};
}

uint32_t XServer::pixel(int x, int y)
{
    const Picture single = picture({.x = x, .y = y, .width = 1, .height = 1});
    return single.empty() ? 0 : single.front();
}

bool XServer::waitForPaint(Duration limit)
{
    return waitForPixel(true, limit);
}

bool XServer::waitForBareRoot(Duration limit)
{
    return waitForPixel(false, limit);
}

bool XServer::waitForPixel(bool painted, Duration limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < deadline) {
        // The server is asked about 4,000 times a second: fine enough to time a start.
        const uint32_t colour = pixel(m_screen->width_in_pixels / 4, m_screen->height_in_pixels / 4);
        if ((colour != (rootColour & 0xFFFFFF)) == painted)
            return true;
        std::this_thread::sleep_for(200us);
    }
    return false;
}

} // namespace quillmark::test
