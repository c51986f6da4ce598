#include "core/SessionData.h"
#include "core/state/Impl.h"
#include "io/Bookmark.h"

#include <algorithm>

namespace quillmark {
namespace {

constexpr std::string_view sessionKey = "session.v1";

SessionTab remember(const EditorTab& tab, const NoteStore& store, FileSystem& files)
{
    SessionTab stored;
    if (const FileSource* file = tab.file()) {
        if (auto bookmark = makeBookmark(files, file->url))
            stored.bookmark = std::move(*bookmark);
    } else if (const Note* note = store.find(tab.note()->id)) {
        stored.notePath = note->url;
    }
    return stored;
}

std::shared_ptr<EditorTab> bringBack(const SessionTab& stored, const NoteStore& store, FileSystem& files)
{
    if (stored.notePath) {
        const auto note = std::ranges::find_if(store.notes.get(),
            [&](const Note& candidate) { return candidate.url.native() == stored.notePath->native(); });
        if (note == store.notes->end())
            return nullptr;
        return std::make_shared<EditorTab>(NoteSource{note->id}, note->title);
    }
    const auto resolved = stored.bookmark ? resolveBookmark(files, *stored.bookmark) : systemFailure(ENOENT);
    if (!resolved)
        return nullptr;
    const Path url = resolved->path.lexically_normal();
    return std::make_shared<EditorTab>(FileSource{url}, displayName(url));
}

} // namespace

void AppState::saveSession()
{
    if (!m_impl->isSessionRestored)
        return;
    SessionData session;
    for (const auto& tab : tabs.get()) {
        if (activeTabID.get() == tab->id)
            session.activeIndex = static_cast<int64_t>(session.tabs.size());
        session.tabs.push_back(remember(*tab, store, m_impl->services.files));
    }
    m_impl->services.defaults.setData(sessionKey, encodeSession(session));
}

void AppState::Impl::restoreSession()
{
    const auto bytes = services.defaults.data(sessionKey);
    const auto session = bytes ? decodeSession(*bytes) : std::nullopt;
    if (!session)
        return;
    Tabs restored;
    for (const SessionTab& stored : session->tabs) {
        const auto tab = bringBack(stored, app.store, services.files);
        const auto isSame = [&](const auto& other) { return *other->source == *tab->source; };
        if (tab && std::ranges::none_of(restored, isSame))
            restored.push_back(tab);
    }
    if (restored.empty())
        return;
    const auto last = static_cast<int64_t>(restored.size()) - 1;
    const auto index = static_cast<size_t>(std::clamp<int64_t>(session->activeIndex, 0, last));
    const Uuid activeID = restored[index]->id;
    tabs.replaceAll(std::move(restored), activeID);
}

} // namespace quillmark
