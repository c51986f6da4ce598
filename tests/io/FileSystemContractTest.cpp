// What the program relies on, asked of the real disk and of the double alike.
#include "io/PosixFileSystem.h"
#include "support/FakeFileSystem.h"
#include "support/ManualScheduler.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace quillmark::test {
namespace {

enum class Kind { real, inMemory };

class FileSystemContract : public testing::TestWithParam<Kind> {
protected:
    FileSystemContract() { m_inMemory.putFolder("/disk"); }

    Path at(const char* name) const { return root() / name; }
    Path root() const { return m_isReal ? m_folder.path() : Path("/disk"); }

    void write(const Path& path, std::string_view bytes)
    {
        auto file = disk.createNew(path, 0644);
        ASSERT_TRUE(file) << path;
        ASSERT_EQ((*file)->write(std::as_bytes(std::span(bytes))), bytes.size());
    }

    void setMode(const Path& path, uint32_t mode)
    {
        m_isReal ? std::filesystem::permissions(path, std::filesystem::perms(mode))
                 : m_inMemory.setMode(path, mode);
    }

    std::string read(const Path& path)
    {
        auto file = disk.openForReading(path);
        if (!file)
            return file.error().message;
        std::string bytes(100, '\0');
        bytes.resize((*file)->read(std::as_writable_bytes(std::span(bytes))).value());
        return bytes;
    }

    std::vector<std::string> names()
    {
        std::vector<std::string> result;
        const auto entries = disk.list(root()).value();
        for (const FolderEntry& entry : entries)
            result.push_back(entry.name);
        std::ranges::sort(result);
        return result;
    }

    const bool m_isReal = GetParam() == Kind::real;

private:
    TemporaryFolder m_folder;
    PosixFileSystem m_real;
    ManualScheduler m_clock;
    FakeFileSystem m_inMemory{m_clock};

protected:
    FileSystem& disk = m_isReal ? static_cast<FileSystem&>(m_real) : m_inMemory;
};

template <class T> int codeOf(const Result<T>& result)
{
    return result ? 0 : result.error().code;
}

INSTANTIATE_TEST_SUITE_P(Disks, FileSystemContract, testing::Values(Kind::real, Kind::inMemory));

TEST_P(FileSystemContract, FilesAreMadeOnceReadAndListed)
{
    write(at("b\xFFyte"), "одна");
    EXPECT_EQ(read(at("b\xFFyte")), "одна");
    EXPECT_EQ(codeOf(disk.createNew(at("b\xFFyte"), 0644)), EEXIST);
    const auto entries = disk.list(root()).value();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].name, "b\xFFyte");
    EXPECT_EQ(entries[0].info, disk.stat(at("b\xFFyte")).value());
    EXPECT_EQ(entries[0].info.size, 8);
    EXPECT_EQ(entries[0].info.kind, FileInfo::Kind::regular);
    EXPECT_NE(entries[0].info.born, distantPast);
    EXPECT_TRUE(entries[0].info.isWritable);
}

TEST_P(FileSystemContract, MissingThingsAndWrongKindsHaveTheirErrors)
{
    write(at("file"), "x");
    EXPECT_EQ(codeOf(disk.stat(at("none"))), ENOENT);
    EXPECT_EQ(codeOf(disk.stat(at("file") / "below")), ENOTDIR);
    EXPECT_EQ(codeOf(disk.openForReading(at("none"))), ENOENT);
    EXPECT_EQ(codeOf(disk.openForReading(root())), EISDIR);
    EXPECT_EQ(codeOf(disk.openForWriting(at("none"))), ENOENT);
    EXPECT_EQ(codeOf(disk.list(at("none"))), ENOENT);
    EXPECT_EQ(codeOf(disk.list(at("file"))), ENOTDIR);
    EXPECT_EQ(codeOf(disk.createNew(at("none") / "file", 0644)), ENOENT);
    EXPECT_EQ(codeOf(disk.createNew(at(std::string(256, 'x').c_str()), 0644)), ENAMETOOLONG);
    EXPECT_EQ(codeOf(disk.remove(at("none"))), ENOENT);
    EXPECT_EQ(codeOf(disk.rename(at("none"), at("other"))), ENOENT);
}

