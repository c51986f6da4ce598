#include "notes/NoteFiles.h"

#include "io/ReadFile.h"
#include "notes/NoteNames.h"

#include <algorithm>
#include <thread>

namespace quillmark {
namespace {

constexpr size_t manyFiles = 256; ///< from here on threads are worth their start
constexpr size_t mostThreads = 4;

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

Note makeRecord(FileSystem& files, const Path& folder, const FolderEntry& entry)
{
    Path url = folder / entry.name;
    auto [title, preview] = titleAndPreview(readLeadingText(files, url, leadingBytes));
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
    if (entry.name.starts_with('.') || entry.info.kind != FileInfo::Kind::regular)
        return false;
    std::string extension = Path(entry.name).extension().native();
    std::ranges::transform(extension, extension.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension == ".txt";
}

std::u16string readLeadingText(FileSystem& files, const Path& file, int64_t maxBytes)
{
    const auto read = readFile(files, file, maxBytes);
    if (!read)
        return {};
    std::string_view bytes = read->bytes;
    if (static_cast<int64_t>(bytes.size()) == maxBytes)
        bytes = withoutCutCharacter(bytes);
    return TextFileReader::decode(bytes).text.text();
}

std::vector<Note> makeRecords(
    FileSystem& files, const Path& folder, const std::vector<const FolderEntry*>& entries)
{
    std::vector<Note> records(entries.size());
    const auto make = [&](size_t part, size_t parts) {
        const size_t end = entries.size() * (part + 1) / parts;
        for (size_t i = entries.size() * part / parts; i < end; ++i)
            records[i] = makeRecord(files, folder, *entries[i]);
    };
    const size_t parts = entries.size() < manyFiles
        ? 1
        : std::clamp<size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
    std::vector<std::jthread> threads;
    for (size_t part = 1; part < parts; ++part)
        threads.emplace_back(make, part, parts);
    make(0, parts);
    threads.clear(); // waits for them
    return records;
}

void sortNewestFirst(std::vector<Note>& notes)
{
    std::ranges::stable_sort(notes, std::ranges::greater(), &Note::modifiedAt);
}

} // namespace quillmark
