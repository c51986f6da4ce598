#include "io/WriteQueue.h"

#include <algorithm>
#include <cassert>

namespace quillmark {

struct WriteQueue::Outcomes {
    struct Item {
        uint64_t serial;
        Outcome outcome;
    };
    WriteQueue* owner; ///< main thread
    std::mutex mutex;
    std::vector<Item> items;
};

WriteQueue::WriteQueue(
    Scheduler& scheduler, DocumentWriter& writer, Log& log, std::function<void(const Outcome&)> done)
    : m_scheduler(scheduler)
    , m_writer(writer)
    , m_log(log)
    , m_done(std::move(done))
    , m_outcomes(std::make_shared<Outcomes>())
    , m_jobs(scheduler, Priority::utility)
{
    m_outcomes->owner = this;
}

WriteQueue::~WriteQueue()
{
    m_jobs.finishAll();
    m_outcomes->owner = nullptr; // what was posted comes too late
}

void WriteQueue::enqueue(WriteRequest request)
{
    assert(request.target.is_absolute());
    const std::string key = request.target.native();
    const uint64_t serial = ++m_lastSerial;
    m_jobs.put(key, jobFor(request, serial));
    m_pending.insert_or_assign(key, Pending{.request = std::move(request), .serial = serial});
}

JobQueue::Job WriteQueue::jobFor(const WriteRequest& request, uint64_t serial)
{
    return [&scheduler = m_scheduler, &writer = m_writer, &log = m_log, outcomes = m_outcomes, request,
               serial]() -> Status {
        auto result = writer.write(request.text, request.target, request.lineEnds, request.outsideVersion);
        Status status;
        if (!result) {
            log.line("Quillmark: background save failed: " + result.error().message);
            status = std::unexpected(result.error());
        }
        {
            const std::lock_guard lock(outcomes->mutex);
            outcomes->items.push_back({serial, {request.target, request.version, std::move(result)}});
        }
        scheduler.post([outcomes] {
            if (outcomes->owner)
                outcomes->owner->deliver();
        });
        return status;
    };
}

void WriteQueue::deliver()
{
    std::vector<Outcomes::Item> items;
    {
        const std::lock_guard lock(m_outcomes->mutex);
        items.swap(m_outcomes->items);
    }
    for (const auto& [serial, outcome] : items) {
        const auto pending = m_pending.find(outcome.target.native());
        if (outcome.result && pending != m_pending.end() && pending->second.serial == serial)
            m_pending.erase(pending);
        m_done(outcome);
    }
}

Result<SavedFile> WriteQueue::writeNow(const WriteRequest& request)
{
    discard(request.target);
    assert(!m_jobs.contains(request.target.native())); // or an older text might come after this one
    return m_writer.write(request.text, request.target, request.lineEnds, request.outsideVersion);
}

void WriteQueue::discard(const Path& target)
{
    m_jobs.drop(target.native());
    deliver();
    m_pending.erase(target.native());
}

Status WriteQueue::finish(const Path& target)
{
    const Status status = m_jobs.finish(target.native());
    deliver();
    return status;
}

std::vector<WriteRequest> WriteQueue::finishAll()
{
    std::vector<WriteRequest> unwritten;
    for (const std::string& key : m_jobs.finishAll()) {
        if (const auto pending = m_pending.find(key); pending != m_pending.end())
            unwritten.push_back(pending->second.request);
    }
    deliver();
    return unwritten;
}

std::string WriteQueue::checkInvariants() const
{
    const std::lock_guard lock(m_outcomes->mutex);
    for (const auto& [key, pending] : m_pending) {
        const bool isTold = std::ranges::find(m_outcomes->items, pending.serial, &Outcomes::Item::serial)
            != m_outcomes->items.end();
        if (!isTold && !m_jobs.contains(key))
            return key + " is pending but nobody writes it";
    }
    return m_jobs.checkInvariants();
}

std::optional<Rope> WriteQueue::pendingText(const Path& target) const
{
    const auto pending = m_pending.find(target.native());
    return pending != m_pending.end() ? std::optional(pending->second.request.text) : std::nullopt;
}

} // namespace quillmark