TEST_P(FileSystemContract, AnOpenFolderGivesItsFiles)
{
    write(at("file"), "words");
    ASSERT_TRUE(disk.makeFolders(at("below")));
    EXPECT_EQ(codeOf(disk.openFolder(at("none"))), ENOENT);
    EXPECT_EQ(codeOf(disk.openFolder(at("file"))), ENOTDIR);
    const auto folder = disk.openFolder(root()).value();
    EXPECT_EQ(folder->names().value().size(), 2u);
    EXPECT_EQ(folder->stat("file").value(), disk.stat(at("file")).value());
    EXPECT_EQ(codeOf(folder->stat("none")), ENOENT);
    const auto opened = folder->openForReading("file").value();
    EXPECT_EQ(opened.info, disk.stat(at("file")).value());
    std::string bytes(5, ' ');
    EXPECT_EQ(opened.file->read(std::as_writable_bytes(std::span(bytes))), 5u);
    EXPECT_EQ(bytes, "words");
    EXPECT_EQ(codeOf(folder->openForReading("below")), EISDIR);
    EXPECT_EQ(codeOf(folder->openForReading("none")), ENOENT);
}

TEST_P(FileSystemContract, RenamingReplacesOnlyWhenAsked)
{
    write(at("old"), "old");
    write(at("new"), "new");
    EXPECT_EQ(codeOf(disk.renameNoReplace(at("new"), at("old"))), EEXIST);
    EXPECT_EQ(read(at("old")), "old");
    EXPECT_TRUE(disk.rename(at("new"), at("old")));
    EXPECT_TRUE(disk.renameNoReplace(at("old"), at("third")));
    EXPECT_EQ(read(at("third")), "new");
    EXPECT_EQ(names(), std::vector<std::string>{"third"});
}

TEST_P(FileSystemContract, LocksHoldUntilTheFileIsClosed)
{
    write(at("file"), "x");
    auto first = disk.openForWriting(at("file")).value();
    auto second = disk.openForReading(at("file")).value();
    EXPECT_TRUE(first->tryLock());
    EXPECT_FALSE(second->tryLock());
    first.reset();
    EXPECT_TRUE(second->tryLock());
    EXPECT_TRUE(disk.remove(at("file")));
    EXPECT_EQ(second->info().value().links, 0u);
}

TEST_P(FileSystemContract, OpenFilesFollowTheRename)
{
    write(at("file"), "hello");
    auto file = disk.openForWriting(at("file")).value();
    ASSERT_TRUE(disk.rename(at("file"), at("renamed")));
    ASSERT_TRUE(file->write(std::as_bytes(std::span("HE", 2))));
    ASSERT_TRUE(file->truncate(4));
    ASSERT_TRUE(file->sync());
    EXPECT_EQ(read(at("renamed")), "HEll");
    EXPECT_EQ(file->info().value().inode, disk.stat(at("renamed")).value().inode);
    EXPECT_EQ(names(), std::vector<std::string>{"renamed"});
}

TEST_P(FileSystemContract, FoldersAreMadeWithThoseAbove)
{
    EXPECT_TRUE(disk.makeFolders(at("a") / "b" / "c"));
    EXPECT_TRUE(disk.makeFolders(at("a") / "b" / "c"));
    EXPECT_EQ(disk.stat(at("a") / "b" / "c").value().kind, FileInfo::Kind::folder);
    write(at("file"), "x");
    EXPECT_EQ(codeOf(disk.makeFolders(at("file"))), ENOTDIR);
    EXPECT_TRUE(disk.syncFolder(root()));
    EXPECT_EQ(codeOf(disk.syncFolder(at("none"))), ENOENT);
}

TEST_P(FileSystemContract, APrivateFolderIsNobodyElses)
{
    EXPECT_TRUE(disk.makePrivateFolder(at("own")));
    EXPECT_TRUE(disk.makePrivateFolder(at("own")));
    EXPECT_EQ(disk.stat(at("own")).value().mode, 0700u);
    EXPECT_EQ(codeOf(disk.makePrivateFolder(at("none") / "own")), ENOENT);
    write(at("file"), "x");
    EXPECT_EQ(codeOf(disk.makePrivateFolder(at("file"))), ENOTDIR);
    if (m_isReal) {
        std::filesystem::create_symlink(at("own"), at("link"));
        EXPECT_EQ(codeOf(disk.makePrivateFolder(at("link"))), ENOTDIR);
    }
    setMode(at("own"), 0777);
    EXPECT_EQ(codeOf(disk.makePrivateFolder(at("own"))), EPERM);
}

} // namespace
} // namespace quillmark::test
