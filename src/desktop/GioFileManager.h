// The desktop's file manager: asked over D-Bus to select the file, or, where none answers, the desktop's
// opener is given the folder.
#pragma once

#include "base/Scheduler.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

namespace quillmark {

class GioFileManager final : public FileManager {
public:
    GioFileManager(Scheduler& scheduler, Log& log); ///< both outlive it and the scheduler's background work

    void reveal(const std::filesystem::path& file) override;

private:
    Scheduler& m_scheduler;
    Log& m_log;
};

/// Waits for the answer, 10 s at most. Empty when that went well, else what went wrong. Any thread.
std::string showInFileManager(const std::filesystem::path& file);

} // namespace quillmark
