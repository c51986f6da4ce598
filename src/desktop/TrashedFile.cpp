#include "desktop/TrashedFile.h"

#include "io/Escape.h"
#include "io/ReadFile.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr std::string_view recordSuffix = ".trashinfo";
constexpr int64_t largestRecord = 64 * 1024; ///< bytes

struct Wastebasket {
    Path folder;
    Path top; ///< what the paths in its records are relative to
};

/// The uppermost folder of the disk that a folder is on.
Path topOfDisk(FileSystem& disk, Path folder)
{
    const auto info = disk.stat(folder);
    while (info && folder.has_relative_path()) {
        const auto above = disk.stat(folder.parent_path());
        if (!above || above->device != info->device)
            break;
        folder = folder.parent_path();
    }
    return folder;
}

/// On a disk that others share, somebody else may have made a folder of this name.
bool isOurs(const Path& folder)
{
    struct ::stat info;
    return lstat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == getuid();
}

std::vector<Wastebasket> wastebaskets(FileSystem& disk, const Path& folder)
{
    std::vector<Wastebasket> all{{Path(g_get_user_data_dir()) / "Trash", "/"}};
    const Path top = topOfDisk(disk, folder);
    const std::string user = std::to_string(getuid());
    for (const Path& shared : {top / ".Trash" / user, top / (".Trash-" + user)}) {
        if (isOurs(shared))
            all.push_back({shared, top});
    }
    return all;
}

/// The path that a record names, as it stands there.
std::optional<Path> pathIn(std::string_view record)
{
    constexpr std::string_view key = "\nPath=";
    const size_t start = record.find(key);
    if (start == record.npos)
        return std::nullopt;
    record.remove_prefix(start + key.size());
    return Path(percentDecoded(record.substr(0, record.find('\n'))));
}

} // namespace

Result<TrashedFile> findTrashed(FileSystem& disk, const Path& original)
{
    std::error_code unresolved; // then it is the path as it is
    const Path folder = std::filesystem::weakly_canonical(original.parent_path(), unresolved);
    const Path resolved = unresolved ? original : folder / original.filename();
    std::optional<TrashedFile> newest;
    WallTime deleted = distantPast;
    for (const auto& [basket, top] : wastebaskets(disk, resolved.parent_path())) {
        const auto records = disk.list(basket / "info");
        for (const FolderEntry& entry : records ? *records : std::vector<FolderEntry>()) {
            if (!entry.name.ends_with(recordSuffix) || (newest && entry.info.modified < deleted))
                continue;
            const Path record = basket / "info" / entry.name;
            const auto text = readFile(disk, record, largestRecord);
            const auto path = text ? pathIn(text->bytes) : std::nullopt;
            if (!path || (top / *path != original && top / *path != resolved))
                continue;
            const Path file
                = basket / "files" / entry.name.substr(0, entry.name.size() - recordSuffix.size());
            if (!disk.exists(file))
                continue;
            newest = {.file = file, .record = record};
            deleted = entry.info.modified;
        }
    }
    if (!newest)
        return systemFailure(ENOENT);
    return *newest;
}

} // namespace quillmark
