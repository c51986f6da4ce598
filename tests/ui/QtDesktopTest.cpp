#include "desktop/GioTrash.h"
#include "desktop/QtClipboard.h"
#include "support/ManualScheduler.h"
#include "support/RecordingLog.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace quillmark {

namespace {

std::filesystem::path wastebasket()
{
    return std::filesystem::path(getenv("XDG_DATA_HOME")) / "Trash/files";
}

std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return (std::ostringstream() << stream.rdbuf()).str();
}

} // namespace

TEST(GioTrash, MovesFilesOnABackgroundThreadAndKeepsTheirBytes)
{
    const test::TemporaryFolder folder;
    test::ManualScheduler scheduler;
    test::RecordingLog log;
    GioTrash trash(scheduler, log);
    const auto file = folder / "Список \xFF.txt"; // the name is not valid UTF-8
    std::ofstream(file) << "молоко";

    trash.recycle(file);
    EXPECT_TRUE(exists(file));
    scheduler.settle();
    EXPECT_FALSE(exists(file));
    EXPECT_EQ(bytesOf(wastebasket() / file.filename()), "молоко");
    EXPECT_TRUE(log.lines().empty());
}

TEST(GioTrash, LogsAFailure)
{
    const test::TemporaryFolder folder;
    test::ManualScheduler scheduler;
    test::RecordingLog log;
    GioTrash trash(scheduler, log);
    trash.recycle(folder / "nothing.txt");
    scheduler.settle();
    EXPECT_EQ(log.lines().size(), 1U);
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
