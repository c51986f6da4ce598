#include "io/Bookmark.h"

#include <cerrno>
#include <charconv>
#include <optional>

namespace quillmark {
namespace {

constexpr std::string_view signature = "quillmark-bookmark-1";

/// Written as: signature, space, inode, space, birth time in nanoseconds, line feed, path to the end.
struct Bookmark {
    uint64_t inode = 0;
    int64_t born = 0;
    std::string path;

    bool isOf(const FileInfo& info) const
    {
        return info.inode == inode && info.born.time_since_epoch().count() == born;
    }
};

template <class Number> bool takeNumber(std::string_view& text, char before, Number& number)
{
    if (!text.starts_with(before))
        return false;
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data() + 1, end, number);
    text = {rest, end};
    return failure == std::errc();
}

std::optional<Bookmark> parse(std::string_view text)
{
    Bookmark bookmark;
    if (!text.starts_with(signature))
        return std::nullopt;
    text.remove_prefix(signature.size());
    if (!takeNumber(text, ' ', bookmark.inode) || !takeNumber(text, ' ', bookmark.born))
        return std::nullopt;
    if (!text.starts_with("\n/") || text.find('\0') != std::string_view::npos)
        return std::nullopt;
    bookmark.path = text.substr(1);
    return bookmark;
}

} // namespace

Result<std::string> makeBookmark(FileSystem& disk, const Path& path)
{
    const auto info = disk.stat(path);
    if (!info)
        return std::unexpected(info.error());
    return std::string(signature) + " " + std::to_string(info->inode) + " "
        + std::to_string(info->born.time_since_epoch().count()) + "\n" + path.native();
}

Result<ResolvedBookmark> resolveBookmark(FileSystem& disk, std::string_view bytes)
{
    const auto bookmark = parse(bytes);
    if (!bookmark)
        return systemFailure(EINVAL);
    const Path path = bookmark->path;
    const auto present = disk.stat(path);
    if (present)
        return ResolvedBookmark{.path = path, .isStale = !bookmark->isOf(*present)};
    const bool isDistinct = bookmark->born != distantPast.time_since_epoch().count(); // inodes are used again
    if (present.error().code != ENOENT || !isDistinct)
        return std::unexpected(present.error());
    const auto entries = disk.list(path.parent_path());
    if (!entries)
        return std::unexpected(entries.error());
    for (const FolderEntry& entry : *entries) {
        if (bookmark->isOf(entry.info))
            return ResolvedBookmark{.path = path.parent_path() / entry.name, .isStale = true};
    }
    return systemFailure(ENOENT);
}

} // namespace quillmark
