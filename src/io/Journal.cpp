#include "io/Journal.h"

#include "io/Encode.h"
#include "io/FileNames.h"

#include <algorithm>
#include <cerrno>
#include <set>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration delay = 700ms; ///< from a key to the write, so that the key is on disk within a second
constexpr int64_t largeSize = 1024 * 1024; ///< bytes
constexpr int largePause = 10; ///< times as long as writing a large text took
constexpr uint32_t ownerOnly = 0600; ///< the document may be private
constexpr size_t uuidLength = 36;
constexpr std::string_view lockSuffix = ".lock";

} // namespace

/// The journal folder. Each process that uses it holds "<process>.lock" locked; the text of a document is
/// "<process>.<document>.<its file's name>".
struct Journal::Files {
    Files(FileSystem& d, RecoveryStore& r, Log& l, Path f)
        : disk(d)
        , recovery(r)
        , log(l)
        , folder(std::move(f))
    {
    }

    FileSystem& disk;
    RecoveryStore& recovery;
    Log& log;
    const Path folder;

    std::mutex mutex; ///< guards what follows
    std::string process; ///< empty until the first write
    std::unique_ptr<File> lock;
    std::map<Uuid, Path> texts;
    bool hasFailed = false; ///< since a write succeeded: one log line is enough

    Result<WrittenFile> write(const Uuid& document, const Snapshot& snapshot)
    {
        const std::lock_guard guard(mutex);
        auto written = writeText(document, snapshot);
        if (!written && !hasFailed)
            log.line("Quillmark: journal not written: " + written.error().message);
        hasFailed = !written;
        return written;
    }

    Result<WrittenFile> writeText(const Uuid& document, const Snapshot& snapshot)
    {
        if (auto status = ensureLock(); !status)
            return std::unexpected(status.error());
        const FileContent content = contentOf(snapshot.text, LineEnds::lf);
        if (const auto text = texts.find(document); text != texts.end()) {
            auto written = replaceFile(disk, text->second, content);
            if (written || written.error().code != ENOENT)
                return written;
        }
        const std::string prefix = process + "." + document.toString() + ".";
        const Path path = folder
            / (prefix
                + std::string(
                    nameEnding(snapshot.original.filename().native(), longestName - prefix.size())));
        texts[document] = path; // also after a failure: when syncing the folder failed, the file is there
        return createFile(disk, path, ownerOnly, content);
    }

    Status ensureLock()
    {
        if (lock)
            return {};
        if (auto status = disk.makeFolders(folder); !status)
            return status;
        auto file = createLocked(
            disk,
            [&] {
                process = Uuid::random().toString();
                return lockOf(process);
            },
            ownerOnly);
        if (!file)
            return std::unexpected(file.error());
        lock = std::move(*file);
        return {};
    }

    Status remove(const Uuid& document)
    {
        const std::lock_guard guard(mutex);
        const auto text = texts.find(document);
        if (text == texts.end())
            return {};
        if (auto status = disk.remove(text->second); !status && status.error().code != ENOENT)
            return status;
        texts.erase(text);
        return {};
    }

    void close()
    {
        const std::lock_guard guard(mutex);
        if (lock && texts.empty())
            static_cast<void>(disk.remove(lockOf(process)));
        lock.reset();
    }

    Path lockOf(const std::string& name) const { return folder / (name + std::string(lockSuffix)); }

    std::string ownProcess()
    {
        const std::lock_guard guard(mutex);
        return process;
    }

    size_t recoverTextsOf(const std::string& dead, const std::vector<FolderEntry>& entries)
    {
        size_t count = 0;
        bool isComplete = true;
        for (const FolderEntry& entry : entries) {
            if (!entry.name.starts_with(dead) || entry.name == dead + std::string(lockSuffix))
                continue;
            const size_t nameStart = std::min(entry.name.size(), 2 * (uuidLength + 1));
            const bool isMoved
                = recovery.adopt(folder / entry.name, entry.name.substr(nameStart)).has_value();
            count += isMoved;
            isComplete &= isMoved;
        }
        if (isComplete)
            static_cast<void>(disk.remove(lockOf(dead)));
        return count;
    }
};

Journal::Journal(
    FileSystem& disk, Scheduler& scheduler, RecoveryStore& recovery, Log& log, Path folder, Source source)
    : m_scheduler(scheduler)
    , m_source(std::move(source))
    , m_files(std::make_shared<Files>(disk, recovery, log, std::move(folder)))
    , m_self(this, [](Journal*) {})
    , m_jobs(scheduler, Priority::utility)
{
}

Journal::~Journal()
{
    finish();
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
    if (entry.isWriting || entry.timer.isPending())
        return;
    const Duration pause = entry.earliest - m_scheduler.now();
    entry.timer = m_scheduler.after(std::max(delay, pause), [this, document] { write(document); });
}

void Journal::write(const Uuid& document)
{
    Entry& entry = m_entries[document];
    auto snapshot = m_source(document);
    if (!snapshot) {
        forget(document);
        return;
    }
    entry.isDirty = false;
    entry.isWriting = true;
    entry.wasWritten = true;
    m_jobs.put(document.toString(),
        [&scheduler = m_scheduler, files = m_files, self = std::weak_ptr(m_self), document,
            snapshot = std::move(*snapshot)]() -> Status {
            const SteadyTime start = scheduler.now();
            const auto written = files->write(document, snapshot);
            const Duration took = scheduler.now() - start;
            const int64_t bytes = written ? written->bytes : 0;
            scheduler.post([self, document, took, bytes] {
                if (const auto journal = self.lock())
                    journal->written(document, took, bytes);
            });
            return written ? Status() : std::unexpected(written.error());
        });
}

void Journal::written(const Uuid& document, Duration took, int64_t bytes)
{
    const auto entry = m_entries.find(document);
    if (entry == m_entries.end())
        return;
    entry->second.isWriting = false;
    entry->second.earliest = bytes > largeSize ? m_scheduler.now() + largePause * took : SteadyTime();
    if (entry->second.isDirty)
        schedule(document, entry->second);
}

uint64_t Journal::version(const Uuid& document) const
{
    const auto entry = m_entries.find(document);
    return entry != m_entries.end() ? entry->second.version : 0;
}

void Journal::saved(const Uuid& document, uint64_t version)
{
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

void Journal::finish()
{
    m_jobs.finishAll();
}

size_t Journal::recoverLeftovers()
{
    const auto entries = m_files->disk.list(m_files->folder);
    if (!entries)
        return 0;
    removeStaleTemporaries(m_files->disk, m_files->folder, *entries);
    std::set<std::string> processes;
    for (const FolderEntry& entry : *entries) {
        if (!isTemporaryName(entry.name) && entry.name.size() > uuidLength && entry.name[uuidLength] == '.')
            processes.insert(entry.name.substr(0, uuidLength));
    }
    processes.erase(m_files->ownProcess());
    size_t count = 0;
    for (const std::string& process : processes) {
        const auto lock = m_files->disk.openForWriting(m_files->lockOf(process));
        const bool isDead = lock ? (*lock)->tryLock() : lock.error().code == ENOENT;
        if (isDead)
            count += m_files->recoverTextsOf(process, *entries);
    }
    return count;
}

} // namespace quillmark
