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

struct RealDisk {
    TemporaryFolder folder;
    PosixFileSystem disk;
    Path root() const { return folder.path(); }
};

struct DoubleDisk {
    ManualScheduler clock;
    FakeFileSystem disk{clock};
    DoubleDisk() { disk.putFolder("/disk"); }
    Path root() const { return "/disk"; }
};

template <class Kind> class FileSystemContract : public testing::Test, public Kind {
protected:
    Path at(const char* name) const { return this->root() / name; }

    void write(const Path& path, std::string_view bytes)
    {
        auto file = this->disk.createNew(path, 0644);
        ASSERT_TRUE(file) << path;
        ASSERT_EQ((*file)->write(std::as_bytes(std::span(bytes))), bytes.size());
    }

    std::string read(const Path& path)
    {
        auto file = this->disk.openForReading(path);
        if (!file)
            return file.error().message;
        std::string bytes(100, '\0');
        bytes.resize((*file)->read(std::as_writable_bytes(std::span(bytes))).value());
        return bytes;
    }

    std::vector<std::string> names()
    {
        std::vector<std::string> result;
        const auto entries = this->disk.list(this->root()).value();
        for (const FolderEntry& entry : entries)
            result.push_back(entry.name);
        std::ranges::sort(result);
        return result;
    }
};

template <class T> int codeOf(const Result<T>& result)
{
    return result ? 0 : result.error().code;
}

using Disks = testing::Types<RealDisk, DoubleDisk>;
TYPED_TEST_SUITE(FileSystemContract, Disks);

TYPED_TEST(FileSystemContract, FilesAreMadeOnceReadAndListed)
{
    this->write(this->at("b\xFFyte"), "одна");
    EXPECT_EQ(this->read(this->at("b\xFFyte")), "одна");
    EXPECT_EQ(codeOf(this->disk.createNew(this->at("b\xFFyte"), 0644)), EEXIST);
    const auto entries = this->disk.list(this->root()).value();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].name, "b\xFFyte");
    EXPECT_EQ(entries[0].info, this->disk.stat(this->at("b\xFFyte")).value());
    EXPECT_EQ(entries[0].info.size, 8);
    EXPECT_EQ(entries[0].info.kind, FileInfo::Kind::regular);
    EXPECT_NE(entries[0].info.born, distantPast);
    EXPECT_TRUE(entries[0].info.isWritable);
}

TYPED_TEST(FileSystemContract, MissingThingsAndWrongKindsHaveTheirErrors)
{
    this->write(this->at("file"), "x");
    EXPECT_EQ(codeOf(this->disk.stat(this->at("none"))), ENOENT);
    EXPECT_EQ(codeOf(this->disk.stat(this->at("file") / "below")), ENOTDIR);
    EXPECT_EQ(codeOf(this->disk.openForReading(this->at("none"))), ENOENT);
    EXPECT_EQ(codeOf(this->disk.openForReading(this->root())), EISDIR);
    EXPECT_EQ(codeOf(this->disk.openForWriting(this->at("none"))), ENOENT);
    EXPECT_EQ(codeOf(this->disk.list(this->at("none"))), ENOENT);
    EXPECT_EQ(codeOf(this->disk.list(this->at("file"))), ENOTDIR);
    EXPECT_EQ(codeOf(this->disk.createNew(this->at("none") / "file", 0644)), ENOENT);
    EXPECT_EQ(codeOf(this->disk.createNew(this->at(std::string(256, 'x').c_str()), 0644)), ENAMETOOLONG);
    EXPECT_EQ(codeOf(this->disk.remove(this->at("none"))), ENOENT);
    EXPECT_EQ(codeOf(this->disk.rename(this->at("none"), this->at("other"))), ENOENT);
}

TYPED_TEST(FileSystemContract, RenamingReplacesOnlyWhenAsked)
{
    this->write(this->at("old"), "old");
    this->write(this->at("new"), "new");
    EXPECT_EQ(codeOf(this->disk.renameNoReplace(this->at("new"), this->at("old"))), EEXIST);
    EXPECT_EQ(this->read(this->at("old")), "old");
    EXPECT_TRUE(this->disk.rename(this->at("new"), this->at("old")));
    EXPECT_TRUE(this->disk.renameNoReplace(this->at("old"), this->at("third")));
    EXPECT_EQ(this->read(this->at("third")), "new");
    EXPECT_EQ(this->names(), std::vector<std::string>{"third"});
}

TYPED_TEST(FileSystemContract, LocksHoldUntilTheFileIsClosed)
{
    this->write(this->at("file"), "x");
    auto first = this->disk.openForWriting(this->at("file")).value();
    auto second = this->disk.openForReading(this->at("file")).value();
    EXPECT_TRUE(first->tryLock());
    EXPECT_FALSE(second->tryLock());
    first.reset();
    EXPECT_TRUE(second->tryLock());
    EXPECT_TRUE(this->disk.remove(this->at("file")));
    EXPECT_EQ(second->info().value().links, 0u);
}

TYPED_TEST(FileSystemContract, OpenFilesFollowTheRename)
{
    this->write(this->at("file"), "hello");
    auto file = this->disk.openForWriting(this->at("file")).value();
    ASSERT_TRUE(this->disk.rename(this->at("file"), this->at("renamed")));
    ASSERT_TRUE(file->write(std::as_bytes(std::span("HE", 2))));
    ASSERT_TRUE(file->truncate(4));
    ASSERT_TRUE(file->sync());
    EXPECT_EQ(this->read(this->at("renamed")), "HEll");
    EXPECT_EQ(file->info().value().inode, this->disk.stat(this->at("renamed")).value().inode);
    EXPECT_EQ(this->names(), std::vector<std::string>{"renamed"});
}

TYPED_TEST(FileSystemContract, FoldersAreMadeWithThoseAbove)
{
    EXPECT_TRUE(this->disk.makeFolders(this->at("a") / "b" / "c"));
    EXPECT_TRUE(this->disk.makeFolders(this->at("a") / "b" / "c"));
    EXPECT_EQ(this->disk.stat(this->at("a") / "b" / "c").value().kind, FileInfo::Kind::folder);
    this->write(this->at("file"), "x");
    EXPECT_EQ(codeOf(this->disk.makeFolders(this->at("file"))), ENOTDIR);
    EXPECT_TRUE(this->disk.syncFolder(this->root()));
    EXPECT_EQ(codeOf(this->disk.syncFolder(this->at("none"))), ENOENT);
}

TYPED_TEST(FileSystemContract, AFileWithoutWritePermissionIsNotWritableEvenForRoot)
{
    this->write(this->at("file"), "x");
    {
        auto copy = this->disk.createNew(this->at("readonly"), 0444).value();
        EXPECT_FALSE(copy->info().value().isWritable);
    }
    EXPECT_FALSE(this->disk.stat(this->at("readonly")).value().isWritable);
    auto file = this->disk.openForWriting(this->at("file")).value();
    ASSERT_TRUE(file->copyAttributes(this->at("readonly")));
    EXPECT_EQ(this->disk.stat(this->at("file")).value().mode, 0444u);
}

} // namespace
} // namespace quillmark::test
