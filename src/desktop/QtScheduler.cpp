#include "desktop/QtScheduler.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>

namespace quillmark {

namespace {

const auto callEventType = static_cast<QEvent::Type>(QEvent::registerEventType());

class CallEvent final : public QEvent {
public:
    explicit CallEvent(std::function<void()> f)
        : QEvent(callEventType)
        , m_f(std::move(f))
    {
    }
    void call() const { m_f(); }

private:
    const std::function<void()> m_f;
};

/// Lives inside the flag of a Task: cancelling the Task takes the descriptor out of the event loop at once.
struct Watch {
    Watch(int descriptor, std::function<void()> f)
        : notifier(new QSocketNotifier(descriptor, QSocketNotifier::Read))
        , readable(std::move(f))
    {
    }
    ~Watch()
    {
        notifier->setEnabled(false);
        notifier->deleteLater(); // its own signal may be what brought us here
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    std::atomic<bool> cancelled = false;
    QSocketNotifier* const notifier;
    const std::function<void()> readable;
};

} // namespace

class QtScheduler::Receiver final : public QObject {
public:
    bool event(QEvent* event) override
    {
        if (event->type() != callEventType)
            return QObject::event(event);
        --pending;
        static_cast<CallEvent*>(event)->call();
        return true;
    }

    std::atomic<int64_t> pending = 0; ///< callbacks posted and not yet begun
};

QtScheduler::QtScheduler()
    : m_receiver(std::make_unique<Receiver>())
{
    m_userInitiated.setMaxThreadCount(std::max(4, QThread::idealThreadCount()));
    m_utility.setMaxThreadCount(2);
}

QtScheduler::~QtScheduler()
{
    m_userInitiated.waitForDone();
    m_utility.waitForDone();
}

void QtScheduler::post(std::function<void()> f)
{
    ++m_receiver->pending;
    QCoreApplication::postEvent(m_receiver.get(), new CallEvent(std::move(f)));
}

SteadyTime QtScheduler::now() const
{
    return std::chrono::steady_clock::now();
}

WallTime QtScheduler::wallNow() const
{
    return std::chrono::system_clock::now();
}

void QtScheduler::runInBackground(Priority priority, std::function<void()> work)
{
    QThreadPool& pool = priority == Priority::userInitiated ? m_userInitiated : m_utility;
    pool.start(std::move(work));
}

Task QtScheduler::watchDescriptor(int descriptor, std::function<void()> readable)
{
    const auto watch = std::make_shared<Watch>(descriptor, std::move(readable));
    QObject::connect(
        watch->notifier, &QSocketNotifier::activated, m_receiver.get(), [weak = std::weak_ptr(watch)] {
            if (const auto alive = weak.lock(); alive && !alive->cancelled)
                alive->readable();
        });
    return Task(std::shared_ptr<std::atomic<bool>>(watch, &watch->cancelled));
}

void QtScheduler::drain()
{
    do {
        QCoreApplication::sendPostedEvents(m_receiver.get(), callEventType);
        m_userInitiated.waitForDone();
        m_utility.waitForDone();
    } while (m_receiver->pending > 0);
}

void QtScheduler::runAfter(Duration delay, std::function<void()> f)
{
    constexpr Duration longest = std::chrono::hours(24 * 20); // a timer of Qt counts milliseconds in an int
    const auto wait
        = std::chrono::ceil<std::chrono::milliseconds>(std::clamp(delay, Duration::zero(), longest));
    QTimer::singleShot(wait, Qt::PreciseTimer, m_receiver.get(), std::move(f));
}

} // namespace quillmark
