#include "io/DocumentWriter.h"

#include <cassert>
#include <cerrno>

namespace quillmark {
namespace {

constexpr uint32_t newFileMode = 0666; ///< less the umask
constexpr int mostLooks = 20; ///< at a file that changes all the time

} // namespace

DocumentWriter::DocumentWriter(FileSystem& disk, RecoveryStore& recovery, Scheduler& scheduler)
    : m_disk(disk)
    , m_recovery(recovery)
    , m_scheduler(scheduler)
{
}

struct DocumentWriter::Save {
    const Path& path;
    OutsideVersion outsideVersion;
    bool hasReplacedOutsideVersion = false;
};

Result<SavedFile> DocumentWriter::write(
    const Rope& text, const Path& path, LineEnds lineEnds, OutsideVersion outsideVersion)
{
    assert(!path.empty());
    Save save{.path = path, .outsideVersion = outsideVersion};
    auto saved = write(
        contentOf(text, lineEnds), path, [&](const WrittenFile& ready) { return mayReplace(save, ready); });
    if (saved) {
        m_known.remember(path, FileStamp(saved->info, saved->hash));
        saved->hasReplacedOutsideVersion = save.hasReplacedOutsideVersion;
    }
    return saved;
}

Result<SavedFile> DocumentWriter::write(
    std::string_view bytes, const Path& path, const MayPublish& mayPublish)
{
    return write(contentOf(bytes), path, mayPublish);
}

/// The new file is ready to take the place of the old one: is that still the one we know? Keeping a version
/// takes time, in which the next one may have come.
Status DocumentWriter::mayReplace(Save& save, const WrittenFile& ready)
{
    bool isSettled = false;
    for (int look = 0; !isSettled && look < mostLooks; ++look) {
        const auto settled = keepUnseenVersion(save, ready);
        if (!settled)
            return std::unexpected(settled.error());
        isSettled = *settled;
    }
    if (!isSettled)
        return systemFailure(EBUSY);
    assert(ready.bytes >= 0);
    m_known.expect(save.path, FileStamp(ready.info, ready.hash));
    return {};
}

/// True when the file in its place may be replaced as it is.
Result<bool> DocumentWriter::keepUnseenVersion(Save& save, const WrittenFile& ready)
{
    const auto present = m_disk.stat(save.path);
    if (!present && present.error().code != ENOENT) // nobody knows what would be replaced
        return std::unexpected(present.error());
    const auto state = present ? m_known.stateOf(m_disk, save.path, *present) : KnownFiles::State::asKnown;
    if (state != KnownFiles::State::changed && state != KnownFiles::State::undecided)
        return true;
    const auto hash = hashOf(contentOfFile(m_disk, save.path));
    if (!hash)
        return std::unexpected(hash.error());
    if (*hash == ready.hash)
        return true;
    if (save.outsideVersion == OutsideVersion::refuse)
        return std::unexpected(Error{.code = changedOutside, .message = "Файл изменён снаружи"});
    if (auto kept = m_recovery.keepCopy(save.path); !kept)
        return std::unexpected(kept.error());
    save.hasReplacedOutsideVersion = true;
    m_known.remember(save.path, FileStamp(*present, *hash)); // nor is it kept again when the next step fails
    return false;
}

Result<SavedFile> DocumentWriter::write(
    const FileContent& content, const Path& path, const MayPublish& mayPublish)
{
    const auto target = m_disk.resolveLinks(path);
    if (!target)
        return std::unexpected(target.error());
    const auto present = m_disk.stat(*target);
    if (!present && present.error().code != ENOENT)
        return std::unexpected(present.error());
    tidy(target->parent_path());
    if (present && present->kind != FileInfo::Kind::regular)
        return systemFailure(present->kind == FileInfo::Kind::folder ? EISDIR : EINVAL);
    if (present && !present->isWritable)
        return systemFailure(EACCES);
    const auto written = present ? replaceFile(m_disk, *target, content, mayPublish)
                                 : createFile(m_disk, *target, newFileMode, content, mayPublish);
    if (!written && written.error().code == refusedByFolder)
        return overwrite(content, *target, mayPublish);
    if (!written)
        return std::unexpected(written.error());
    return SavedFile{*written};
}

Result<SavedFile> DocumentWriter::overwrite(
    const FileContent& content, const Path& target, const MayPublish& mayPublish)
{
    if (mayPublish) {
        const auto hash = hashOf(content);
        if (!hash)
            return std::unexpected(hash.error());
        if (auto status = mayPublish({.info = {}, .bytes = 0, .hash = *hash}); !status)
            return std::unexpected(status.error());
    }
    const auto kept = m_recovery.keepCopy(target);
    if (!kept)
        return std::unexpected(kept.error());
    const auto written = overwriteFile(m_disk, target, content);
    if (!written) {
        static_cast<void>(overwriteFile(m_disk, target, contentOfFile(m_disk, *kept)));
        return std::unexpected(written.error());
    }
    static_cast<void>(m_disk.remove(*kept));
    return SavedFile{*written};
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
