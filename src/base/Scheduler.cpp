#include "base/Scheduler.h"

#include <algorithm>
#include <cassert>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

#include <malloc.h>

namespace quillmark {
namespace {

constexpr size_t pieceSize = 128; ///< items; a thread that comes later or runs slower takes fewer pieces
constexpr size_t mostThreads = 4;
constexpr int64_t hugeLength = 4 * 1024 * 1024; ///< the heap would keep what a value of this size leaves

/// Work that several threads share. Those that come when all pieces are taken do nothing, so that nobody
/// waits for a thread that is busy with something else; by then `work` may be gone.
class SharedWork {
public:
    SharedWork(size_t count, const std::function<void(size_t first, size_t end)>& work)
        : m_count(count)
        , m_work(work)
    {
    }

    void takePieces()
    {
        while (const auto first = takePiece()) {
            std::exception_ptr failure;
            try {
                m_work(*first, std::min(m_count, *first + pieceSize));
            } catch (...) {
                failure = std::current_exception();
            }
            endPiece(failure);
        }
    }

    void waitForAll()
    {
        std::unique_lock lock(m_mutex);
        assert(m_next >= m_count); // whoever waits has helped until nothing was left
        m_ended.wait(lock, [&] { return m_running == 0; });
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    std::optional<size_t> takePiece()
    {
        const std::lock_guard lock(m_mutex);
        if (m_next >= m_count)
            return std::nullopt;
        ++m_running;
        return std::exchange(m_next, m_next + pieceSize);
    }

    void endPiece(const std::exception_ptr& failure)
    {
        const std::lock_guard lock(m_mutex);
        assert(m_running > 0);
        if (failure) {
            m_next = m_count;
            if (!m_failure)
                m_failure = failure;
        }
        if (--m_running == 0)
            m_ended.notify_all();
    }

    const size_t m_count;
    const std::function<void(size_t first, size_t end)>& m_work;
    std::mutex m_mutex; ///< guards what follows
    std::condition_variable m_ended;
    size_t m_next = 0;
    size_t m_running = 0; ///< pieces
    std::exception_ptr m_failure;
};

} // namespace

void Scheduler::parallel(size_t count, const std::function<void(size_t first, size_t end)>& work)
{
    const auto shared = std::make_shared<SharedWork>(count, work);
    const size_t cores = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
    const size_t wanted = std::min(cores, count / pieceSize);
    for (size_t helpers = 0; helpers + 1 < wanted; ++helpers)
        runInBackground(Priority::userInitiated, [shared] { shared->takePieces(); });
    shared->takePieces();
    shared->waitForAll();
}

void Scheduler::free(std::shared_ptr<void> value, int64_t length)
{
    assert(value.use_count() == 1);
    runInBackground(Priority::utility, [value = std::move(value), length]() mutable {
        value.reset();
        if (length >= hugeLength)
            malloc_trim(0);
    });
}

} // namespace quillmark
