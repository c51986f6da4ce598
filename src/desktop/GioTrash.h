// The desktop's wastebasket, by way of GIO, without trusting it blindly.
#pragma once

#include "base/Scheduler.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Trash.h"

namespace quillmark {

class GioTrash final : public Trash {
public:
    /// They outlive it and the scheduler's background work.
    GioTrash(Scheduler& scheduler, FileSystem& disk, Log& log);

    using Trash::recycle;
    void recycle(const Path& file, Done done) override;
    void restore(const Path& original, Place place) override;

private:
    Scheduler& m_scheduler;
    FileSystem& m_disk;
    Log& m_log;
};

/// Moves a file to the wastebasket before it returns. A file that the wastebasket destroyed instead of
/// keeping it is written anew under its name, which counts as a failure. Any thread.
Status moveToTrash(const Path& file);

} // namespace quillmark
