#include "notes/NoteFiles.h"

#include "io/ReadFile.h"
#include "io/Utf8.h"
#include "notes/NoteNames.h"

#include <algorithm>
#include <array>
#include <numeric>

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

Note makeRecord(FileSystem& files, const Path& folder, const FolderEntry& entry)
{
    Path url = folder / entry.name;
    auto [title, preview] = titleAndPreview(readLeadingText(files, url));
    return {.id = Uuid::random(),
        .url = std::move(url),
        .title = std::move(title),
        .preview = std::move(preview),
        .modifiedAt = entry.info.modified,
        .byteSize = entry.info.size};
}

} // namespace

bool isNoteFile(const FolderEntry& entry)
{
    constexpr std::string_view extension = ".txt";
    const std::string_view name = entry.name;
    return !name.starts_with('.') && entry.info.kind == FileInfo::Kind::regular
        && name.size() > extension.size()
        && std::ranges::equal(name.substr(name.size() - extension.size()), extension,
            [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

std::u16string readLeadingText(FileSystem& files, const Path& file)
{
    std::array<char, leadingBytes> buffer;
    const auto size = readStart(files, file, buffer);
    if (!size)
        return {};
    const std::string_view bytes(buffer.data(), *size);
    return decoded(bytes.size() == buffer.size() ? withoutCutCharacter(bytes) : bytes);
}

std::vector<Note> makeRecords(Scheduler& scheduler, FileSystem& files, const Path& folder,
    const std::vector<const FolderEntry*>& entries)
{
    std::vector<Note> records(entries.size());
    scheduler.parallel(entries.size(), [&](size_t first, size_t end) {
        for (size_t i = first; i < end; ++i)
            records[i] = makeRecord(files, folder, *entries[i]);
    });
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
    notes = std::move(sorted);
}

} // namespace quillmark
