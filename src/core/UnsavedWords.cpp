#include "core/UnsavedWords.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

/// Pauses before the recovery folder is tried again. The write queue, which tries the file, comes first.
constexpr std::array<Duration, 3> retryDelays = {3s, 11s, 61s};

} // namespace

bool UnsavedWords::Unsafe::operator==(const Unsafe& other) const
{
    return facts.file == other.facts.file && error == other.error && isInMemoryOnly == other.isInMemoryOnly;
}

UnsavedWords::UnsavedWords(Services services, Events events)
    : m_scheduler(services.scheduler)
    , m_recovery(services.recovery)
    , m_log(services.log)
    , m_events(std::move(events))
    , m_queue(services.scheduler, services.writer, services.log,
          [this](const WriteQueue::Outcome& outcome) { queuedWriteEnded(outcome); })
    , m_journal(services.files, services.scheduler, services.recovery, services.log,
          std::move(services.journalFolders), [this](const Uuid& document) { return snapshot(document); })
{
}

UnsavedWords::Record* UnsavedWords::find(const Uuid& document)
{
    const auto found = m_records.find(document);
    return found != m_records.end() ? &found->second : nullptr;
}

const UnsavedWords::Record* UnsavedWords::find(const Uuid& document) const
{
    const auto found = m_records.find(document);
    return found != m_records.end() ? &found->second : nullptr;
}

/// What the journal is to hold.
std::optional<Journal::Snapshot> UnsavedWords::snapshot(const Uuid& document) const
{
    const Record* record = find(document);
    if (!record || record->state == State::kept)
        return std::nullopt;
    auto text = record->text ? record->text : m_events.liveText(document);
    if (!text)
        return std::nullopt;
    return Journal::Snapshot{.original = record->facts.file, .text = std::move(*text)};
}

void UnsavedWords::typed(const Uuid& document, const DocumentFacts& facts)
{
    const auto [place, isNew] = m_records.try_emplace(document);
    Record& record = place->second;
    const bool isNews = isNew || record.state != State::typed;
    if (isNews) {
        record.facts = facts;
        record.state = State::typed;
        record.text.reset();
    }
    m_journal.textChanged(document);
    if (isNews)
        m_events.changed();
}

// ---- To the file

WriteRequest UnsavedWords::requestFor(
    const Uuid& document, const DocumentFacts& facts, const Rope& text) const
{
    assert(facts.mayBeWritten());
    return {.target = facts.file,
        .text = text,
        .lineEnds = facts.lineEnds,
        .outsideVersion = facts.outsideVersion(),
        .version = m_journal.version(document)};
}

Result<SavedFile> UnsavedWords::write(const Uuid& document, const DocumentFacts& facts, const Rope& text)
{
    const auto written = m_queue.writeNow(requestFor(document, facts, text));
    if (written) {
        forgetOlder(document, facts.file);
        erase(document);
    } else if (Record* record = find(document); record && written.error().code != changedOutside) {
        record->error = written.error();
    }
    m_events.changed();
    return written;
}

void UnsavedWords::enqueue(const Uuid& document, const DocumentFacts& facts, const Rope& text)
{
    Record& record = m_records[document];
    record.facts = facts;
    record.state = State::queued;
    record.text = text;
    record.version = m_journal.version(document);
    forgetOlder(document, facts.file);
    m_queue.enqueue(requestFor(document, facts, text));
    m_events.changed();
}

/// Words of the same file that another document left: a newer text takes their place.
void UnsavedWords::forgetOlder(const Uuid& document, const Path& file)
{
    std::erase_if(m_records, [&](const auto& entry) {
        const bool isOlder = entry.first != document && entry.second.facts.file == file;
        if (isOlder)
            m_journal.forget(entry.first);
        return isOlder;
    });
}

void UnsavedWords::erase(const Uuid& document)
{
    m_records.erase(document);
    m_journal.forget(document);
}

void UnsavedWords::queuedWriteEnded(const WriteQueue::Outcome& outcome)
{
    const auto found = std::ranges::find_if(m_records, [&](const auto& entry) {
        return entry.second.version == outcome.version && entry.second.facts.file == outcome.target;
    });
    if (found == m_records.end())
        return;
    const Uuid document = found->first;
    Record& record = found->second;
    if (outcome.result) {
        const bool isAll = m_journal.version(document) == outcome.version;
        const Events::Saved saved{document, record.facts, *outcome.result, isAll};
        record.error.reset();
        if (isAll)
            erase(document);
        m_events.saved(saved);
    } else if (outcome.result.error().code == changedOutside) {
        const auto text = m_queue.pendingText(outcome.target);
        const DocumentFacts facts = record.facts;
        m_queue.discard(outcome.target);
        if (text)
            m_events.metOutsideVersion(document, facts, *text);
    } else {
        record.error = outcome.result.error();
        if (record.state == State::queued)
            record.state = State::refused;
        scheduleRetry();
    }
    m_events.changed();
}

// ---- To the recovery folder

bool UnsavedWords::keep(const Uuid& document, const DocumentFacts& facts, const Rope& text, Retry retry)
{
    if (const Record* record = find(document); record && record->state == State::kept)
        return true;
    const Path name = facts.file.empty() ? Path("Untitled.txt") : facts.file;
    const Result<Path> kept = text.isEmpty() ? Result<Path>(name) : m_recovery.keep(text, name);
    Record& record = m_records[document];
    record.facts = facts;
    record.retry = retry;
    if (kept) {
        m_queue.discard(facts.file); // an older text
        record.state = State::kept;
        record.text.reset();
        record.error.reset();
        m_journal.forget(document);
    } else {
        refuse(document, facts, text, kept.error());
    }
    m_events.changed();
    return kept.has_value();
}

