#include "support/FakeFileSystemTree.h"

#include <algorithm>
#include <cerrno>

namespace quillmark::test {

class FakeFileSystem::OpenFile : public File {
public:
    OpenFile(FakeFileSystem& disk, NodePointer node, Path path, uint32_t permission)
        : m_disk(disk)
        , m_node(std::move(node))
        , m_path(std::move(path)) // as it was opened
        , m_permission(permission)
    {
    }

    ~OpenFile() override
    {
        const Lock lock(m_disk.m_mutex);
        if (m_node->lockHolder == this)
            m_node->lockHolder = nullptr;
    }

    Result<size_t> read(std::span<std::byte> into) override
    {
        const auto turn = m_disk.begin(DiskOperation::read, m_path);
        if (!turn)
            return std::unexpected(turn.error());
        const std::string_view left = std::string_view(m_node->bytes).substr(std::min(m_offset, size()));
        const size_t wanted = std::min(into.size(), m_disk.m_limits.largestRead.value_or(into.size()));
        const auto bytes = std::as_bytes(std::span(left.substr(0, wanted)));
        std::ranges::copy(bytes, into.begin());
        m_offset += bytes.size();
        return bytes.size();
    }

    Result<size_t> write(std::span<const std::byte> bytes) override
    {
        const auto turn = m_disk.begin(DiskOperation::write, m_path);
        if (!turn)
            return std::unexpected(turn.error());
        if (m_permission != mayWrite)
            return systemFailure(EBADF);
        size_t count = std::min(bytes.size(), m_disk.m_limits.largestWrite.value_or(bytes.size()));
        if (m_disk.m_limits.capacity) {
            const auto space = std::max<int64_t>(0, *m_disk.m_limits.capacity - *m_disk.m_used);
            const size_t reusable = size() - std::min(m_offset, size());
            count = std::min(count, reusable + static_cast<size_t>(space));
            if (count == 0 && !bytes.empty())
                return systemFailure(ENOSPC);
        }
        std::string& text = m_node->bytes;
        const size_t before = text.size();
        text.resize(std::max(before, m_offset + count));
        std::copy_n(reinterpret_cast<const char*>(bytes.data()), count, text.data() + m_offset);
        *m_disk.m_used += static_cast<int64_t>(text.size() - before);
        m_offset += count;
        m_node->info.modified = m_disk.m_clock.wallNow();
        return count;
    }

    Result<FileInfo> info() override
    {
        const auto turn = m_disk.begin(DiskOperation::fileInfo, m_path);
        if (!turn)
            return std::unexpected(turn.error());
        return m_node->seen();
    }

    Status truncate(int64_t length) override
    {
        const auto turn = m_disk.begin(DiskOperation::truncate, m_path);
        if (!turn)
            return std::unexpected(turn.error());
        std::string bytes = m_node->bytes;
        bytes.resize(static_cast<size_t>(length));
        m_node->setBytes(std::move(bytes));
        m_node->info.modified = m_disk.m_clock.wallNow();
        return {};
    }

    Status sync() override
    {
        const auto turn = m_disk.begin(DiskOperation::sync, m_path);
        if (!turn)
            return std::unexpected(turn.error());
        m_node->syncedBytes = m_node->bytes;
        return {};
    }

    bool tryLock() override
    {
        const auto turn = m_disk.begin(DiskOperation::lock, m_path);
        if (!turn || (m_node->lockHolder && m_node->lockHolder != this))
            return false;
        m_node->lockHolder = this;
        return true;
    }

    Status copyAttributes(const Path& model) override
    {
        const auto turn = m_disk.begin(DiskOperation::copyAttributes, m_path);
        if (!turn)
            return std::unexpected(turn.error());
        const auto found = m_disk.find(model);
        if (!found)
            return std::unexpected(found.error());
        m_node->info.mode = (*found)->info.mode;
        m_node->info.owner = (*found)->info.owner;
        m_node->attributes = (*found)->attributes;
        return {};
    }

private:
    size_t size() const { return m_node->bytes.size(); }

    FakeFileSystem& m_disk;
    const NodePointer m_node;
    const Path m_path;
    const uint32_t m_permission;
    size_t m_offset = 0;
};

std::unique_ptr<File> FakeFileSystem::openFile(NodePointer node, const Path& path, uint32_t permission)
{
    return std::make_unique<OpenFile>(*this, std::move(node), path, permission);
}

} // namespace quillmark::test
