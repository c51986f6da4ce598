#include "core/RecoveredTexts.h"

#include "io/FileNames.h"
#include "io/ReadFile.h"
#include "notes/NoteNames.h"

#include <array>

namespace quillmark {

namespace {

constexpr size_t leadingBytes = 2048;

/// "2026-11-22 21.05.09.123 (2) Plan.txt" belongs to "Plan.txt".
std::string originalName(std::string_view kept)
{
    const size_t time = timeName(WallTime()).size(); // of any time
    if (kept.size() <= time + 1)
        return printable(Path(kept));
    kept.remove_prefix(time + 1);
    if (const size_t end = kept.find(") "); kept.starts_with('(') && end < 6
        && kept.substr(1, end - 1).find_first_not_of("0123456789") == std::string_view::npos)
        kept.remove_prefix(end + 2);
    return printable(Path(kept));
}

std::string firstLineOf(FileSystem& files, const Path& path)
{
    std::array<char, leadingBytes> buffer{};
    const auto file = files.openForReading(path);
    const auto size = file ? readStart(**file, buffer) : std::unexpected(file.error());
    if (!size)
        return {};
    const std::u16string text = TextFileReader::decode({buffer.data(), *size}).text.text();
    const bool isBlank = text.find_first_not_of(u" \t\n\u00A0") == std::u16string::npos;
    return isBlank ? std::string() : titleAndPreview(text).title;
}

RecoveredTexts::Entries listEntries(FileSystem& files, RecoveryStore& store, const CancelToken& token)
{
    RecoveredTexts::Entries entries;
    for (const RecoveredText& kept : store.list().value_or(std::vector<RecoveredText>())) {
        if (token.isCancelled())
            break;
        entries.push_back({.path = kept.path,
            .file = originalName(kept.path.filename().native()),
            .firstLine = firstLineOf(files, kept.path),
            .time = kept.modified,
            .size = kept.size});
    }
    return entries;
}

} // namespace

RecoveredTexts::RecoveredTexts(Scheduler& scheduler, FileSystem& files, RecoveryStore& store)
    : m_scheduler(scheduler)
    , m_files(files)
    , m_store(store)
{
}

void RecoveredTexts::list()
{
    m_listing = m_scheduler.background(
        Priority::userInitiated,
        [&files = m_files, &store = m_store](
            const CancelToken& token) { return listEntries(files, store, token); },
        [this](Entries listed) { m_entries.set(std::move(listed)); });
}

void RecoveredTexts::read(const Path& path, std::function<void(Result<Rope>)> then)
{
    m_reading = m_scheduler.background(
        Priority::userInitiated,
        [&files = m_files, path](const CancelToken& token) -> Result<Rope> {
            auto file = readTextFile(files, path, token);
            if (!file)
                return std::unexpected(file.error());
            return std::move(file->content.text);
        },
        std::move(then));
}

} // namespace quillmark
