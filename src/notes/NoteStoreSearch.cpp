// The query of the sidebar's field and the notes that match it.
#include "notes/NoteStore.h"

#include "notes/NoteNames.h"
#include "notes/NoteSearch.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <thread>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration searchDelay = 200ms; ///< from the last key
constexpr size_t mostParts
    = 3; ///< that are searched side by side; a document still finds a thread to be read on

/// What the parts of a search have found so far.
struct Found {
    size_t partsLeft = 0;
    std::unordered_set<Uuid> ids;
};

} // namespace

std::vector<const Note*> NoteStore::filteredNotes() const
{
    std::vector<const Note*> result;
    result.reserve(notes->size());
    for (const Note& note : notes.get())
        if (matchesSearch(note))
            result.push_back(&note);
    return result;
}

bool NoteStore::matchesSearch(const Note& note) const
{
    return m_searchKey.isEmpty() || contentMatchIDs->contains(note.id)
        || m_searchKey.isFoundInUtf8(note.title) || m_searchKey.isFoundInUtf8(note.preview);
}

void NoteStore::updateSearchQuery(std::string_view text)
{
    m_searchDelay.cancel();
    m_searchTasks.clear();
    m_searchKey = SearchKey(utf16(text));
    m_contentMatchIDs.set({});
    m_isSearchingContents.set(!m_searchKey.isEmpty());
    m_searchQuery.set(std::string(text));
    if (!m_searchKey.isEmpty())
        m_searchDelay = m_services.scheduler.after(searchDelay, [this] { startContentSearch(); });
}

void NoteStore::clearSearch()
{
    updateSearchQuery("");
}

void NoteStore::startContentSearch()
{
    std::vector<SearchCandidate> candidates;
    candidates.reserve(notes->size());
    for (const Note& note : notes.get())
        if (note.byteSize <= largestSearched)
            candidates.push_back({note.id, std::string(fileName(note))});
    const auto all = std::make_shared<const std::vector<SearchCandidate>>(std::move(candidates));
    const size_t parts = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, mostParts);
    const auto found = std::make_shared<Found>(Found{.partsLeft = parts, .ids = {}});
    for (size_t part = 0; part < parts; ++part) {
        const size_t first = all->size() * part / parts;
        const size_t count = all->size() * (part + 1) / parts - first;
        m_searchTasks.push_back(m_services.scheduler.background(
            Priority::userInitiated,
            [&files = m_services.files, folder = folderURL.get(), key = m_searchKey, all, first, count](
                const CancelToken& cancel) {
                return searchContents(files, folder, key, std::span(*all).subspan(first, count), cancel);
            },
            [this, found](const std::vector<Uuid>& ids) {
                found->ids.insert(ids.begin(), ids.end());
                assert(found->partsLeft > 0);
                if (--found->partsLeft > 0)
                    return;
                m_contentMatchIDs.set(std::move(found->ids));
                m_isSearchingContents.set(false);
            }));
    }
}

} // namespace quillmark