void UnsavedWords::refuse(
    const Uuid& document, const DocumentFacts& facts, const Rope& text, const Error& error)
{
    Record& record = m_records[document];
    m_journal.textChanged(document); // which keeps trying
    record.state = State::refused;
    record.text = text;
    record.version = m_journal.version(document);
    record.error = record.error.value_or(error); // that of the file says more
    if (record.retry == Retry::fileAndRecovery && facts.mayBeWritten())
        m_queue.enqueue(requestFor(document, facts, text));
    scheduleRetry();
}

void UnsavedWords::scheduleRetry()
{
    if (!m_retry.isPending())
        m_retry = m_scheduler.after(
            retryDelays[std::min(m_retries++, retryDelays.size() - 1)], [this] { retry(); });
}

void UnsavedWords::retry()
{
    struct Attempt {
        Uuid document;
        uint64_t version = 0;
        Path file;
        Rope text;
        bool isKept = false;
    };
    std::vector<Attempt> attempts;
    for (const auto& [document, record] : m_records) {
        if (record.state == State::refused)
            attempts.push_back({document, record.version, record.facts.file, *record.text});
    }
    if (attempts.empty()) {
        m_retries = 0;
        return;
    }
    m_retry = m_scheduler.background(
        Priority::utility,
        [&recovery = m_recovery, attempts = std::move(attempts)](const CancelToken&) mutable {
            for (Attempt& attempt : attempts)
                attempt.isKept = recovery.keep(attempt.text, attempt.file).has_value();
            return std::move(attempts);
        },
        [this](const std::vector<Attempt>& tried) {
            for (const Attempt& attempt : tried) {
                const Record* record = find(attempt.document);
                if (!attempt.isKept || !record || record->state != State::refused
                    || record->version != attempt.version)
                    continue;
                m_queue.discard(attempt.file);
                erase(attempt.document);
            }
            m_events.changed();
            scheduleRetry();
        });
}

// ---- What becomes of documents

void UnsavedWords::forget(const Uuid& document)
{
    erase(document);
    m_events.changed();
}

void UnsavedWords::closed(const Uuid& document)
{
    if (const Record* record = find(document); record && record->state == State::kept)
        erase(document);
    assert(!find(document) || find(document)->state != State::typed); // their only copy would be gone
}

void UnsavedWords::moved(const Path& from, const Path& to)
{
    for (auto& [document, record] : m_records) {
        if (record.facts.file == from)
            record.facts.file = to;
    }
}

void UnsavedWords::giveUp(const Path& file)
{
    if (m_queue.finish(file))
        return;
    m_queue.discard(file);
    std::vector<std::pair<Uuid, Record>> given;
    for (const auto& entry : m_records) {
        if (entry.second.facts.file == file && entry.second.text)
            given.push_back(entry);
    }
    for (const auto& [document, record] : given)
        keep(document, record.facts, *record.text, Retry::recoveryOnly);
}

std::optional<UnsavedWords::Held> UnsavedWords::takeBack(const Path& file)
{
    for (auto& [document, record] : m_records) {
        if (record.facts.file != file || record.state != State::refused)
            continue;
        const Held held{document, record.facts, *record.text};
        record.state = State::typed;
        record.text.reset();
        return held;
    }
    return std::nullopt;
}

std::optional<UnsavedWords::State> UnsavedWords::stateOf(const Path& file) const
{
    const auto found
        = std::ranges::find_if(m_records, [&](const auto& entry) { return entry.second.facts.file == file; });
    return found != m_records.end() ? std::optional(found->second.state) : std::nullopt;
}

bool UnsavedWords::isSafe(const Uuid& document) const
{
    const Record* record = find(document);
    return !record || record->state == State::kept;
}

bool UnsavedWords::areAllSafe() const
{
    return std::ranges::all_of(
        m_records, [](const auto& entry) { return entry.second.state == State::kept; });
}

std::optional<UnsavedWords::Unsafe> UnsavedWords::unsafe(const Uuid& preferred) const
{
    const auto isUnsafe = [](const Record& record) { return record.error && record.state != State::kept; };
    const auto describe = [this](const Uuid& document, const Record& record) {
        return Unsafe{record.facts, *record.error, !m_journal.holds(document)};
    };
    if (const Record* record = find(preferred); record && isUnsafe(*record))
        return describe(preferred, *record);
    for (const auto& [document, record] : m_records) {
        if (isUnsafe(record))
            return describe(document, record);
    }
    return std::nullopt;
}

void UnsavedWords::finish()
{
    m_retry.cancel();
    static_cast<void>(m_queue.finishAll()); // what failed is refused, and held
    std::vector<std::pair<Uuid, Record>> held;
    for (const auto& entry : m_records) {
        if (entry.second.state == State::refused)
            held.push_back(entry);
    }
    for (const auto& [document, record] : held) {
        if (!keep(document, record.facts, *record.text, Retry::recoveryOnly))
            m_queue.discard(record.facts.file); // a third attempt would only take time
    }
    m_retry.cancel();
    if (!m_journal.finish() && !areAllSafe())
        m_log.line("Quillmark: not every text could be put on a disk");
}

void UnsavedWords::checkInvariants() const
{
    assert(m_queue.checkInvariants().empty());
    for (const auto& [document, record] : m_records) {
        assert((record.state == State::queued || record.state == State::refused) == record.text.has_value());
        assert(record.state != State::typed || m_events.liveText(document));
        assert(record.state != State::queued || m_queue.pendingText(record.facts.file));
        static_cast<void>(document);
    }
}

} // namespace quillmark
