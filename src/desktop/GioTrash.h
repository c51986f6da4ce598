// The desktop's wastebasket, by way of GIO, without trusting it blindly.
#pragma once

#include "base/Scheduler.h"
#include "platform/Log.h"
#include "platform/Trash.h"

namespace quillmark {

class GioTrash final : public Trash {
public:
    GioTrash(Scheduler& scheduler, Log& log); ///< both outlive it and the scheduler's background work

    void recycle(const std::filesystem::path& file) override;

private:
    Scheduler& m_scheduler;
    Log& m_log;
};

/// Moves a file to the wastebasket before it returns. Empty when that went well, else what went wrong. A file
/// that the wastebasket destroyed instead of keeping it is written anew under its name. Any thread.
std::string moveToTrash(const std::filesystem::path& file);

} // namespace quillmark
