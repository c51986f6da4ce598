// A user at random on a disk that fails at random. Every sentence that was typed and not deleted by the user
// is in a document on the disk, in the editor, in the recovery folder or in the journal, once the queues have
// had the time to try again.
#include "AppTest.h"
#include "support/Random.h"

#include <map>
#include <set>

namespace quillmark::test {
namespace {

constexpr int worlds = 60;
constexpr size_t longest = 300; // of a text in a story
constexpr int steps = 150; // few enough that the recovery folder drops nothing

/// The numbers of the sentences "<n>" in a text.
std::set<int> sentencesIn(std::string_view text)
{
    std::set<int> found;
    for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1))
        found.insert(std::atoi(text.substr(at + 1, 10).data()));
    return found;
}

class User : public AppTest {
public:
    explicit User(Random& random)
        : m_random(random)
    {
        for (const char* file : {"/docs/a.txt", "/docs/b.md", "/docs/c"})
            disk.putFile(file, "");
        start();
    }

    void TestBody() override {}

    void step()
    {
        static constexpr std::array actions = {&User::typeSentence, &User::typeSentence, &User::typeSentence,
            &User::typeSentence, &User::waitAWhile, &User::waitAWhile, &User::switchTab, &User::switchTab,
            &User::openSomething, &User::closeSomeTab, &User::leaveTheProgram, &User::breakTheDisk,
            &User::healTheDisk, &User::runAJob, &User::rareThings};
        (this->*actions[static_cast<size_t>(m_random.below(actions.size()))])();
        ASSERT_TRUE(app->activeTab());
    }

    void rest()
    {
        disk.heal();
        for (int i = 0; i < 4; ++i) {
            scheduler.advance(65s);
            scheduler.settle();
        }
    }

    /// The sentences that are nowhere.
    std::set<int> lost() const
    {
        std::set<int> missing = m_sentences;
        const auto tick = [&](std::string_view text) {
            for (const int n : sentencesIn(text))
                missing.erase(n);
        };
        if (app)
            tick(shown());
        for (const char* folder : {notes, recovered, journal, "/docs", wastebasket}) {
            for (const std::string& text : textsIn(folder))
                tick(text);
        }
        return missing;
    }

    /// What he did, and what is on the disk, for a failure.
    std::string story() const
    {
        std::string result = m_history + "\nshown: " + shown().substr(0, longest);
        for (const char* folder : {notes, recovered, journal, "/docs", wastebasket})
            for (const std::string& name : disk.names(folder))
                result += "\n" + std::string(folder) + "/" + name + ": "
                    + disk.bytes(Path(folder) / name).value_or("").substr(0, longest);
        for (const std::string& line : log.lines())
            result += "\n" + line;
        return result;
    }

private:
    void note(std::string what) { m_history += what + "; "; }
    void forget(std::string_view text)
    {
        for (const int n : sentencesIn(text))
            m_sentences.erase(n);
    }

    /// Anywhere, but not inside of another sentence.
    void typeSentence()
    {
        if (!view.isEditable() || app->isLoading.get())
            return;
        constexpr std::u16string_view separators = u" \nx";
        const std::u16string text = view.text().text();
        int64_t at = m_random.upTo(static_cast<int64_t>(text.size()));
        while (at > 0 && separators.find(text[static_cast<size_t>(at) - 1]) == separators.npos)
            --at;
        view.select({.anchor = at, .caret = at});
        m_sentences.insert(m_next);
        note("type " + std::to_string(m_next));
        type("<" + std::to_string(m_next++) + ">" + (m_random.oneIn(3) ? "\n" : " "));
    }

    void waitAWhile()
    {
        scheduler.advance(std::chrono::milliseconds(m_random.below(6000)));
        if (m_random.oneIn(2))
            scheduler.settle();
    }

    void switchTab()
    {
        note("select");
        select(static_cast<size_t>(m_random.below(static_cast<int64_t>(app->tabs->size()))));
    }

