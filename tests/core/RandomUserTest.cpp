// A user at random on a disk that fails at random, with other programs at work on the same files. Every
// sentence that was typed and not deleted by the user, and every version that another program wrote, is in a
// document on the disk, in the editor, in the recovery folder or in the journal, once the queues have had the
// time to try again. What the other programs themselves replaced or deleted they have seen.
#include "AppTest.h"
#include "support/Random.h"

#include <map>
#include <set>

namespace quillmark::test {
namespace {

constexpr int worlds = 20; // a run; each has another seed
constexpr size_t longest = 300; // of a text in a story
constexpr int steps = 150; // few enough that the recovery folder drops nothing

/// The numbers of the sentences "<n>" in a text, and below zero those of other programs' versions "<-n>".
std::set<int> sentencesIn(std::string_view text)
{
    std::set<int> found;
    for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1))
        found.insert(std::atoi(text.substr(at + 1, 10).data()));
    return found;
}

bool isConflictCopy(const std::string& name)
{
    return name.find("(conflict ") != std::string::npos && name.find(") copy") == std::string::npos;
}

/// Whether there are other programs at work.
enum class Company { none, others };

class User : public AppTest {
public:
    User(Random& random, Company company)
        : m_random(random)
        , m_company(company)
    {
        for (const char* file : {"/docs/a.txt", "/docs/b.md", "/docs/c"})
            disk.putFile(file, "");
        start();
    }

    void TestBody() override {}

    void step()
    {
        if (m_company == Company::others && m_random.oneIn(5))
            othersAct();
        static constexpr std::array actions = {&User::typeSentence, &User::typeSentence, &User::typeSentence,
            &User::typeSentence, &User::waitAWhile, &User::waitAWhile, &User::switchTab, &User::switchTab,
            &User::openSomething, &User::closeSomeTab, &User::leaveTheProgram, &User::breakTheDisk,
            &User::healTheDisk, &User::runAJob, &User::rareThings};
        (this->*m_random.pick(actions))();
        ASSERT_TRUE(app->activeTab());
        for (const std::string& name : disk.names(notes)) {
            if (isConflictCopy(name))
                m_conflictCopies.insert(name);
        }
        ASSERT_LE(m_conflictCopies.size(), m_versionsOfNotes) << story();
        expectUneditedFilesAsTheyWere();
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
        tick(m_seenByOthers);
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
    void tell(std::string what) { m_history += what + "; "; }
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
        tell("type " + std::to_string(m_next));
        type("<" + std::to_string(m_next++) + ">" + (m_random.oneIn(3) ? "\n" : " "));
    }

    // The other programs.

    void othersAct()
    {
        const Path file = pickFile();
        const auto old = disk.bytes(file);
        switch (m_random.below(5)) {
        case 0:
        case 1:
            theyWrite(file, m_random.oneIn(2));
            break;
        case 2:
            if (old && m_random.oneIn(2)) {
                tell("they delete " + file.native());
                m_seenByOthers += *old;
                disk.erase(file);
                m_untouched.erase(file);
            }
            break;
        case 3:
            if (const Path to = World::note("moved " + std::to_string(++m_version) + ".txt"); old) {
                tell("they move " + file.native() + " to " + to.native());
                disk.move(file, to);
                m_untouched.erase(file);
            }
            break;
        default:
            theyWrite(World::note("new " + std::to_string(++m_version) + ".txt"), true);
        }
        if (m_random.oneIn(2)) {
            tell("heard");
            watching.deliver();
        }
    }

    /// Half of the time the one that is open.
    Path pickFile()
    {
        const auto tab = app->activeTab();
        const Note* const open = tab->note() ? app->store.find(tab->note()->id) : nullptr;
        if (m_random.oneIn(2) && (open || tab->file()))
            return open ? open->url : tab->file()->url;
        const auto names = noteNames();
        if (m_random.oneIn(2) && !names.empty())
            return World::note(m_random.pick(names));
        static constexpr std::array files = {"/docs/a.txt", "/docs/b.md", "/docs/c", "/docs/missing"};
        return m_random.pick(files);
    }

    void theyWrite(const Path& file, bool asNewFile)
    {
        scheduler.advance(1ms); // no file system tells two writes of one instant apart
        const int version = -++m_version;
        tell("they write " + std::to_string(version) + " to " + file.native() + (asNewFile ? " (new)" : ""));
        m_seenByOthers += disk.bytes(file).value_or("");
        if (asNewFile)
            disk.erase(file);
        const std::string size(m_random.oneIn(12) ? 600 * 1024 : static_cast<size_t>(m_random.below(3)), 'x');
        disk.putFile(file, "<" + std::to_string(version) + "> " + size);
        m_sentences.insert(version);
        m_untouched[file] = {version, disk.infoOf(file).inode};
        m_versionsOfNotes += file.parent_path() == notes;
    }

