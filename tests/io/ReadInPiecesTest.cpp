// Large files, decoded while they are read: the result is that of all bytes at once, however they come.
#include "io/ReadFile.h"
#include "support/FakeFileSystem.h"
#include "support/ManualScheduler.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>

namespace quillmark::test {
namespace {

using namespace std::string_literals;

class ReadInPieces : public testing::Test {
protected:
    Result<TextFile> read(const CancelToken& token = {}) { return readTextFileInPieces(disk, "/a", token); }

    template <class F> void beforeRead(int number, F f)
    {
        reads = 0;
        disk.setHook([this, number, f](const FakeFileSystem::Call& call) {
            if (call.operation == DiskOperation::read && ++reads == number)
                f();
        });
    }

    ManualScheduler clock;
    FakeFileSystem disk{clock};
    Random random;
    int reads = 0;
};

std::string repeated(Random& random, const std::vector<std::string>& parts, int64_t size)
{
    std::string bytes;
    while (static_cast<int64_t>(bytes.size()) < size)
        bytes += random.pick(parts);
    return bytes;
}

/// A file of some encoding, with line breaks and long characters wherever they fall, sometimes damaged.
std::string randomFile(Random& random)
{
    static const std::vector<std::string> utf8 = {"word ", "Привет", "\r\n", "\r", "\n", "😀", "中", "é"};
    static const std::vector<std::string> eightBit = {"word ", "\xCF\xF0\xE8", "\r\n", "\r", "\xE9"};
    static const std::vector<std::string> utf16
        = {"a\0"s, "\r\0"s, "\n\0"s, "\r\0\n\0"s, "\x1F\x04", "\x3D\xD8\x00\xDE"s};
    static const std::vector<std::string> halves
        = {"\xF0\x9F", "\x98\x81", "\xE4", "\x80", "\r", "\xF0", "x"};
    const int64_t size = random.upTo(9000);
    std::string bytes;
    switch (random.below(5)) {
    case 0:
        bytes = repeated(random, eightBit, size);
        break;
    case 1:
        bytes = "\xFF\xFE" + repeated(random, utf16, size);
        break;
    case 2:
        bytes = repeated(random, halves, size);
        break;
    case 3:
        bytes = "\xEF\xBB\xBF" + repeated(random, utf8, size);
        break;
    default:
        bytes = repeated(random, utf8, size);
    }
    if (random.oneIn(2) && !bytes.empty())
        bytes[static_cast<size_t>(random.below(std::ssize(bytes)))] = static_cast<char>(random.below(256));
    if (random.oneIn(6))
        bytes.resize(bytes.size() / 2 + 1);
    return bytes;
}

TEST_F(ReadInPieces, GivesWhatAllBytesAtOnceGive)
{
    std::set<std::string> encodings;
    for (int round = 0; round < 600; ++round) {
        const std::string bytes = randomFile(random);
        disk.putFile("/a", bytes);
        disk.setLargestRead(static_cast<size_t>(1 + random.below(random.oneIn(2) ? 40 : 3000)));
        const auto file = read();
        ASSERT_TRUE(file);
        ASSERT_TRUE(file->content == TextFileReader::decode(bytes)) << testing::PrintToString(bytes);
        ASSERT_EQ(file->content.text.checkInvariants(), "");
        encodings.emplace(nameOf(file->content.encodingName));
    }
    EXPECT_EQ(encodings, (std::set<std::string>{"CP1251", "CP1252", "UTF-16", "UTF-8", "UTF-8?"}));
}

TEST_F(ReadInPieces, TakesWhatItGetsOfAFileThatChanges)
{
    const std::string first = std::string(600'000, 'a') + "я";
    disk.putFile("/a", first);
    beforeRead(2, [&] { disk.putFile("/a", first + std::string(900'000, 'b') + "\xFF"); });
    const auto grown = read();
    ASSERT_TRUE(grown);
    EXPECT_EQ(grown->content, TextFileReader::decode(first + std::string(900'000, 'b') + "\xFF"));
    EXPECT_EQ(grown->content.encodingName, TextEncoding::cp1251);

    disk.putFile("/a", first);
    beforeRead(2, [&] { disk.putFile("/a", "shrunk"); });
    const auto shrunk = read();
    ASSERT_TRUE(shrunk);
    EXPECT_GE(shrunk->content.text.length(), 256 * 1024);
    EXPECT_EQ(shrunk->content.text.at(shrunk->content.text.length() - 1), u'a');

    // It was not UTF-8, and has become another file when it is read again.
    disk.putFile("/a", "\xFF");
    beforeRead(2, [&] { disk.putFile("/a", ""); });
    EXPECT_EQ(read()->content.text, Rope());

    disk.putFile("/a", first + "\xFF");
    beforeRead(6, [&] { disk.failOnce(DiskOperation::read, EIO); });
    EXPECT_EQ(read().error().code, EIO);
    disk.putFile("/a", first + "\xFF");
    beforeRead(3, [&] { disk.erase("/a"); });
    EXPECT_EQ(read().error().code, ENOENT) << "gone when it had to be read again";
}

TEST_F(ReadInPieces, StopsSoonAfterItIsCancelled)
{
    disk.putFile("/a", std::string(2'000'000, 'a'));
    const auto flag = std::make_shared<std::atomic<bool>>(false);
    beforeRead(3, [&] { *flag = true; });
    EXPECT_EQ(read(CancelToken(flag)).error().code, ECANCELED);
    EXPECT_EQ(reads, 3);
    EXPECT_EQ(readTextFile(disk, "/a", CancelToken(flag)).error().code, ECANCELED);
}

} // namespace
} // namespace quillmark::test
