#include "app/CommandLine.h"
#include "app/RecoveredList.h"
#include "app/TerminationSignals.h"
#include "app/window/panels/FileDetails.h"
#include "support/ManualScheduler.h"

#include <QDir>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

namespace quillmark::test {
namespace {

using Action = CommandLine::Action;
using Arguments = std::vector<const char*>;

CommandLine parsed(const Arguments& arguments)
{
    const auto line = parseCommandLine(arguments, "/home/user/here");
    EXPECT_TRUE(line);
    return line.value_or(CommandLine{});
}

TEST(CommandLine, FilesAreBytesMadeAbsolute)
{
    const CommandLine line = parsed({"a.txt", "../b", "/etc//hosts", "", "-", "na\xFFme"});
    EXPECT_EQ(line.action, Action::run);
    EXPECT_EQ(line.files,
        (std::vector<Path>{"/home/user/here/a.txt", "/home/user/b", "/etc/hosts", "/home/user/here/-",
            "/home/user/here/na\xFFme"}));
    EXPECT_FALSE(line.screenshot);
}

TEST(CommandLine, Options)
{
    EXPECT_EQ(parsed({"--help"}).action, Action::help);
    EXPECT_EQ(parsed({"--version", "x"}).action, Action::version);
    EXPECT_EQ(parsed({"--recovered"}).action, Action::recovered);
    const CommandLine picture = parsed({"--screenshot", "p.png", "a"});
    EXPECT_EQ(picture.screenshot, Path("/home/user/here/p.png"));
    EXPECT_EQ(picture.files, std::vector<Path>{"/home/user/here/a"});
    const CommandLine literal = parsed({"--", "--help", "-session"});
    EXPECT_EQ(literal.action, Action::run);
    EXPECT_EQ(literal.files.size(), 2u);
    const CommandLine restarted = parsed({"-session", "1a_2b", "a"});
    EXPECT_EQ(restarted.toolkitArguments, (std::vector<std::string>{"-session", "1a_2b"}));
    EXPECT_EQ(restarted.files.size(), 1u);
}

TEST(CommandLine, SaysWhatIsWrong)
{
    for (const Arguments& wrong :
        {Arguments{"--hepl"}, Arguments{"a", "--screenshot"}, Arguments{"-session"}})
        EXPECT_FALSE(parseCommandLine(wrong, "/"));
    for (const char* option : {"--help", "--version", "--recovered", "--screenshot"})
        EXPECT_NE(helpText().find(option), std::string_view::npos);
}

TEST(TerminationSignals, ArriveOnTheMainThread)
{
    ManualScheduler scheduler;
    TerminationSignals endings;
    int ends = 0;
    ::raise(SIGTERM); // before anybody listens
    const Task watch = endings.listen(scheduler, [&] { ++ends; });
    EXPECT_TRUE(scheduler.triggerDescriptors());
    EXPECT_EQ(ends, 1);
    ::raise(SIGINT);
    ::raise(SIGHUP);
    ::raise(SIGPIPE); // nothing at all
    EXPECT_EQ(ends, 1);
    scheduler.triggerDescriptors();
    EXPECT_EQ(ends, 2);
    EXPECT_FALSE(scheduler.triggerDescriptors());
}

TEST(RecoveredList, OneLineForEachText)
{
    EXPECT_EQ(recoveredList({}), "Спасённых текстов нет.\n");
    const std::string lines
        = recoveredList({{"/r/b.txt", 7, WallTime()}, {"/r/a.txt", 1'000'000, WallTime()}});
    EXPECT_EQ(std::ranges::count(lines, '\n'), 2);
    EXPECT_NE(lines.find("7 Б  /r/b.txt\n"), std::string::npos);
    EXPECT_NE(lines.find("1000000 Б  /r/a.txt\n"), std::string::npos);
}

TEST(FileDetails, SizesAreRussianAndShort)
{
    const auto text
        = [](int64_t bytes) { return fileSizeText(bytes).replace(QChar::Nbsp, u' ').toStdString(); };
    EXPECT_EQ(text(0), "0 Б");
    EXPECT_EQ(text(1023), "1 023 Б");
    EXPECT_EQ(text(1229), "1,2 КБ");
    EXPECT_EQ(text(640 * 1024 * 1024), "640 МБ");
    EXPECT_EQ(text(int64_t(5) << 40), "5,0 ТБ");
}

TEST(FileDetails, NobodyLooksIntoAFileToSayWhatItIs)
{
    const QFileInfo picture(QDir::temp().filePath(QStringLiteral("picture")));
    std::ofstream(picture.filePath().toStdString()) << "\x89PNG\r\n\x1a\n";
    EXPECT_EQ(FileSymbols().type(picture), QStringLiteral("Файл"));
    EXPECT_EQ(FileSymbols().type(QFileInfo(QStringLiteral("/none/список.txt"))), QStringLiteral("Файл TXT"));
    QFile::remove(picture.filePath());
}

} // namespace
} // namespace quillmark::test
