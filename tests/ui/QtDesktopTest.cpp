#include "desktop/GioTrash.h"
#include "desktop/QtClipboard.h"
#include "io/PosixFileSystem.h"
#include "support/ManualScheduler.h"
#include "support/RecordingLog.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

namespace quillmark {

namespace {

std::filesystem::path wastebasket()
{
    return std::filesystem::path(getenv("XDG_DATA_HOME")) / "Trash/files";
}

std::set<std::string> namesIn(const std::filesystem::path& folder)
{
    std::error_code missing;
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing))
        names.insert(entry.path().filename());
    return names;
}

std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return (std::ostringstream() << stream.rdbuf()).str();
}

} // namespace

struct GioTrashTest : testing::Test {
    const test::TemporaryFolder folder;
    test::ManualScheduler scheduler;
    test::RecordingLog log;
    PosixFileSystem disk;
    GioTrash trash{scheduler, disk, log};
    std::vector<bool> outcomes;

    void recycle(const Path& file)
    {
        trash.recycle(file, [this](const Status& recycled) { outcomes.push_back(recycled.has_value()); });
    }
};

TEST_F(GioTrashTest, MovesFilesOnABackgroundThreadAndKeepsTheirBytes)
{
    const auto file = folder / "Список \xFF.txt"; // the name is not valid UTF-8
    std::ofstream(file) << "молоко";

    recycle(file);
    EXPECT_TRUE(exists(file));
    scheduler.settle();
    EXPECT_FALSE(exists(file));
    EXPECT_EQ(bytesOf(wastebasket() / file.filename()), "молоко");
    EXPECT_TRUE(log.lines().empty());

    recycle(folder / "nothing.txt");
    scheduler.settle();
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(outcomes, (std::vector<bool>{true, false}));
}

TEST_F(GioTrashTest, GivesBackTheLastFileOfThatPath)
{
    const auto file = folder / "100% \xFF.txt";
    const auto records = [] { return namesIn(wastebasket().parent_path() / "info"); };
    const auto recordsBefore = records();
    for (const char* words : {"older", "newer"}) {
        for (const std::string& record : records()) // a clock that counts in larger steps is no matter
            last_write_time(wastebasket().parent_path() / "info" / record,
                std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
        std::ofstream(file) << words;
        trash.recycle(file);
        scheduler.settle();
    }
    const auto restored = folder / "back.txt";
    const auto place = [&](const Result<Path>& trashed) {
        return trashed ? disk.renameNoReplace(*trashed, restored) : Status();
    };
    trash.restore(file, place);
    scheduler.settle();
    EXPECT_EQ(bytesOf(restored), "newer");
    trash.restore(file, place); // refused: something is there
    scheduler.settle();
    std::filesystem::remove(restored);
    trash.restore(file, place);
    scheduler.settle();
    EXPECT_EQ(bytesOf(restored), "older");
    EXPECT_EQ(records(), recordsBefore);
    bool isMissing = false;
    trash.restore(file, [&](const Result<Path>& trashed) {
        isMissing = !trashed;
        return Status();
    });
    scheduler.settle();
    EXPECT_TRUE(isMissing);
}

TEST(QtClipboard, KeepsEveryUnit)
{
    QtClipboard clipboard;
    const std::u16string text = u"a\u00A0\u2028\t\U0001F600\n" + std::u16string(1, u'\0') + u"z";
    clipboard.setText(Rope(text));
    EXPECT_TRUE(clipboard.hasText());
    EXPECT_EQ(clipboard.text(), text);
}

} // namespace quillmark
