// The desktop's file manager: asked over D-Bus to select the file, or, where none answers, the desktop's
// opener is given the folder.
#pragma once

#include "base/Scheduler.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <memory>
#include <optional>
#include <string>

using GCancellable = struct _GCancellable;

namespace quillmark {

/// Asks one question at a time, so that a file manager that never answers takes one thread and no more; of
/// what is wanted meanwhile the last is kept. A question is given up after 10 s.
class GioFileManager final : public FileManager {
public:
    GioFileManager(Scheduler& scheduler, Log& log); ///< both outlive it
    ~GioFileManager() override { giveUp(); }

    void reveal(const std::filesystem::path& file) override;
    void giveUp(); ///< what was asked and what was still to be asked

private:
    void askNext();

    Scheduler& m_scheduler;
    Log& m_log;
    std::optional<std::filesystem::path> m_next;
    std::shared_ptr<GCancellable> m_question;
    Task m_asking;
    Task m_deadline;
};

} // namespace quillmark
