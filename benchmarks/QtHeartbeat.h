// How long the main thread answered nobody.
#pragma once

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <functional>

namespace quillmark::bench {

using Clock = std::chrono::steady_clock;

inline double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// A timer that wants to fire each millisecond, and how late it came at worst.
class Heartbeat {
public:
    Heartbeat()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { beat(); });
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.start(std::chrono::milliseconds(1));
    }
    double longestHold() const { return milliseconds(m_longest); }

private:
    void beat()
    {
        const auto now = Clock::now();
        m_longest = std::max(m_longest, now - m_last - std::chrono::milliseconds(1));
        m_last = now;
    }

    QTimer m_timer;
    Clock::time_point m_last = Clock::now();
    Clock::duration m_longest{};
};

/// Runs the event loop.
inline void runUntil(const std::function<bool()>& condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

inline void runFor(Clock::duration duration)
{
    const auto end = Clock::now() + duration;
    runUntil([&] { return Clock::now() >= end; });
}

} // namespace quillmark::bench
