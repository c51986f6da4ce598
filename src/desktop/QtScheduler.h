// The Scheduler on Qt's event loop and on two pools of threads. It may be made, and posted to, before the
// QApplication; timers and descriptors need one.
#pragma once

#include "base/Scheduler.h"

#include <QObject>
#include <QThreadPool>

namespace quillmark {

class QtScheduler final : public Scheduler {
public:
    QtScheduler();
    ~QtScheduler() override; ///< waits for running work; callbacks that have not run yet never run

    void post(std::function<void()> f) override;
    SteadyTime now() const override;
    WallTime wallNow() const override;
    void runInBackground(Priority priority, std::function<void()> work) override;
    [[nodiscard]] Task watchDescriptor(int descriptor, std::function<void()> readable) override;

    /// Waits for all background work and runs everything posted, until neither is left. For the end of the
    /// process, when the event loop has stopped. Timers do not run. Main thread.
    void drain();

protected:
    void runAfter(Duration delay, std::function<void()> f) override;

private:
    class Receiver;

    const std::unique_ptr<Receiver> m_receiver; ///< lives on the main thread and gets the posted callbacks
    QThreadPool m_userInitiated;
    QThreadPool m_utility; ///< apart, so that slow work never keeps what the user waits for from starting
};

} // namespace quillmark
