#include "notes/NoteSearch.h"

#include "io/ReadFile.h"

#include <memory>
#include <utility>

namespace quillmark {
namespace {

bool isFoundIn(Folder& folder, const std::string& name, const SearchKey& query, std::span<char> buffer)
{
    const auto opened = folder.openForReading(name);
    if (!opened || opened->info.size > largestSearched)
        return false;
    const auto size = readStart(*opened->file, buffer);
    if (!size || std::cmp_greater(*size, largestSearched))
        return false;
    const std::string_view bytes(buffer.data(), *size);
    const auto answer = query.quickAnswer(bytes);
    if (answer != SearchKey::Answer::mayNotSay)
        return answer == SearchKey::Answer::yes;
    return query.isFoundIn(TextFileReader::decode(bytes).text.text());
}

} // namespace

std::vector<Uuid> searchContents(FileSystem& files, const Path& path, const SearchKey& query,
    std::span<const SearchCandidate> candidates, const CancelToken& cancel)
{
    // Room for one byte more, which tells that a file is too large. Only what is read into costs memory.
    constexpr auto room = static_cast<size_t>(largestSearched) + 1;
    const auto buffer = std::make_unique_for_overwrite<char[]>(room);
    std::vector<Uuid> found;
    const auto folder = files.openFolder(path);
    if (!folder)
        return found;
    for (const SearchCandidate& candidate : candidates) {
        if (cancel.isCancelled())
            break;
        if (isFoundIn(**folder, candidate.name, query, {buffer.get(), room}))
            found.push_back(candidate.id);
    }
    return found;
}

} // namespace quillmark
