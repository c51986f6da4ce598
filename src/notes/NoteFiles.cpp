#include "notes/NoteFiles.h"

#include "io/ReadFile.h"
#include "io/Utf8.h"
#include "notes/NoteNames.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <numeric>
#include <optional>

namespace quillmark {
namespace {

/// Without the beginning of a UTF-8 sequence whose rest lies behind the end.
std::string_view withoutCutCharacter(std::string_view bytes)
{
    const size_t longest = std::min<size_t>(3, bytes.size());
    for (size_t n = 1; n <= longest; ++n) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - n]);
        if (byte < 0x80)
            return bytes;
        if (byte < 0xC0)
            continue; // in the middle of a sequence
        const size_t wanted = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
        return n < wanted ? bytes.substr(0, bytes.size() - n) : bytes;
    }
    return bytes;
}

/// As TextFileReader does; most beginnings are UTF-8 and need no rope.
std::u16string decoded(std::string_view bytes)
{
    std::u16string text;
    bool isPlain = !bytes.starts_with("\xEF\xBB\xBF") && bytes.find('\r') == bytes.npos;
    if (isPlain) {
        text.resize_and_overwrite(bytes.size(), [&](char16_t* units, size_t) {
            const Utf8Progress done = utf8ToUtf16(bytes, units);
            isPlain = done.source == bytes.data() + bytes.size();
            return static_cast<size_t>(done.target - units);
        });
    }
    return isPlain ? text : TextFileReader::decode(bytes).text.text();
}

bool isNoteName(std::string_view name)
{
    constexpr std::string_view extension = ".txt";
    return !name.starts_with('.') && name.size() > extension.size()
        && std::ranges::equal(name.substr(name.size() - extension.size()), extension,
            [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

std::u16string leadingText(File& file)
{
    std::array<char, leadingBytes> buffer;
    const auto size = readStart(file, buffer);
    if (!size)
        return {};
    const std::string_view bytes(buffer.data(), *size);
    return decoded(bytes.size() == buffer.size() ? withoutCutCharacter(bytes) : bytes);
}

/// Nothing when it is not a file any more, or never was one.
std::optional<Note> makeRecord(Folder& folder, const Path& path, const std::string& name)
{
    const auto opened = folder.openForReading(name);
    const auto info = opened ? Result<FileInfo>(opened->info) : folder.stat(name);
    if (!info || info->kind != FileInfo::Kind::regular)
        return std::nullopt;
    auto [title, preview] = titleAndPreview(opened ? leadingText(*opened->file) : std::u16string());
    return Note{.id = Uuid::random(),
        .url = path / name,
        .title = std::move(title),
        .preview = std::move(preview),
        .modifiedAt = info->modified,
        .byteSize = info->size};
}

} // namespace

std::vector<std::string> noteNames(std::vector<Folder::Name> names)
{
    std::vector<std::string> chosen;
    for (Folder::Name& name : names) {
        if (name.kind.value_or(FileInfo::Kind::regular) == FileInfo::Kind::regular && isNoteName(name.bytes))
            chosen.push_back(std::move(name.bytes));
    }
    return chosen;
}

Result<std::vector<FolderEntry>> listNoteFiles(Scheduler& scheduler, Folder& folder)
{
    auto names = folder.names();
    if (!names)
        return std::unexpected(names.error());
    std::vector<FolderEntry> entries;
    for (std::string& name : noteNames(std::move(*names)))
        entries.push_back({std::move(name), {}});
    scheduler.parallel(entries.size(), [&](size_t first, size_t end) {
        assert(first < end && end <= entries.size());
        for (FolderEntry& entry : std::span(entries).subspan(first, end - first)) {
            if (const auto info = folder.stat(entry.name))
                entry.info = *info;
        }
    });
    std::erase_if(
        entries, [](const FolderEntry& entry) { return entry.info.kind != FileInfo::Kind::regular; });
    return entries;
}

std::u16string readLeadingText(Folder& folder, const std::string& name)
{
    const auto opened = folder.openForReading(name);
    return opened ? leadingText(*opened->file) : std::u16string();
}

std::vector<Note> makeRecords(
    Scheduler& scheduler, Folder& folder, const Path& path, std::span<const std::string> names)
{
    std::vector<std::optional<Note>> made(names.size());
    scheduler.parallel(names.size(), [&](size_t first, size_t end) {
        for (size_t i = first; i < end; ++i)
            made[i] = makeRecord(folder, path, names[i]);
    });
    std::vector<Note> records;
    records.reserve(names.size());
    for (std::optional<Note>& note : made) {
        if (note)
            records.push_back(std::move(*note));
    }
    return records;
}

bool isNewestFirst(const std::vector<Note>& notes)
{
    return std::ranges::is_sorted(notes, std::ranges::greater(), &Note::modifiedAt);
}

void sortNewestFirst(std::vector<Note>& notes)
{
    if (isNewestFirst(notes))
        return;
    std::vector<size_t> order(notes.size()); // so that each record moves once
    std::iota(order.begin(), order.end(), size_t{0});
    std::ranges::stable_sort(
        order, std::ranges::greater(), [&](size_t place) { return notes[place].modifiedAt; });
    std::vector<Note> sorted;
    sorted.reserve(notes.size());
    for (const size_t place : order)
        sorted.push_back(std::move(notes[place]));
    assert(isNewestFirst(sorted));
    notes = std::move(sorted);
}

} // namespace quillmark