    void openSomething()
    {
        note("open");
        static constexpr std::array files = {"/docs/a.txt", "/docs/b.md", "/docs/c", "/docs/missing"};
        const auto& all = *app->store.notes;
        if (m_random.oneIn(3))
            app->newNote();
        else if (m_random.oneIn(2) && !all.empty())
            app->openNote(all[static_cast<size_t>(m_random.below(static_cast<int64_t>(all.size())))].id);
        else
            open(files[static_cast<size_t>(m_random.below(files.size()))]);
    }

    void closeSomeTab()
    {
        note("close");
        close(static_cast<size_t>(m_random.below(static_cast<int64_t>(app->tabs->size()))));
    }

    void leaveTheProgram()
    {
        note("resign");
        app->willResignActive();
        if (m_random.oneIn(4))
            app->showNotice("…");
    }

    void breakTheDisk()
    {
        static constexpr std::array operations
            = {DiskOperation::stat, DiskOperation::createNew, DiskOperation::read, DiskOperation::write,
                DiskOperation::sync, DiskOperation::rename, DiskOperation::renameNoReplace,
                DiskOperation::openForReading, DiskOperation::syncFolder, DiskOperation::fileInfo};
        static constexpr std::array places = {"/docs", "Notes", ""};
        const auto operation = operations[static_cast<size_t>(m_random.below(operations.size()))];
        const char* place = places[static_cast<size_t>(m_random.below(places.size()))];
        note("break " + std::to_string(static_cast<int>(operation)) + " " + place);
        if (m_random.oneIn(8))
            disk.setCapacity(m_random.below(2000));
        else if (m_random.oneIn(3))
            disk.failCall(1 + m_random.below(20), EIO);
        else
            disk.failAlways(operation, m_random.oneIn(2) ? EIO : ENOSPC, place);
    }

    void healTheDisk()
    {
        note("heal");
        disk.heal();
    }

    void runAJob()
    {
        scheduler.runNextBackground();
        if (m_random.oneIn(2))
            scheduler.runPosted();
    }

    void rareThings()
    {
        switch (m_random.below(8)) {
        case 0:
            edit("clear", [this] { clear(); });
            break;
        case 1:
            deleteSomeNote();
            break;
        case 2:
            edit("paste", [this] { pasteLarge(); });
            break;
        case 3:
            note("clock");
            scheduler.setWall(scheduler.wallNow() + std::chrono::hours(m_random.below(48) - 24));
            break;
        case 4:
            note("restart");
            disk.heal(); // with nowhere to put it, no program could keep the text
            restart();
            break;
        case 5:
            if (const auto& all = *app->store.notes; !all.empty())
                app->store.duplicateNote(all.front());
            break;
        default:
            edit("undo", [this] { view.undo(); });
        }
    }

    void deleteSomeNote()
    {
        const auto& all = *app->store.notes;
        if (all.empty())
            return;
        const Note deleted = all[static_cast<size_t>(m_random.below(static_cast<int64_t>(all.size())))];
        note("delete " + deleted.url.filename().native());
        if (app->activeNoteID() == deleted.id)
            forget(shown());
        app->deleteNote(deleted);
    }

    /// The user sees which sentences an edit takes away and which it brings back.
    void edit(const std::string& what, const std::function<void()>& change)
    {
        if (!view.isEditable() || app->isLoading.get())
            return;
        note(what);
        const auto before = sentencesIn(shown());
        change();
        const auto after = sentencesIn(shown());
        for (const int n : before)
            m_sentences.erase(n);
        m_sentences.insert(after.begin(), after.end());
    }

    Random& m_random;
    std::string m_history;
    std::set<int> m_sentences; ///< typed, and not deleted by the user
    int m_next = 1;
};

TEST(RandomUser, LosesNoSentence)
{
    Random random;
    for (int world = 0; world < worlds; ++world) {
        User user(random);
        for (int i = 0; i < steps; ++i) {
            user.step();
            if (random.oneIn(10)) {
                user.rest();
                ASSERT_EQ(user.lost(), std::set<int>()) << user.story();
            }
        }
        user.rest();
        user.quit();
        ASSERT_EQ(user.lost(), std::set<int>()) << user.story();
        ASSERT_TRUE(user.textsIn(World::journal).empty()) << user.story();
        ASSERT_LT(user.kept().size(), RecoveryStore::capacity);
    }
}

} // namespace
} // namespace quillmark::test
