#pragma once

#include "platform/Trash.h"

#include <functional>
#include <utility>
#include <vector>

namespace quillmark::test {

/// A wastebasket that only remembers what was put in. `onRecycle` may take the file away, as a real one does;
/// without it the file stays, as when a real one fails.
class RecordingTrash final : public Trash {
public:
    explicit RecordingTrash(std::function<void(const std::filesystem::path&)> onRecycle = nullptr)
        : m_onRecycle(std::move(onRecycle))
    {
    }

    void recycle(const std::filesystem::path& file) override
    {
        m_recycled.push_back(file);
        if (m_onRecycle)
            m_onRecycle(file);
    }

    const std::vector<std::filesystem::path>& recycled() const { return m_recycled; }

private:
    std::function<void(const std::filesystem::path&)> m_onRecycle;
    std::vector<std::filesystem::path> m_recycled;
};

} // namespace quillmark::test
