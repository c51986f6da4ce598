// The first note, from the first key to the next start, in the real program.
#include "EndToEnd.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>
#include <thread>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Names = std::vector<std::string>;

XServer& screen()
{
    static XServer server;
    return server;
}

TEST(FirstNote, IsSavedNamedAndBroughtBack)
{
    Desk desk(&screen());
    desk.start();
    EXPECT_EQ(desk.noteNames(), Names{"Untitled.txt"});

    screen().type("Shopping\nmilk");
    EXPECT_TRUE(eventually([&] { return contents(desk.notes() / "Untitled.txt") == "Shopping\nmilk"; }));

    // Leaving the note gives the file its name at once.
    screen().key("ctrl+n");
    EXPECT_TRUE(eventually([&] { return desk.noteNames() == Names({"Shopping.txt", "Untitled 2.txt"}); }));
    screen().type("Second");
    EXPECT_EQ(desk.quit(), 0);
    EXPECT_EQ(desk.noteNames(), Names({"Second.txt", "Shopping.txt"}));
    EXPECT_EQ(contents(desk.notes() / "Second.txt"), "Second");

    // The next run has both tabs, the second active.
    desk.start();
    screen().key("ctrl+Home");
    screen().type("The ");
    screen().key("ctrl+shift+Tab");
    screen().key("ctrl+End");
    screen().type(", eggs");
    EXPECT_EQ(desk.quit(), 0);
    EXPECT_EQ(contents(desk.notes() / "The Second.txt"), "The Second");
    EXPECT_EQ(contents(desk.notes() / "Shopping.txt"), "Shopping\nmilk, eggs");
    EXPECT_EQ(desk.temporaries(), std::vector<fs::path>{});
}

TEST(Signals, FlushWriteTheSessionAndEnd)
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        Desk desk(&screen());
        desk.start();
        screen().type("last words");
        std::this_thread::sleep_for(400ms); // less than the delay of a save, enough for a busy machine
        EXPECT_EQ(desk.signal(number), 0) << number << desk.log();
        EXPECT_EQ(contents(desk.notes() / "last words.txt"), "last words") << number;
        EXPECT_NE(
            contents(desk.home() / ".config/quillmark/settings.json").find("session.v1"), std::string::npos);
    }
}

TEST(CommandLine, SurvivesWhateverIsNotATextFile)
{
    Desk desk(&screen());
    const fs::path fifo = desk.home() / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const fs::path folder = desk.home() / "folder";
    fs::create_directory(folder);
    const fs::path oddName = desk.home() / "na\xFFme.txt";
    write(oddName, "odd");
    const fs::path binary = desk.home() / "binary";
    std::string bytes;
    for (int i = 0; i < 4096; ++i)
        bytes += static_cast<char>(i * 7 % 256);
    write(binary, bytes);
    const fs::path missing = desk.home() / "missing.txt";

    desk.start({folder, fifo, "/dev/zero", binary, missing, oddName});
    screen().key("ctrl+End");
    screen().type("!");
    EXPECT_TRUE(eventually([&] { return contents(oddName) == "odd!"; }));
    screen().key("ctrl+Prior"); // to the tab before: the missing file, made by its first save
    screen().type("made");
    EXPECT_TRUE(eventually([&] { return contents(missing) == "made"; }));
    for (int i = 0; i < 4; ++i) { // through the others, typing into each
        screen().key("ctrl+Prior");
        if (i > 0)
            screen().type("x");
    }
    EXPECT_EQ(desk.quit(), 0) << desk.log();
    EXPECT_EQ(contents(binary), bytes);
    EXPECT_TRUE(fs::is_directory(folder));
    EXPECT_TRUE(fs::is_fifo(fifo));
    EXPECT_TRUE(fs::is_character_file("/dev/zero"));
}

TEST(Screenshot, ShowsTheSettledWindow)
{
    Desk desk(nullptr);
    const fs::path picture = desk.home() / "picture.png";
    write(desk.home() / "big.txt", std::string(600'000, 'x') + "\n");
    desk.startOnly({"--screenshot", picture, desk.home() / "big.txt"});
    EXPECT_EQ(waitForExit(desk.process(), 20s), 0);
    EXPECT_TRUE(contents(picture).starts_with("\x89PNG"));
    EXPECT_GT(contents(picture).size(), 5000u);
}

} // namespace
} // namespace quillmark::test
