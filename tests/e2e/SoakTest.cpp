// Somebody types into the program while another program replaces, overwrites, takes away and brings back the
// files under his hands. A while in every run of the tests; for as many seconds as you like set
// QUILLMARK_SOAK.
#include "EndToEnd.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <random>
#include <set>
#include <thread>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int usualSeconds = 15;
constexpr size_t bodyLetters = 700; ///< a version fits into one page, and is written in one piece

/// The other program. Its versions are "Начало", the same letter again and again, "Конец": no ASCII, while
/// what is typed has nothing else. Whatever it replaces or takes away it has read before.
class OtherProgram {
public:
    OtherProgram(std::vector<fs::path> files, fs::path away)
        : m_files(std::move(files))
        , m_away(std::move(away))
    {
        fs::create_directories(m_away);
        for (const fs::path& file : m_files)
            write(file, nextVersion());
    }

    void step()
    {
        const fs::path& file = m_files[m_random() % m_files.size()];
        if (!m_taken.empty())
            return bringBack();
        switch (m_random() % 5) {
        case 0:
        case 1:
            return exchange(file);
        case 2:
        case 3:
            return overwrite(file);
        default:
            m_taken = file;
            if (renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, (m_away / "file").c_str(), 0) != 0)
                m_taken.clear();
        }
    }

    void bringBack()
    {
        if (m_taken.empty())
            return;
        const std::string kept = m_away / "file";
        seen += contents(kept);
        if (renameat2(AT_FDCWD, kept.c_str(), AT_FDCWD, m_taken.c_str(), RENAME_NOREPLACE) != 0)
            fs::remove(kept); // the program has made the file again
        m_taken.clear();
    }

    std::string seen; ///< texts that were on the disk and may not be there any more

    /// Whether a text holds one of the versions, whole, or none: what of it is not ASCII.
    static bool isWhole(const std::string& text)
    {
        std::string letters;
        std::ranges::copy_if(text, std::back_inserter(letters), [](char c) { return c < 0; });
        return letters.empty()
            || (letters.size() >= 2 * (6 + bodyLetters + 5) && letters == version(letters.substr(12, 2)));
    }

private:
    static std::string version(const std::string& letter)
    {
        std::string text = "Начало";
        for (size_t i = 0; i < bodyLetters; ++i)
            text += letter;
        return text + "Конец";
    }
    std::string nextVersion()
    {
        constexpr std::string_view letters = "абвгдежзиклмнопрстуф";
        return version(std::string(letters.substr(m_serial++ % 20 * 2, 2)));
    }

    /// As sync tools save. The two files change places, so that what is replaced can be read in any case.
    void exchange(const fs::path& file)
    {
        const fs::path temporary = m_away / "new";
        write(temporary, nextVersion());
        if (renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, file.c_str(), RENAME_EXCHANGE) == 0)
            seen += contents(temporary);
    }

    void overwrite(const fs::path& file)
    {
        if (!fs::exists(file))
            return;
        seen += contents(file);
        write(file, nextVersion());
    }

    std::vector<fs::path> m_files;
    fs::path m_away;
    fs::path m_taken;
    std::mt19937_64 m_random{seed()};
    size_t m_serial = 0;
};

/// Unmistakable at both ends, as a document may be exchanged while it is typed: "s42.qwertyuiop.42e".
std::string makeSentence(size_t number, std::mt19937_64& random)
{
    const std::string digits = std::to_string(number);
    std::string sentence = "s" + digits + ".";
    for (int i = 0; i < 10; ++i)
        sentence += static_cast<char>('a' + random() % 26);
    return sentence + "." + digits + "e";
}

/// Whether the sentence is there, if need be in two or three pieces.
bool isKept(std::string_view sentence, const std::string& all)
{
    for (int pieces = 0; !sentence.empty(); ++pieces) {
        size_t length = sentence.size();
        while (length > 0 && all.find(sentence.substr(0, length)) == std::string::npos)
            --length;
        if (length == 0 || pieces == 3)
            return false;
        sentence.remove_prefix(length);
    }
    return true;
}

void typeSentence(XServer& screen, const std::string& sentence, std::mt19937_64& random)
{
    const auto pace = std::chrono::milliseconds(random() % 12);
    for (const char c : sentence + (random() % 3 == 0 ? "\n" : " ")) {
        screen.type({&c, 1});
        std::this_thread::sleep_for(pace);
    }
}

TEST(Soak, NobodyLosesAWordWhileAnotherProgramChangesTheFiles)
{
    const char* const wanted = std::getenv("QUILLMARK_SOAK");
    XServer screen;
    Desk desk(&screen);
    const fs::path file = desk.home() / "list.md";
    OtherProgram other({file, desk.notes() / "План.txt", desk.notes() / "plan.txt"}, desk.home() / "away");
    desk.start({file});
    const auto end = Clock::now() + std::chrono::seconds(wanted ? std::atoi(wanted) : usualSeconds);
    std::jthread others([&](const std::stop_token& stopped) {
        std::mt19937_64 random(seed() + 2);
        while (!stopped.stop_requested()) {
            other.step();
            std::this_thread::sleep_for(
                std::chrono::milliseconds(random() % (random() % 6 == 0 ? 1200 : 120)));
        }
        other.bringBack();
    });

    std::mt19937_64 random(seed() + 1);
    std::vector<std::string> sentences;
    constexpr std::array keys = {"ctrl+Home", "ctrl+End", "ctrl+Next", "ctrl+Prior", "ctrl+Next", "ctrl+s"};
    while (Clock::now() < end && isRunning(desk.process())) {
        if (random() % 5 < 3) {
            sentences.push_back(makeSentence(sentences.size(), random));
            typeSentence(screen, sentences.back(), random);
        } else {
            screen.key(keys[random() % keys.size()]);
        }
        const bool hasStopped = random() % 8 == 0; // long enough for a save and for a look at the folder
        std::this_thread::sleep_for(
            std::chrono::milliseconds(hasStopped ? 500 + random() % 1000 : random() % 150));
    }
    others.request_stop();
    others.join();
    EXPECT_EQ(desk.signal(SIGTERM), 0) << desk.log();
    EXPECT_FALSE(sentences.empty());

    std::cout << "Soak, seed " << seed() << ": " << sentences.size() << " sentences\n";
    std::string all = contents(file) + other.seen;
    EXPECT_TRUE(OtherProgram::isWhole(contents(file))) << contents(file);
    for (const fs::path& folder : {desk.notes(), desk.state() / "recovered"}) {
        if (!fs::exists(folder))
            continue;
        for (const auto& entry : fs::directory_iterator(folder)) {
            all += contents(entry.path()) + "\n";
            EXPECT_TRUE(OtherProgram::isWhole(contents(entry.path()))) << "torn: " << entry.path();
        }
    }
    for (const std::string& sentence : sentences)
        EXPECT_TRUE(isKept(sentence, all)) << sentence << desk.log();
    EXPECT_EQ(desk.temporaries(), std::vector<fs::path>{});
    EXPECT_TRUE(!fs::exists(desk.state() / "journal") || fs::is_empty(desk.state() / "journal"));
}

} // namespace
} // namespace quillmark::test
