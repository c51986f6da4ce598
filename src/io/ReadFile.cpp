#include "io/ReadFile.h"

#include "io/TextDecoder.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>

namespace quillmark {
namespace {

constexpr size_t pieceSize = 256 * 1024;
constexpr int64_t mostGrowth = 64 * 1024 * 1024; ///< while it is read, beyond twice its size

/// A file that is read from its beginning on.
class Source {
public:
    static Result<Source> open(FileSystem& disk, const Path& path)
    {
        auto file = disk.openForReading(path);
        if (!file)
            return std::unexpected(file.error());
        const auto info = (*file)->info();
        if (!info)
            return std::unexpected(info.error());
        return Source(std::move(*file), *info);
    }

    const FileInfo& info() const { return m_info; }

    /// Reads at most `size` bytes; 0 at the end.
    Result<size_t> read(char* into, size_t size, const CancelToken& token)
    {
        if (token.isCancelled())
            return systemFailure(ECANCELED);
        const auto count = m_file->read(std::as_writable_bytes(std::span(into, size)));
        if (count && *count > 0 && m_used > 2 * m_info.size + mostGrowth)
            return systemFailure(EFBIG); // some files of the kernel have no end
        if (count)
            m_used += static_cast<int64_t>(*count);
        return count;
    }

private:
    Source(std::unique_ptr<File> file, const FileInfo& info)
        : m_file(std::move(file))
        , m_info(info)
    {
    }

    std::unique_ptr<File> m_file;
    FileInfo m_info;
    int64_t m_used = 0; ///< bytes that were read
};

Result<std::string> readBytes(Source& source, int64_t limit, const CancelToken& token)
{
    // Room for the size that it claims, whose pages cost nothing before they are read into, and for the one
    // byte that tells whether it has grown.
    assert(limit >= 0);
    const auto most = static_cast<size_t>(limit);
    const size_t expected = std::min(most, static_cast<size_t>(source.info().size) + 1);
    std::string bytes;
    bytes.resize_and_overwrite(expected, [](char*, size_t size) { return size; });
    size_t used = 0;
    while (used < most) {
        const size_t room = expected > used ? expected - used : pieceSize;
        const size_t wanted = std::min({pieceSize, most - used, room});
        if (bytes.size() < used + wanted)
            bytes.resize(used + wanted);
        const auto count = source.read(bytes.data() + used, wanted, token);
        if (!count)
            return std::unexpected(count.error());
        if (*count == 0)
            break;
        used += *count;
    }
    assert(used <= bytes.size() && used <= most);
    bytes.resize(used);
    return bytes;
}

enum class Outcome { decoded, otherEncoding };

/// Reads the source to its end, in the encoding that the decoder is trying.
Result<Outcome> decodeInPieces(Source& source, TextDecoder& decoder, const CancelToken& token)
{
    std::string buffer(TextDecoder::mostLeft + pieceSize, '\0');
    size_t held = 0;
    for (;;) {
        assert(held < buffer.size()); // else nothing could be read, which looks like the end
        const auto count = source.read(buffer.data() + held, buffer.size() - held, token);
        if (!count)
            return std::unexpected(count.error());
        held += *count;
        const bool isEnd = *count == 0;
        const auto taken = decoder.take(
            {buffer.data(), held}, isEnd ? TextDecoder::Behind::nothing : TextDecoder::Behind::more);
        if (!taken)
            return Outcome::otherEncoding;
        if (isEnd)
            return Outcome::decoded;
        assert(*taken <= held);
        held -= *taken;
        std::memmove(buffer.data(), buffer.data() + *taken, held);
    }
}

Result<TextFile> readInPieces(
    FileSystem& disk, const Path& path, Result<Source> source, const CancelToken& token)
{
    TextDecoder decoder;
    for (;;) {
        if (!source)
            return std::unexpected(source.error());
        const auto outcome = decodeInPieces(*source, decoder, token);
        if (!outcome)
            return std::unexpected(outcome.error());
        if (*outcome == Outcome::decoded)
            return TextFile{.content = decoder.finish(), .info = source->info()};
        source = Source::open(disk, path);
    }
}

} // namespace

Result<FileBytes> readFile(FileSystem& disk, const Path& path, int64_t limit)
{
    auto source = Source::open(disk, path);
    if (!source)
        return std::unexpected(source.error());
    auto bytes = readBytes(*source, limit, {});
    if (!bytes)
        return std::unexpected(bytes.error());
    return FileBytes{.bytes = std::move(*bytes), .info = source->info()};
}

Result<size_t> readStart(File& file, std::span<char> into)
{
    size_t used = 0;
    while (used < into.size()) {
        const auto count = file.read(std::as_writable_bytes(into.subspan(used)));
        if (!count)
            return std::unexpected(count.error());
        if (*count == 0)
            break;
        used += *count;
    }
    return used;
}

Result<TextFile> readTextFile(FileSystem& disk, const Path& path, const CancelToken& token)
{
    auto source = Source::open(disk, path);
    if (source && source->info().size > largestEditableFile)
        return readInPieces(disk, path, std::move(source), token);
    if (!source)
        return std::unexpected(source.error());
    const auto bytes = readBytes(*source, std::numeric_limits<int64_t>::max(), token);
    if (!bytes)
        return std::unexpected(bytes.error());
    return TextFile{
        .content = TextFileReader::decode(*bytes), .info = source->info(), .hash = contentHash(*bytes)};
}

Result<TextFile> readTextFileInPieces(FileSystem& disk, const Path& path, const CancelToken& token)
{
    return readInPieces(disk, path, Source::open(disk, path), token);
}

} // namespace quillmark
