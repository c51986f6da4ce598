// Somebody types into the program while other programs change, take away and bring back the files under his
// hands. A while in every run of the tests; for as many seconds as you like set QUILLMARK_SOAK.
#include "EndToEnd.h"
#include "SyncTool.h"
#include "probe/Pulse.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <iostream>
#include <thread>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int usualSeconds = 45;
constexpr auto longestPause
    = 1s; ///< gross: how busy the machine is, nobody knows. The real figure is printed
constexpr int mostPieces = 3; ///< of a sentence under which the document was exchanged while it was typed
constexpr size_t digitCount = 6;

std::string sixDigits(int number)
{
    const std::string digits = std::to_string(number);
    return std::string(digitCount - digits.size(), '0') + digits;
}

/// Unmistakable at both ends: "s000042.qwertyuiop.000042e".
std::string makeSentence(int number, std::mt19937_64& random)
{
    std::string sentence = "s" + sixDigits(number) + ".";
    for (int i = 0; i < 10; ++i)
        sentence += static_cast<char>('a' + random() % 26);
    return sentence + "." + sixDigits(number) + "e";
}

class Typist {
public:
    Typist(XServer& screen, uint64_t seed)
        : m_screen(screen)
        , m_random(seed)
    {
    }

    void doSomething()
    {
        const auto choice = m_random() % 24;
        if (choice < 14)
            typeSentence();
        else if (choice < 17)
            m_screen.key(choice == 14 ? "ctrl+Home" : "ctrl+End");
        else if (choice < 21)
            m_screen.key(choice % 2 == 0 ? "ctrl+Next" : "ctrl+Prior");
        else if (choice == 21)
            m_screen.key("ctrl+s");
        else if (m_random() % 3 == 0)
            m_screen.key(choice == 22 ? "ctrl+n" : "ctrl+w");
        const bool hasStopped = m_random() % 8 == 0; // long enough for a save and for a look at the folder
        std::this_thread::sleep_for(
            std::chrono::milliseconds(hasStopped ? 500 + m_random() % 1000 : m_random() % 150));
    }

    const std::vector<std::string>& sentences() const { return m_sentences; }

private:
    void typeSentence()
    {
        const std::string sentence = makeSentence(static_cast<int>(m_sentences.size()) + 1, m_random);
        m_sentences.push_back(sentence);
        const auto pace = std::chrono::milliseconds(m_random() % 12);
        for (const char c : sentence + (m_random() % 3 == 0 ? "\n" : " ")) {
            m_screen.type({&c, 1});
            std::this_thread::sleep_for(pace);
        }
    }

    XServer& m_screen;
    std::mt19937_64 m_random;
    std::vector<std::string> m_sentences;
};

/// All that there is to be found in the end.
class Remains {
public:
    void add(const std::string& text) { m_all += text + '\n'; }

    bool has(const std::string& sentence) const { return piecesOf(sentence) <= mostPieces; }

private:
    /// The fewest pieces of the sentence that are all there.
    int piecesOf(std::string_view sentence) const
    {
        int pieces = 0;
        while (!sentence.empty() && pieces <= mostPieces) {
            size_t length = sentence.size();
            while (length > 0 && m_all.find(sentence.substr(0, length)) == std::string::npos)
                --length;
            if (length == 0)
                return mostPieces + 1;
            sentence.remove_prefix(length);
            ++pieces;
        }
        return pieces;
    }

    std::string m_all;
};

struct Soak : testing::Test {
    XServer screen;
    Desk desk{&screen};
    const fs::path file = desk.home() / "list.md";
    const fs::path away = desk.home() / "away";
    SyncTool tool{desk.notes(), {file}, away, seed()};
    Typist typist{screen, seed() + 1};
    Pulse::Findings pulse;

    void run(Clock::duration time)
    {
        const auto end = Clock::now() + time;
        Pulse watch(screen.display(), screen.focusedWindow(), desk.process());
        std::jthread others([&](const std::stop_token& stopped) {
            std::mt19937_64 random(seed() + 2);
            while (!stopped.stop_requested()) {
                tool.step();
                tool.lookAtRecovered(desk.state() / "recovered");
                std::this_thread::sleep_for(
                    std::chrono::milliseconds(random() % 6 == 0 ? random() % 1200 : random() % 120));
            }
        });
        while (Clock::now() < end && isRunning(desk.process()))
            typist.doSomething();
        others.request_stop();
        others.join();
        pulse = watch.stop();
    }

    /// Every text that is left, and where it is.
    std::vector<std::pair<std::string, std::string>> documents() const
    {
        std::vector<std::pair<std::string, std::string>> found = {{file, contents(file)}};
        for (const fs::path& folder : {desk.notes(), away, desk.state() / "recovered"})
            if (fs::exists(folder))
                for (const auto& entry : fs::directory_iterator(folder))
                    found.emplace_back(entry.path(), contents(entry.path()));
        for (const std::string& text : tool.seen())
            found.emplace_back("replaced or taken away", text);
        return found;
    }

    void report() const
    {
        const auto milliseconds = [](Duration time) {
            return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
        };
        std::cout << "Soak, seed " << seed() << ": " << typist.sentences().size() << " sentences";
        for (const auto& [operation, count] : tool.operations())
            std::cout << "; " << count << " × " << operation;
        std::cout << "; " << tool.conflictCopies() << " conflict copies; " << tool.recovered()
                  << " recovered files; longest pause " << milliseconds(pulse.longest) << " ms, of which "
                  << milliseconds(pulse.longestWithoutCore) << " ms without a core; " << pulse.slow << " of "
                  << pulse.answers << " answers took more than 100 ms\n";
    }
};

TEST_F(Soak, NobodyLosesAWordWhileOtherProgramsChangeTheFiles)
{
    const char* const wanted = std::getenv("QUILLMARK_SOAK");
    tool.putFirstVersions();
    desk.start({file});
    run(std::chrono::seconds(wanted ? std::atoi(wanted) : usualSeconds));
    EXPECT_EQ(desk.signal(SIGTERM), 0) << desk.log();
    tool.lookAtRecovered(desk.state() / "recovered");
    report();

    Remains remains;
    std::set<int> versions;
    for (const auto& [place, text] : documents()) {
        remains.add(text);
        const int version = tool.versionIn(text);
        EXPECT_NE(version, -1) << "torn: " << place << "\n" << text;
        versions.insert(version);
    }
    for (const std::string& sentence : typist.sentences())
        EXPECT_TRUE(remains.has(sentence)) << sentence << desk.log();
    for (const int version : tool.written())
        EXPECT_TRUE(versions.contains(version)) << "version " << version << desk.log();
    EXPECT_EQ(tool.disturbed(), std::vector<std::string>{});
    EXPECT_EQ(desk.temporaries(), std::vector<fs::path>{});
    EXPECT_TRUE(!fs::exists(desk.state() / "journal") || fs::is_empty(desk.state() / "journal"));
    EXPECT_FALSE(pulse.isSilent);
    EXPECT_LT(pulse.longest, longestPause);
}

} // namespace
} // namespace quillmark::test
