// What the program says and asks on the desktop's buses: to a screen reader, to the file manager.
#include "SessionBus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

XServer& screen()
{
    static XServer server;
    return server;
}

struct SessionBusTest : testing::Test {
    SessionBusTest()
    {
        desk.setEnvironment("DBUS_SESSION_BUS_ADDRESS", bus.address());
        desk.setEnvironment("XDG_DATA_DIRS", desk.home() / "run"); // nothing that could open a folder
    }
    Desk desk{&screen()};
    SessionBus bus{desk.home() / "run", screen()};
};

TEST_F(SessionBusTest, AScreenReaderHearsAKeyReadsTheTextAndWritesIt)
{
    const fs::path file = desk.home() / "list.txt";
    write(file, "Купить хлеб.\n");
    desk.setEnvironment("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    bus.becomeScreenReader();
    desk.start({file});
    std::this_thread::sleep_for(1s); // the bridge needs a moment to hear who listens
    screen().type("z");
    const auto typed = bus.waitFor("TextChanged", "'z'");
    ASSERT_TRUE(typed) << desk.log();
    EXPECT_NE(typed->body.find("'insert'"), std::string::npos) << typed->body;
    const auto text
        = [&] { return bus.ask(*typed, "org.a11y.atspi.Text", "GetText", g_variant_new("(ii)", 0, -1)); };
    EXPECT_TRUE(text().ends_with("zКупить хлеб.\\n',)")) << text();
    bus.ask(*typed, "org.a11y.atspi.EditableText", "InsertText", g_variant_new("(isi)", 0, "и соль ", 7));
    EXPECT_TRUE(eventually([&] { return contents(file) == "и соль zКупить хлеб.\n"; }, 20s))
        << contents(file);
}

TEST_F(SessionBusTest, AFileManagerThatNeverAnswersIsAskedOnceAndHoldsNothingUp)
{
    bus.becomeFileManager();
    write(desk.home() / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Док #1\"\n");
    desk.start();
    for (int i = 0; i < 3; ++i) { // "Файл", "Открыть папку заметок"
        for (const char* key : {"alt", "Down", "Down", "Down", "Down", "Return"}) {
            screen().key(key);
            std::this_thread::sleep_for(60ms); // the menu must be there to hear the next one
        }
    }
    EXPECT_TRUE(
        bus.waitFor("ShowItems", "file://" + desk.home().string() + "/%D0%94%D0%BE%D0%BA%20%231/Notes'"));
    screen().key("Escape"); // whatever menu a busy machine has left open
    screen().key("Escape");
    screen().type("alive");
    EXPECT_TRUE(eventually(
        [&] {
            const fs::directory_iterator notes(desk.home() / "Док #1/Notes");
            return std::ranges::any_of(
                notes, [](const auto& note) { return contents(note.path()) == "alive"; });
        },
        20s));
    const auto asked = std::chrono::steady_clock::now();
    EXPECT_EQ(desk.quit(), 0) << desk.log();
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 3s);
}

} // namespace
} // namespace quillmark::test
