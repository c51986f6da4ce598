#include "io/FileVerdict.h"

#include <cerrno>

namespace quillmark {
namespace {

FileVerdict verdictOf(KnownFiles::State state)
{
    if (state == KnownFiles::State::undecided) // its bytes cannot be read
        return FileVerdict::unreachable;
    return state == KnownFiles::State::asKnown ? FileVerdict::ours : FileVerdict::changed;
}

} // namespace

bool saysMissing(const Error& error)
{
    return error.code == ENOENT || error.code == ENOTDIR;
}

bool isMissing(FileSystem& disk, const Path& path, const Error& error, uint64_t device)
{
    if (!saysMissing(error))
        return false;
    const auto folder = disk.stat(path.parent_path());
    return folder && folder->kind == FileInfo::Kind::folder && (device == 0 || folder->device == device);
}

FileLook::FileLook(FileSystem& disk, KnownFiles& known, Scheduler& scheduler)
    : m_disk(disk)
    , m_known(known)
    , m_scheduler(scheduler)
{
}

Task FileLook::look(const Path& path, std::function<void(FileVerdict)> then)
{
    const auto info = m_disk.stat(path);
    if (!info) {
        const auto stamp = m_known.stampOf(path);
        const bool wasMissing = stamp && stamp->isMissing();
        if (!isMissing(m_disk, path, info.error(), stamp && !wasMissing ? stamp->device : 0))
            then(FileVerdict::unreachable);
        else
            then(wasMissing ? FileVerdict::ours : FileVerdict::missing);
        return {};
    }
    const auto state = m_known.stateOf(m_disk, path, *info, KnownFiles::comparedAtOnce);
    if (state != KnownFiles::State::undecided) {
        then(verdictOf(state));
        return {};
    }
    return m_scheduler.background(
        Priority::userInitiated,
        [&known = m_known, &disk = m_disk, path, info = *info](
            const CancelToken&) { return verdictOf(known.stateOf(disk, path, info)); },
        std::move(then));
}

} // namespace quillmark
