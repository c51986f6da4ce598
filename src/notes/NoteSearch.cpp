#include "notes/NoteSearch.h"

#include "io/ReadFile.h"

namespace quillmark {
namespace {

constexpr int64_t largestSearched = 2'000'000; // bytes

bool isFoundIn(FileSystem& files, const SearchKey& query, const Path& url)
{
    const auto read = readFile(files, url, largestSearched + 1);
    if (!read || static_cast<int64_t>(read->bytes.size()) > largestSearched)
        return false;
    const auto answer = query.quickAnswer(read->bytes);
    if (answer != SearchKey::Answer::mayNotSay)
        return answer == SearchKey::Answer::yes;
    return query.isFoundIn(TextFileReader::decode(read->bytes).text.text());
}

} // namespace

std::vector<Uuid> searchContents(FileSystem& files, const SearchKey& query,
    std::span<const SearchCandidate> candidates, const CancelToken& cancel)
{
    std::vector<Uuid> found;
    for (const SearchCandidate& candidate : candidates) {
        if (cancel.isCancelled())
            break;
        if (isFoundIn(files, query, candidate.url))
            found.push_back(candidate.id);
    }
    return found;
}

} // namespace quillmark
