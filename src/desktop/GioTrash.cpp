#include "desktop/GioTrash.h"

#include "desktop/Owned.h"
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

/// Writes the bytes of a file that has no name any more under `path`, unless something is there.
std::string restore(int bytes, const struct stat& info, const std::filesystem::path& path)
{
    const Descriptor target(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, info.st_mode & 07777));
    const bool restored = target.isOpen() && copyAll(bytes, target.number()) && fsync(target.number()) == 0;
    return restored ? "the wastebasket destroyed the file; it was written anew"
                    : std::string("the wastebasket destroyed the file, and writing it anew failed: ")
            + std::strerror(errno);
}

} // namespace

std::string moveToTrash(const std::filesystem::path& path)
{
    // Held open, the bytes stay readable whatever the wastebasket does; a link is moved itself, not its
    // target.
    const Descriptor kept(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));

    const Owned<GFile> file(g_file_new_for_path(path.c_str()));
    GError* error = nullptr;
    if (!g_file_trash(file.get(), nullptr, &error))
        return takeMessage(error);

    struct stat left{};
    struct stat moved{};
    const bool known = kept.isOpen() && fstat(kept.number(), &moved) == 0;
    if (known && moved.st_nlink == 0 && S_ISREG(moved.st_mode))
        return restore(kept.number(), moved, path);
    if (known && lstat(path.c_str(), &left) == 0 && left.st_ino == moved.st_ino
        && left.st_dev == moved.st_dev)
        return "the wastebasket reported success, but the file is still there";
    return {};
}

GioTrash::GioTrash(Scheduler& scheduler, Log& log)
    : m_scheduler(scheduler)
    , m_log(log)
{
}

void GioTrash::recycle(const std::filesystem::path& file)
{
    m_scheduler.runInBackground(Priority::userInitiated, [&log = m_log, file] {
        if (const std::string failure = moveToTrash(file); !failure.empty())
            log.line("Quillmark: moving to the Trash failed: " + failure);
    });
}

} // namespace quillmark
