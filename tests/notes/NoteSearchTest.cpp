#include "NoteStoreTest.h"

namespace quillmark::test {
namespace {

struct NoteSearchTest : NoteStoreTest {
    Names shown() const
    {
        Names names;
        for (const Note* note : store->filteredNotes())
            names.push_back(note->url.stem());
        std::ranges::sort(names);
        return names;
    }
    void search(std::string_view query) { store->updateSearchQuery(query); }
    void waitForFiles()
    {
        scheduler.advance(200ms);
        scheduler.settle();
    }
    /// Too far behind for a preview.
    static std::string deep(const std::string& text) { return "note\n" + std::string(600, '.') + text; }
};

TEST_F(NoteSearchTest, TitlesAndPreviewsAtOnceFilesAMomentLater)
{
    putNote("1.txt", "Список ПОКУПОК");
    putNote("2.txt", "Дела\nпро покупки");
    putNote("3.txt", deep("Покупка"));
    putNote("4.txt", deep("\xCF\xEE\xEA\xF3\xEF\xEA\xE0")); // the same in Windows-1251
    putNote("5.txt", "покупатель без файла");
    putNote("6.txt", "other");
    putNote("7.txt", std::string(2'000'000, '.') + "покупка");
    open();
    disk.failAlways(DiskOperation::openForReading, EACCES, "5.txt");
    search("  покуп ");
    EXPECT_EQ(shown(), (Names{"1", "2", "5"}));
    EXPECT_EQ(*store->searchQuery, "  покуп ");
    scheduler.advance(199ms);
    scheduler.settle();
    EXPECT_EQ(shown().size(), 3u);
    scheduler.advance(1ms);
    scheduler.settle();
    EXPECT_EQ(shown(), (Names{"1", "2", "3", "4", "5"}));
    search("");
    EXPECT_EQ(shown().size(), 7u);
    EXPECT_TRUE(store->contentMatchIDs->empty());
}

TEST_F(NoteSearchTest, OnlyTheLastQueryReadsFilesAndShowsWhatItFound)
{
    for (int i = 0; i < 20; ++i)
        putNote(std::to_string(i) + ".txt", deep(i % 2 ? "alpha" : "beta"));
    open();
    disk.clearCalls();
    for (const char* query : {"a", "al", "alp", "alph", " \t "}) {
        search(query);
        scheduler.advance(150ms);
    }
    waitForFiles();
    EXPECT_TRUE(disk.calls().empty());
    EXPECT_EQ(shown().size(), 20u);

    search("alpha");
    scheduler.advance(200ms);
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.path.filename() == "0.txt" && call.operation == DiskOperation::read)
            search("beta"); // a key in the middle of it
    });
    scheduler.runBackground();
    disk.setHook(nullptr);
    scheduler.settle();
    EXPECT_TRUE(shown().empty()) << "nothing of the old query";
    waitForFiles();
    EXPECT_EQ(shown().size(), 10u);
}

TEST_F(NoteSearchTest, AFolderThatChangesMeanwhile)
{
    putNote("1.txt", deep("needle"));
    putNote("2.txt", deep("needle"));
    open();
    search("needle");
    scheduler.advance(200ms);
    disk.erase(note("2.txt"));
    putNote("3.txt", "needle in a title");
    watching.deliver();
    scheduler.advance(400ms);
    scheduler.settle();
    EXPECT_EQ(shown(), (Names{"1", "3"}));
    disk.putFolder("/other");
    EXPECT_TRUE(store->setNotesFolder("/other"));
    EXPECT_EQ(*store->searchQuery, "");
    EXPECT_TRUE(store->contentMatchIDs->empty());
}

} // namespace
} // namespace quillmark::test
