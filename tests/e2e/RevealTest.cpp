// Showing a file in the file manager: the real menu items, a real bus, and what the program does when nobody
// answers there.
#include "FileManagerStub.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Behaviour = FileManagerStub::Behaviour;
using Strings = std::vector<std::string>;

struct Reveal : testing::Test {
    static XServer& screen()
    {
        static XServer server;
        return server;
    }

    /// With one note, whose path has all that a URI must not have as it is.
    void start(const std::string& busAddress)
    {
        write(documents / "Notes" / "50 % скидка #2.txt", "50 % скидка #2");
        write(desk.home() / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Док #1\"\n");
        desk.setEnvironment("XDG_DATA_DIRS", desk.home() / "run"); // nothing that could open a folder
        desk.setEnvironment("DBUS_SESSION_BUS_ADDRESS", busAddress);
        desk.start();
    }
    std::string notesURI() const
    {
        return "file://" + desk.home().string() + "/%D0%94%D0%BE%D0%BA%20%231/Notes";
    }

    void revealNotesFolder() ///< "Файл", "Открыть папку заметок"
    {
        for (const char* key : {"alt", "Down", "Down", "Down", "Down", "Return"}) {
            screen().key(key);
            std::this_thread::sleep_for(60ms); // the menu must be there to hear the next one
        }
    }
    void revealFirstNote() ///< its context menu, "Показать в Finder"
    {
        const XServer::Area window = screen().focusedArea();
        screen().click(window.x + 60, window.y + 134, 3);
        std::this_thread::sleep_for(200ms);
        screen().key("Down");
        screen().key("Return");
    }

    /// Words typed now are in the note, soon.
    void expectAlive(const std::string& words)
    {
        screen().type(words);
        EXPECT_TRUE(eventually([&] {
            for (const auto& entry : fs::directory_iterator(documents / "Notes"))
                if (contents(entry.path()).find(words) != std::string::npos)
                    return true;
            return false;
        })) << desk.log();
    }

    Desk desk{&screen()};
    fs::path documents = desk.home() / "Док #1";
};

TEST_F(Reveal, AsksTheFileManagerToSelectTheFile)
{
    FileManagerStub files(desk.home() / "run", Behaviour::answers);
    start(files.address());
    revealNotesFolder();
    EXPECT_TRUE(eventually([&] { return files.shown() == Strings{notesURI()}; }));
    revealFirstNote();
    EXPECT_TRUE(eventually([&] {
        return files.shown()
            == Strings{
                notesURI(), notesURI() + "/50%20%25%20%D1%81%D0%BA%D0%B8%D0%B4%D0%BA%D0%B0%20%232.txt"};
    })) << testing::PrintToString(files.shown());
    expectAlive("a ");
    EXPECT_EQ(desk.log().find("failed"), std::string::npos) << desk.log();

    files.killBus(); // takes nothing down with it
    expectAlive("b ");
    EXPECT_EQ(desk.quit(), 0);
}

TEST_F(Reveal, GoesOnWhereNobodyIsThereToShowIt)
{
    FileManagerStub files(desk.home() / "run", Behaviour::isMissing);
    for (const std::string& bus : {files.address(), std::string("unix:path=/nonexistent")}) {
        start(bus);
        revealNotesFolder();
        EXPECT_TRUE(
            eventually([&] { return desk.log().find("showing a file failed") != std::string::npos; }));
        expectAlive(bus == files.address() ? "a " : "b ");
        EXPECT_EQ(desk.quit(), 0);
        fs::remove(desk.home() / "log");
    }
}

TEST_F(Reveal, WaitsForNoAnswer)
{
    FileManagerStub files(desk.home() / "run", Behaviour::neverAnswers);
    start(files.address());
    for (int i = 0; i < 6; ++i)
        revealNotesFolder();
    EXPECT_TRUE(eventually([&] { return files.shown() == Strings{notesURI()}; })) << "one question at a time";
    expectAlive("a ");
    const auto asked = std::chrono::steady_clock::now();
    EXPECT_EQ(desk.quit(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 3s);
}

} // namespace
} // namespace quillmark::test
