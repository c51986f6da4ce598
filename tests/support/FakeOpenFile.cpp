#include "support/FakeFileSystemParts.h"

#include <algorithm>
#include <cerrno>

namespace quillmark::test {

FakeFileSystem::OpenFile::OpenFile(FakeFileSystem& disk, NodePointer node, Path path, uint32_t permission)
    : m_disk(disk)
    , m_node(std::move(node))
    , m_path(std::move(path))
    , m_permission(permission)
{
}

FakeFileSystem::OpenFile::~OpenFile()
{
    const std::lock_guard lock(m_disk.m_mutex);
    if (m_node->lockHolder == this)
        m_node->lockHolder = nullptr;
}

Result<size_t> FakeFileSystem::OpenFile::read(std::span<std::byte> into)
{
    if (auto status = m_disk.begin(DiskOperation::read, m_path); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_disk.m_mutex);
    const std::string& bytes = m_node->bytes;
    const size_t wanted = std::min(into.size(), m_disk.m_largestRead.value_or(into.size()));
    const size_t count = m_offset < bytes.size() ? std::min(wanted, bytes.size() - m_offset) : 0;
    std::copy_n(
        reinterpret_cast<const std::byte*>(bytes.data()) + (count ? m_offset : 0), count, into.begin());
    m_offset += count;
    return count;
}

Result<size_t> FakeFileSystem::OpenFile::write(std::span<const std::byte> bytes)
{
    if (auto status = m_disk.begin(DiskOperation::write, m_path); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_disk.m_mutex);
    if (m_permission != mayWrite)
        return systemFailure(EBADF);
    size_t count = std::min(bytes.size(), m_disk.m_largestWrite.value_or(bytes.size()));
    std::string& text = m_node->bytes;
    if (m_disk.m_capacity) {
        const int64_t space = std::max<int64_t>(0, *m_disk.m_capacity - *m_disk.m_used);
        const size_t reusable = m_offset < text.size() ? text.size() - m_offset : 0;
        count = std::min(count, reusable + static_cast<size_t>(space));
        if (count == 0 && !bytes.empty())
            return systemFailure(ENOSPC);
    }
    const size_t before = text.size();
    text.resize(std::max(before, m_offset + count));
    std::copy_n(reinterpret_cast<const char*>(bytes.data()), count,
        text.begin() + static_cast<std::ptrdiff_t>(m_offset));
    *m_disk.m_used += static_cast<int64_t>(text.size() - before);
    m_offset += count;
    m_node->info.modified = m_disk.m_clock.wallNow();
    return count;
}

Result<FileInfo> FakeFileSystem::OpenFile::info()
{
    if (auto status = m_disk.begin(DiskOperation::fileInfo, m_path); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_disk.m_mutex);
    return m_node->seen();
}

Status FakeFileSystem::OpenFile::truncate(int64_t size)
{
    if (auto status = m_disk.begin(DiskOperation::truncate, m_path); !status)
        return status;
    const std::lock_guard lock(m_disk.m_mutex);
    std::string bytes = m_node->bytes;
    bytes.resize(static_cast<size_t>(size));
    m_node->setBytes(std::move(bytes));
    m_node->info.modified = m_disk.m_clock.wallNow();
    return {};
}

Status FakeFileSystem::OpenFile::sync()
{
    if (auto status = m_disk.begin(DiskOperation::sync, m_path); !status)
        return status;
    const std::lock_guard lock(m_disk.m_mutex);
    m_node->syncedBytes = m_node->bytes;
    return {};
}

bool FakeFileSystem::OpenFile::tryLock()
{
    if (!m_disk.begin(DiskOperation::lock, m_path))
        return false;
    const std::lock_guard lock(m_disk.m_mutex);
    if (m_node->lockHolder && m_node->lockHolder != this)
        return false;
    m_node->lockHolder = this;
    return true;
}

Status FakeFileSystem::OpenFile::copyAttributes(const Path& model)
{
    if (auto status = m_disk.begin(DiskOperation::copyAttributes, m_path); !status)
        return status;
    const std::lock_guard lock(m_disk.m_mutex);
    const auto found = m_disk.find(model);
    if (!found)
        return std::unexpected(found.error());
    m_node->info.mode = (*found)->info.mode;
    m_node->info.owner = (*found)->info.owner;
    m_node->attributes = (*found)->attributes;
    return {};
}

} // namespace quillmark::test
