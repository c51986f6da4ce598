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
        for (const char* file : {"/tmp/a.txt", "/tmp/b.md", "/tmp/c"})
            disk.putFile(file, "");
        trash.~RecordingTrash();
        new (&trash) RecordingTrash([this](const Path& file) {
            if (const auto bytes = disk.bytes(file))
                disk.putFile(Path("/trash") / std::to_string(m_next++), *bytes);
            disk.erase(file);
        });
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
        for (const char* folder : {notes, recovered, journal, "/tmp", "/trash"}) {
            for (const std::string& text : textsIn(folder))
                tick(text);
        }
        return missing;
    }

    std::string history;
    void dump() const
    {
        std::printf("shown: [%s]\n", shown().substr(0, 300).c_str());
        for (const char* folder : {notes, recovered, "/tmp", "/trash", journal})
            for (const std::string& name : disk.names(folder))
                std::printf("%s/%s: [%s]\n", folder, name.c_str(),
                    disk.bytes(Path(folder) / name).value_or("?").substr(0, 300).c_str());
        for (const std::string& line : log.lines())
            std::printf("%s\n", line.c_str());
    }

private:
    void note(std::string what) { history += what + "; "; }
    void forget(std::string_view text)
    {
        for (const int n : sentencesIn(text))
            m_sentences.erase(n);
    }

    void typeSentence()
    {
        if (!view.isEditable() || app->isLoading.get())
            return;
        view.select({.anchor = m_random.upTo(view.text().length()), .caret = 0});
        view.select({.anchor = view.selection().anchor, .caret = view.selection().anchor});
        m_sentences.insert(m_next);
        note("type " + std::to_string(m_next));
        insertAtABreak("<" + std::to_string(m_next++) + ">" + (m_random.oneIn(3) ? "\n" : " "));
    }

    /// Not inside of another sentence.
    void insertAtABreak(const std::string& text)
    {
        const std::u16string all = view.text().text();
        size_t at = static_cast<size_t>(view.selection().caret);
        while (
            at > 0 && at < all.size() && all[at - 1] != u' ' && all[at - 1] != u'\n' && all[at - 1] != u'x')
            --at;
        view.select({.anchor = static_cast<int64_t>(at), .caret = static_cast<int64_t>(at)});
        type(text);
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
        static constexpr std::array files = {"/tmp/a.txt", "/tmp/b.md", "/tmp/c", "/tmp/missing"};
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
        static constexpr std::array places = {"/tmp", "Notes", ""};
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
                if (!user.lost().empty())
                    user.dump();
                ASSERT_EQ(user.lost(), std::set<int>()) << user.history;
            }
        }
        user.rest();
        user.quit();
        ASSERT_EQ(user.lost(), std::set<int>()) << user.history;
        if (!user.textsIn(World::journal).empty())
            user.dump();
        ASSERT_TRUE(user.textsIn(World::journal).empty()) << user.history;
        ASSERT_LT(user.kept().size(), RecoveryStore::capacity);
    }
}

} // namespace
} // namespace quillmark::test