    /// A file with nothing but a version that nobody edited is still the file that was written.
    void expectUneditedFilesAsTheyWere()
    {
        for (const int sentence : sentencesIn(shown()))
            if (app->isDirty.get())
                m_edited.insert(sentence);
        for (const auto& [file, written] : m_untouched) {
            const auto bytes = disk.bytes(file);
            if (bytes && sentencesIn(*bytes) == std::set{written.version}
                && !m_edited.contains(written.version)) {
                ASSERT_EQ(disk.infoOf(file).inode, written.inode) << file << story();
            }
        }
    }

    // The user.

    void waitAWhile()
    {
        scheduler.advance(std::chrono::milliseconds(m_random.below(6000)));
        if (m_random.oneIn(2))
            scheduler.settle();
    }

    void switchTab()
    {
        tell("select");
        select(static_cast<size_t>(m_random.below(static_cast<int64_t>(app->tabs->size()))));
    }

    void openSomething()
    {
        tell("open");
        static constexpr std::array files = {"/docs/a.txt", "/docs/b.md", "/docs/c", "/docs/missing"};
        const auto& all = *app->store.notes;
        if (m_random.oneIn(3))
            app->newNote();
        else if (m_random.oneIn(2) && !all.empty())
            app->openNote(m_random.pick(all).id);
        else
            open(m_random.pick(files));
    }

    void closeSomeTab()
    {
        tell("close");
        close(static_cast<size_t>(m_random.below(static_cast<int64_t>(app->tabs->size()))));
    }

    void leaveTheProgram()
    {
        tell("resign");
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
        const auto operation = m_random.pick(operations);
        const char* place = m_random.pick(places);
        tell("break " + std::to_string(static_cast<int>(operation)) + " " + place);
        if (m_random.oneIn(8))
            disk.setCapacity(m_random.below(2000));
        else if (m_random.oneIn(3))
            disk.failCall(1 + m_random.below(20), EIO);
        else
            disk.failAlways(operation, m_random.oneIn(2) ? EIO : ENOSPC, place);
    }

    void healTheDisk()
    {
        tell("heal");
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
            tell("clock");
            scheduler.setWall(scheduler.wallNow() + std::chrono::hours(m_random.below(48) - 24));
            break;
        case 4:
            tell("restart");
            disk.heal(); // with nowhere to put it, no program could keep the text
            restart();
            break;
        case 5:
            if (const auto& all = *app->store.notes; !all.empty()) {
                m_edited.merge(sentencesIn(disk.bytes(all.front().url).value_or(""))); // two files have it
                app->store.duplicateNote(all.front());
            }
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
        const Note deleted = m_random.pick(all);
        tell("delete " + deleted.url.filename().native());
        if (app->activeNoteID() == deleted.id)
            forget(shown());
        app->deleteNote(deleted);
    }

    /// The user sees which sentences an edit takes away and which it brings back.
    void edit(const std::string& what, const std::function<void()>& change)
    {
        if (!view.isEditable() || app->isLoading.get())
            return;
        tell(what);
        const auto before = sentencesIn(shown());
        change();
        const auto after = sentencesIn(shown());
        for (const int n : before)
            m_sentences.erase(n);
        m_sentences.insert(after.begin(), after.end());
    }

    struct Written {
        int version = 0;
        uint64_t inode = 0;
    };

    Random& m_random;
    const Company m_company;
    std::string m_history;
    std::set<int> m_sentences; ///< typed or written by others, and not deleted by the user
    int m_next = 1;
    int m_version = 0;
    size_t m_versionsOfNotes = 0;
    std::string m_seenByOthers;
    std::map<Path, Written> m_untouched; ///< by others since
    std::set<int> m_edited; ///< versions that were in a document with unsaved words
    std::set<std::string> m_conflictCopies;
};

class RandomUser : public testing::TestWithParam<Company> {};

TEST_P(RandomUser, LosesNoSentence)
{
    Random random;
    for (int world = 0; world < worlds; ++world) {
        User user(random, GetParam());
        for (int i = 0; i < steps; ++i) {
            user.step();
            user.app->checkInvariants();
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

INSTANTIATE_TEST_SUITE_P(Alone, RandomUser, testing::Values(Company::none));
INSTANTIATE_TEST_SUITE_P(WithOthers, RandomUser, testing::Values(Company::others));

} // namespace
} // namespace quillmark::test
