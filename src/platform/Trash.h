#pragma once

#include "base/Result.h"

#include <filesystem>
#include <functional>

namespace quillmark {

/// The desktop's wastebasket. Main thread; the work is done on a background thread.
class Trash {
public:
    virtual ~Trash() = default;

    using Done = std::function<void(const Status& recycled)>;
    /// Takes the file out of the wastebasket, whose path there it is told, or hears why there is none. After
    /// a failure of its own the wastebasket keeps the file.
    using Place = std::function<Status(const Result<std::filesystem::path>& trashed)>;

    /// Asks for the file to be moved to the wastebasket. Returns at once; `done`, when there is one, is
    /// called on the main thread. A failure, which is also logged, leaves the file where it is.
    virtual void recycle(const std::filesystem::path& file, Done done) = 0;
    void recycle(const std::filesystem::path& file) { recycle(file, nullptr); }

    /// Looks for the file that was recycled from the path `original`, the last one if there were several, and
    /// calls `place` on the main thread. Returns at once. ENOENT when the wastebasket has no such file.
    virtual void restore(const std::filesystem::path& original, Place place) = 0;
};

} // namespace quillmark
