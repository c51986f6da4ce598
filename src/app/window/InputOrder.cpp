#include "app/window/InputOrder.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QTimerEvent>

#include <algorithm>
#include <cassert>
#include <utility>

namespace quillmark {

namespace {

/// The bridge waits for an answer for 100 ms. Turns of the loop are counted, not time: a program that was
/// stopped finds the answers waiting for it, behind the timer.
constexpr int turnLength = 100; // milliseconds
constexpr int patientTurns = 3;

/// Of two times that start again from 0 after 49 days.
bool isBefore(ulong time, ulong other)
{
    return static_cast<qint32>(static_cast<quint32>(time) - static_cast<quint32>(other)) < 0;
}

} // namespace

bool InputOrder::Waiting::isKey(const QKeyEvent& pressed) const
{
    return !event && key == pressed.key() && keyCode == pressed.nativeScanCode();
}

void InputOrder::keyRead(const QKeyEvent& key)
{
    m_waiting.push_back(Waiting{.event = nullptr,
        .key = key.key(),
        .keyCode = key.nativeScanCode(),
        .time = static_cast<ulong>(key.timestamp())});
    m_turnsWithoutKey = 0;
    if (!m_patience.isActive())
        m_patience.start(turnLength, this);
}

InputOrder::Waiting InputOrder::takeFirst()
{
    assert(!m_waiting.empty());
    Waiting first = std::move(m_waiting.front());
    m_waiting.pop_front();
    return first;
}

void InputOrder::keyArrived(const QKeyEvent& key)
{
    const auto isIt = [&key](const Waiting& waiting) { return waiting.isKey(key); };
    if (std::ranges::none_of(m_waiting, isIt))
        return;
    m_turnsWithoutKey = 0;
    while (!m_waiting.empty()) { // keys before it will not come any more
        const Waiting first = takeFirst();
        if (first.event)
            deliver(*first.event);
        else if (isIt(first))
            break;
    }
    if (m_waiting.empty())
        m_patience.stop();
}

void InputOrder::deliverReady()
{
    while (!m_waiting.empty() && m_waiting.front().event)
        deliver(*takeFirst().event);
}

void InputOrder::deliver(QEvent& event)
{
    const QScopedValueRollback delivering(m_isDelivering, true);
    QObject* const receiver
        = event.type() == QEvent::InputMethod ? QGuiApplication::focusObject() : m_window.data();
    if (receiver)
        QCoreApplication::sendEvent(receiver, &event);
}

bool InputOrder::keepsBackComposed(const QEvent& event)
{
    if (m_isDelivering || m_waiting.empty()) // all that waits was read before it
        return false;
    m_waiting.push_back(Waiting{.event = std::unique_ptr<QEvent>(event.clone())});
    return true;
}

bool InputOrder::keepsBackMouse(const QMouseEvent& event)
{
    if (m_isDelivering)
        return false;
    const auto later = std::ranges::find_if(m_waiting, [&event](const Waiting& waiting) {
        return !waiting.event && !isBefore(waiting.time, static_cast<ulong>(event.timestamp()));
    });
    if (later == m_waiting.begin())
        return false;
    m_waiting.insert(later, Waiting{.event = std::unique_ptr<QEvent>(event.clone())});
    return true;
}

void InputOrder::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_patience.timerId() || ++m_turnsWithoutKey < patientTurns)
        return;
    m_patience.stop();
    for (std::deque<Waiting> given = std::exchange(m_waiting, {}); const Waiting& waiting : given) {
        if (waiting.event)
            deliver(*waiting.event);
    }
}

} // namespace quillmark
