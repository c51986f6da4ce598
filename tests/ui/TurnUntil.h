#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

namespace quillmark::test {

/// Turns the event loop until the condition holds; false when it does not within some seconds.
template <class Condition> bool turnUntil(Condition condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 10'000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

} // namespace quillmark::test
