// Keeps what is typed, composed and clicked in a window in the order in which it was done. A key is announced
// when the toolkit's queue comes to it, and acts at once or, with a screen reader's bridge, after a round
// trip on the bus, on which composed text and clicks do not go. Of keys that wait in that queue nobody knows.
#pragma once

#include <QBasicTimer>
#include <QEvent>
#include <QPointer>
#include <QWindow>

#include <deque>
#include <memory>

class QKeyEvent;
class QMouseEvent;

namespace quillmark {

class InputOrder final : public QObject {
public:
    void setWindow(QWindow* window) { m_window = window; } ///< the one that the input is for

    void keyRead(const QKeyEvent& key);
    /// The key acts now: what was done before it is delivered first. For a key that nobody announced it does
    /// nothing.
    void keyArrived(const QKeyEvent& key);
    void deliverReady(); ///< what waits for no key any more; after the key has acted

    /// Keeps back what was done after a key that has not acted yet. True when it did: a copy is delivered in
    /// its turn.
    bool keepsBackComposed(const QEvent& event); ///< goes to whatever has the focus then
    bool keepsBackMouse(const QMouseEvent& event);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Waiting {
        std::unique_ptr<QEvent> event; ///< null: a key that was read and has not arrived
        int key = 0;
        quint32 keyCode = 0;
        ulong time = 0; ///< milliseconds, the desktop's

        bool isKey(const QKeyEvent& pressed) const;
    };

    Waiting takeFirst();
    void deliver(QEvent& event);

    QPointer<QWindow> m_window;
    std::deque<Waiting> m_waiting;
    bool m_isDelivering = false;
    QBasicTimer m_patience; ///< a screen reader may keep a key for itself, without a word
    int m_turnsWithoutKey = 0;
};

} // namespace quillmark
