// An X server of one's own, without a screen, and the keyboard and mouse of whoever sits at it. Keys are sent
// by key code through XTest, as a keyboard does, so that the layout under test decides what they mean.
#pragma once

#include "base/Clock.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace quillmark::test {

class XServer {
public:
    enum class WindowManager { none, openbox };

    explicit XServer(WindowManager windowManager = WindowManager::openbox);
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    const std::string& display() const { return m_display; } ///< ":7"
    std::string output(const std::string& command) const; ///< of a shell command on this display

    /// Presses and releases keys of the US layout: "a", "Return", "ctrl+n", "ctrl+shift+Tab".
    void key(std::string_view combination);
    void type(std::string_view ascii); ///< printable ASCII, LF as Return
    void click(int x, int y, uint8_t button = 1);
    void pressButton(int x, int y, uint8_t button = 1);
    void moveTo(int x, int y); ///< with whatever is held
    void releaseButton(uint8_t button = 1);
    void hold(std::string_view key, bool down); ///< a key alone, such as "ctrl"

    /// Until a top-level window of some size is mapped and, where there is a window manager, has the
    /// keyboard.
    bool waitForWindow(pid_t program, Duration limit);
    /// Until a pixel in the upper left quarter of the screen has another colour than the bare root window.
    bool waitForPaint(Duration limit);
    bool waitForBareRoot(Duration limit); ///< until the window is gone again
    uint32_t pixel(int x, int y); ///< 0xRRGGBB as it stands on the screen
    struct Area {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };
    using Picture = std::vector<uint32_t>; ///< row by row, 0xRRGGBB
    Picture picture(const Area& area); ///< of the screen; empty when the server does not answer
    xcb_window_t focusedWindow();
    Area focusedArea(); ///< of the window that has the keyboard, without its frame
    int mappedWindows(); ///< children of the root window that are mapped and larger than 200 × 100

private:
    void press(uint8_t keycode, bool down);
    uint8_t keycodeOf(uint32_t keysym, bool& shifted) const;
    void readKeyboard();
    void nudgeWindowManager();
    bool hasClass(xcb_window_t window);
    bool waitForPixel(bool painted, Duration limit);

    pid_t m_server = 0;
    pid_t m_manager = 0;
    std::string m_display;
    xcb_connection_t* m_connection = nullptr;
    xcb_screen_t* m_screen = nullptr;
    std::vector<uint32_t> m_keysyms;
    int m_keysymsPerKeycode = 0;
    uint8_t m_firstKeycode = 0;
};

} // namespace quillmark::test
