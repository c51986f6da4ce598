#include "io/Journal.h"

#include <algorithm>
#include <cassert>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration firstDelay = 200ms; ///< from the first key of a document that has no journal yet
constexpr Duration laterDelay = 700ms; ///< from a key to the write, so that it is on disk within a second
constexpr int64_t largeSize = 1024 * 1024; ///< bytes
constexpr int largePause = 10; ///< times as long as writing a large text took

} // namespace

Journal::Journal(FileSystem& disk, Scheduler& scheduler, RecoveryStore& recovery, Log& log,
    JournalFolders folders, Source source)
    : m_scheduler(scheduler)
    , m_source(std::move(source))
    , m_files(std::make_shared<JournalFiles>(disk, recovery, log, std::move(folders)))
    , m_self(this, [](Journal*) {})
    , m_jobs(scheduler, Priority::utility)
{
    assert(m_source);
}

Journal::~Journal()
{
    m_files->useLastResorts();
    m_jobs.finishAll();
    m_files->close();
}

void Journal::textChanged(const Uuid& document)
{
    Entry& entry = m_entries[document];
    entry.version = ++m_lastVersion;
    entry.isDirty = true;
    schedule(document, entry);
}

void Journal::schedule(const Uuid& document, Entry& entry)
{
    assert(entry.isDirty);
    if (entry.isWriting || entry.timer.isPending())
        return;
    const Duration delay = entry.wasWritten ? laterDelay : firstDelay;
    const auto earliest = m_earliest.find(document);
    const Duration pause
        = earliest != m_earliest.end() ? earliest->second - m_scheduler.now() : Duration::zero();
    entry.timer = m_scheduler.after(std::max(delay, pause), [this, document] { write(document); });
}

void Journal::write(const Uuid& document)
{
    auto snapshot = m_source(document);
    if (!snapshot) {
        forget(document);
        return;
    }
    Entry& entry = m_entries[document];
    entry.timer.cancel();
    entry.isDirty = false;
    entry.isWriting = true;
    entry.wasWritten = true;
    m_jobs.put(document.toString(),
        [&scheduler = m_scheduler, files = m_files, self = std::weak_ptr(m_self), document,
            snapshot = std::move(*snapshot)]() -> Status {
            const SteadyTime start = scheduler.now();
            const auto written = files->write(document, snapshot.original, snapshot.text);
            const Duration took = scheduler.now() - start;
            scheduler.post([self, document, took, written] {
                if (const auto journal = self.lock())
                    journal->written(document, took, written);
            });
            return written ? Status() : std::unexpected(written.error());
        });
}

void Journal::written(const Uuid& document, Duration took, const Result<WrittenFile>& result)
{
    const int64_t bytes = result ? result->bytes : 0;
    const SteadyTime now = m_scheduler.now();
    std::erase_if(m_earliest, [&](const auto& pause) { return pause.second <= now; });
    if (bytes > largeSize)
        m_earliest[document] = now + largePause * took;
    else
        m_earliest.erase(document);
    const auto entry = m_entries.find(document);
    if (entry == m_entries.end())
        return;
    entry->second.isWriting = false;
    entry->second.isHeld = result.has_value();
    if (entry->second.isDirty)
        schedule(document, entry->second);
}

bool Journal::holds(const Uuid& document) const
{
    const auto entry = m_entries.find(document);
    return entry != m_entries.end() && entry->second.isHeld && !entry->second.isDirty;
}

uint64_t Journal::version(const Uuid& document) const
{
    const auto entry = m_entries.find(document);
    return entry != m_entries.end() ? entry->second.version : 0;
}

void Journal::saved(const Uuid& document, uint64_t version)
{
    assert(version <= m_lastVersion);
    if (const auto entry = m_entries.find(document);
        entry != m_entries.end() && entry->second.version == version)
        forget(document);
}

void Journal::forget(const Uuid& document)
{
    const auto entry = m_entries.find(document);
    if (entry == m_entries.end())
        return;
    if (entry->second.wasWritten)
        m_jobs.put(document.toString(), [files = m_files, document] { return files->remove(document); });
    m_entries.erase(entry);
}

bool Journal::finish()
{
    m_files->useLastResorts();
    std::vector<Uuid> dirty;
    for (const auto& [document, entry] : m_entries) {
        if (entry.isDirty)
            dirty.push_back(document);
    }
    for (const Uuid& document : dirty)
        write(document);
    return m_jobs.finishAll().empty();
}

size_t Journal::recoverLeftovers()
{
    return m_files->recoverLeftovers();
}

} // namespace quillmark
