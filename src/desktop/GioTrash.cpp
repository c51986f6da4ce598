#include "desktop/GioTrash.h"

#include "desktop/Owned.h"
#include "desktop/TrashedFile.h"
#include "io/Descriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

bool copyAll(int from, int to)
{
    char bytes[64 * 1024];
    off_t position = 0;
    while (true) {
        const ssize_t count = pread(from, bytes, sizeof bytes, position);
        if (count == 0)
            return true;
        if (count < 0)
            return false;
        for (ssize_t done = 0; done < count;) {
            const ssize_t written = write(to, bytes + done, static_cast<size_t>(count - done));
            if (written <= 0)
                return false;
            done += written;
        }
        position += count;
    }
}

std::unexpected<Error> failure(std::string what)
{
    return std::unexpected(Error{.code = EIO, .message = std::move(what)});
}

/// Writes the bytes of a file that has no name any more under `path`, unless something is there.
Status writeAnew(int bytes, const struct stat& info, const Path& path)
{
    const Descriptor target(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, info.st_mode & 07777));
    if (target.isOpen() && copyAll(bytes, target.number()) && fsync(target.number()) == 0)
        return failure("the wastebasket destroyed the file; it was written anew");
    return failure("the wastebasket destroyed the file, and writing it anew failed: "
        + std::string(std::strerror(errno)));
}

} // namespace

Status moveToTrash(const Path& path)
{
    // Held open, the bytes stay readable whatever the wastebasket does; a link is moved itself, not its
    // target.
    const Descriptor kept(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));

    const Owned<GFile> file(g_file_new_for_path(path.c_str()));
    GError* error = nullptr;
    if (!g_file_trash(file.get(), nullptr, &error))
        return failure(takeMessage(error));

    struct stat left{};
    struct stat moved{};
    const bool known = kept.isOpen() && fstat(kept.number(), &moved) == 0;
    if (known && moved.st_nlink == 0 && S_ISREG(moved.st_mode))
        return writeAnew(kept.number(), moved, path);
    if (known && lstat(path.c_str(), &left) == 0 && left.st_ino == moved.st_ino
        && left.st_dev == moved.st_dev)
        return failure("the wastebasket reported success, but the file is still there");
    return {};
}

GioTrash::GioTrash(Scheduler& scheduler, FileSystem& disk, Log& log)
    : m_scheduler(scheduler)
    , m_disk(disk)
    , m_log(log)
{
}

void GioTrash::recycle(const Path& file, Done done)
{
    m_scheduler.runInBackground(
        Priority::userInitiated, [&scheduler = m_scheduler, &log = m_log, file, done = std::move(done)] {
            const Status recycled = moveToTrash(file);
            if (!recycled)
                log.line("Quillmark: moving to the Trash failed: " + recycled.error().message);
            if (done)
                scheduler.post([recycled, done] { done(recycled); });
        });
}

void GioTrash::restore(const Path& original, Place place)
{
    m_scheduler.runInBackground(Priority::userInitiated,
        [&scheduler = m_scheduler, &disk = m_disk, original, place = std::move(place)] {
            const auto found = findTrashed(disk, original);
            scheduler.post([&scheduler, &disk, found, place] {
                const Status placed
                    = place(found ? Result<Path>(found->file) : std::unexpected(found.error()));
                if (!found || !placed)
                    return;
                scheduler.runInBackground(Priority::utility,
                    [&disk, record = found->record] { static_cast<void>(disk.remove(record)); });
            });
        });
}

} // namespace quillmark
