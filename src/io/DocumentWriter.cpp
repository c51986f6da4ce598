#include "io/DocumentWriter.h"

#include <cerrno>

namespace quillmark {
namespace {

constexpr uint32_t newFileMode = 0666; ///< less the umask

} // namespace

DocumentWriter::DocumentWriter(FileSystem& disk, RecoveryStore& recovery, Scheduler& scheduler)
    : m_disk(disk)
    , m_recovery(recovery)
    , m_scheduler(scheduler)
{
}

Result<WrittenFile> DocumentWriter::write(const Rope& text, const Path& path, LineEnds lineEnds)
{
    return write(contentOf(text, lineEnds), path);
}

Result<WrittenFile> DocumentWriter::write(std::string_view bytes, const Path& path)
{
    return write(contentOf(bytes), path);
}

Result<WrittenFile> DocumentWriter::write(const FileContent& content, const Path& path)
{
    const auto target = m_disk.resolveLinks(path);
    if (!target)
        return std::unexpected(target.error());
    const auto present = m_disk.stat(*target);
    if (!present && present.error().code != ENOENT)
        return std::unexpected(present.error());
    tidy(target->parent_path());
    if (!present)
        return createFile(m_disk, *target, newFileMode, content);
    if (present->kind != FileInfo::Kind::regular)
        return systemFailure(present->kind == FileInfo::Kind::folder ? EISDIR : EINVAL);
    if (!present->isWritable)
        return systemFailure(EACCES);
    auto written = replaceFile(m_disk, *target, content);
    if (!written && (written.error().code == EACCES || written.error().code == EPERM))
        return overwrite(content, *target);
    return written;
}

Result<WrittenFile> DocumentWriter::overwrite(const FileContent& content, const Path& target)
{
    const auto kept = m_recovery.keepCopy(target);
    if (!kept)
        return std::unexpected(kept.error());
    auto written = overwriteFile(m_disk, target, content);
    if (written)
        static_cast<void>(m_disk.remove(*kept));
    else
        static_cast<void>(overwriteFile(m_disk, target, contentOfFile(m_disk, *kept)));
    return written;
}

void DocumentWriter::tidy(const Path& folder)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_tidied.insert(folder).second)
            return;
    }
    m_scheduler.runInBackground(
        Priority::utility, [&disk = m_disk, folder] { removeStaleTemporaries(disk, folder); });
}

} // namespace quillmark
