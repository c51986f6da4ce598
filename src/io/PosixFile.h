// An open file of the real disk, and what the kernel's record of a file means to us.
#pragma once

#include "io/Descriptor.h"
#include "platform/FileSystem.h"

#include <cassert>
#include <cerrno>

struct statx;

namespace quillmark {

/// Repeats a system call that a signal interrupts.
template <class Call> auto retried(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Asks the kernel; `folder` and `flags` as in statx(2). Does not say whether the file is writable.
Result<FileInfo> readInfo(int folder, const char* name, int flags);
/// By the permission bits alone, as if root had no privileges. (A read-only file is read-only for root, too.)
bool permitsWriting(const FileInfo& info, uint32_t group);

class PosixFile : public File {
public:
    explicit PosixFile(Descriptor descriptor)
        : m_descriptor(std::move(descriptor))
    {
        assert(m_descriptor.isOpen());
    }

    Result<size_t> read(std::span<std::byte> into) override;
    Result<size_t> write(std::span<const std::byte> bytes) override;
    Result<FileInfo> info() override;
    Status truncate(int64_t size) override;
    Status sync() override;
    bool tryLock() override;
    Status copyAttributes(const Path& model) override;

private:
    Descriptor m_descriptor;
};

} // namespace quillmark
