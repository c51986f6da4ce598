#pragma once

#include "base/Scheduler.h"
#include "platform/FileSystem.h"
#include "platform/Trash.h"

#include <cerrno>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace quillmark::test {

/// A wastebasket that remembers what was put in.
class RecordingTrash final : public Trash {
public:
    /// Takes a file away and says where it is now; the path itself when it stays, as when a real wastebasket
    /// fails.
    using Take = std::function<Path(const Path&)>;

    RecordingTrash(Scheduler& scheduler, Take take)
        : m_scheduler(scheduler)
        , m_take(std::move(take))
    {
    }

    using Trash::recycle;
    void recycle(const Path& file, Done done) override
    {
        m_recycled.push_back(file);
        const Path now = m_take(file);
        if (now != file)
            m_places[file] = now;
        const Status recycled = now != file ? Status() : systemFailure(EIO);
        if (done)
            m_scheduler.post([recycled, done = std::move(done)] { done(recycled); });
    }

    void restore(const Path& original, Place place) override
    {
        const auto found = m_places.find(original);
        const Result<Path> trashed
            = found != m_places.end() ? Result<Path>(found->second) : systemFailure(ENOENT);
        m_scheduler.post([this, original, trashed, place = std::move(place)] {
            if (place(trashed))
                m_places.erase(original);
        });
    }

    const std::vector<Path>& recycled() const { return m_recycled; }

private:
    Scheduler& m_scheduler;
    Take m_take;
    std::vector<Path> m_recycled;
    std::map<Path, Path> m_places; ///< in the wastebasket, by where the file was
};

} // namespace quillmark::test
