#include "core/state/Impl.h"

#include "text/Unicode.h"

#include <algorithm>
#include <system_error>

namespace quillmark {
namespace {

bool isBlank(const Rope& text)
{
    bool blank = true;
    text.forEachChunk({0, text.length()}, [&](const Rope::Chunk& chunk) {
        blank = std::visit(
            [](const auto& units) {
                return std::ranges::all_of(units, [](auto c) { return isWhiteSpace(c); });
            },
            chunk);
        return blank;
    });
    return blank;
}

size_t indexOf(const AppState::Tabs& tabs, const Uuid& id)
{
    const auto found = std::ranges::find(tabs, id, [](const auto& tab) { return tab->id; });
    return static_cast<size_t>(found - tabs.begin());
}

} // namespace

Path standardised(const Path& path)
{
    std::error_code error;
    Path result = std::filesystem::absolute(path, error).lexically_normal();
    if (!result.has_filename() && result.has_relative_path())
        result = result.parent_path();
    return result;
}

std::string displayName(const Path& url)
{
    const std::string name = url.has_filename() ? url.filename().native() : url.native();
    return utf8(utf16(name));
}

std::shared_ptr<EditorTab> AppState::Impl::findTab(const Uuid& id) const
{
    const auto found = std::ranges::find(app.tabs.get(), id, [](const auto& tab) { return tab->id; });
    return found != app.tabs->end() ? *found : nullptr;
}

std::shared_ptr<EditorTab> AppState::Impl::findTab(const TabSource& source) const
{
    const auto found = std::ranges::find(
        app.tabs.get(), source, [](const auto& tab) -> const TabSource& { return *tab->source; });
    return found != app.tabs->end() ? *found : nullptr;
}

std::optional<Path> AppState::Impl::urlOf(const EditorTab& tab) const
{
    if (const FileSource* file = tab.file())
        return file->url;
    const Note* note = app.store.find(tab.note()->id);
    return note ? std::optional(note->url) : std::nullopt;
}

// ---- Opening and selecting

void AppState::newNote()
{
    const Note note = store.createNote();
    openNote(note.id);
}

void AppState::openNote(Uuid noteID)
{
    const NoteSource source{noteID};
    if (const auto tab = m_impl->findTab(source))
        return selectTab(tab->id);
    if (const Note* note = store.find(noteID))
        m_impl->appendAndSelect(std::make_shared<EditorTab>(source, note->title));
}

void AppState::openFile(const Path& path)
{
    const FileSource source{standardised(path)};
    if (const auto tab = m_impl->findTab(source))
        return selectTab(tab->id);
    m_impl->appendAndSelect(std::make_shared<EditorTab>(source, displayName(source.url)));
}

void AppState::Impl::appendAndSelect(std::shared_ptr<EditorTab> tab)
{
    Tabs all = app.tabs.get();
    all.push_back(tab);
    app.tabs.set(std::move(all));
    app.selectTab(tab->id);
}

void AppState::selectTab(Uuid tabID)
{
    if (activeTabID.get() == tabID || !m_impl->findTab(tabID))
        return;
    m_impl->leaveActiveDocument();
    activeTabID.set(tabID);
    m_impl->loadActiveDocument();
    saveSession();
}

void AppState::selectAdjacentTab(int offset)
{
    const auto count = static_cast<int64_t>(tabs->size());
    if (count < 2 || !activeTab())
        return;
    const auto index = static_cast<int64_t>(indexOf(tabs.get(), *activeTabID.get()));
    const int64_t next = ((index + offset) % count + count) % count;
    selectTab(tabs.get()[static_cast<size_t>(next)]->id);
}

void AppState::commitActiveNoteTitle()
{
    const auto noteID = activeNoteID();
    if (!noteID || m_impl->document.unreadable) // nobody knows the title of what could not be read
        return;
    store.renameFileIfNeeded(*noteID);
    if (const Note* note = store.find(*noteID))
        activeTab()->title.set(note->title);
}

/// What an input method is still working on becomes a part of the text.
void AppState::Impl::finishTyping()
{
    if (textView)
        textView->commitComposition();
}

/// After it nothing of the outgoing document is unsaved: what could not be written is in the recovery folder.
void AppState::Impl::leaveActiveDocument()
{
    finishTyping();
    app.flushSave(AllowBackground::no);
    rescueUnsavedText();
    app.isDirty.set(false);
    app.commitActiveNoteTitle();
}

// ---- Closing

void AppState::closeTab(Uuid tabID)
{
    const auto tab = m_impl->findTab(tabID);
    if (!tab)
        return;
    const bool isActive = activeTabID.get() == tabID;
    if (isActive)
        m_impl->finishTyping();
    bool looksEmpty = !isActive || m_impl->isBlankDocument();
    if (isActive)
        m_impl->leaveActiveDocument();
    looksEmpty = looksEmpty && (!isActive || m_impl->isBlankDocument()); // another version may show by now
    const Note* found = tab->note() ? store.find(tab->note()->id) : nullptr;
    if (found && looksEmpty) {
        const Note note = *found;
        if (m_impl->isStillEmpty(note, isActive))
            store.trashNote(note);
    }
    m_impl->removeTab(tabID);
    saveSession();
}

/// Whether the user sees an empty text. What is still being read, or could not be, is not empty.
bool AppState::Impl::isBlankDocument() const
{
    return !app.isLoading.get() && !document.unreadable && isBlank(app.editorText());
}

/// A note that looks empty goes to the Trash only when the disk agrees: another program may have filled it.
bool AppState::Impl::isStillEmpty(const Note& note, bool wasActive)
{
    if (!wasActive && note.byteSize != 0)
        return false;
    const auto info = services.files.stat(note.url);
    return info ? info->size == note.byteSize : saysMissing(info.error());
}

void AppState::deleteNote(const Note& note)
{
    const Note deleted = note; // the record goes with the first step
    const auto tab = m_impl->findTab(NoteSource{deleted.id});
    const bool isActive = tab && tab == activeTab();
    if (isActive) { // no save may make the file again, and the Trash gets the file without the last words
        m_impl->finishTyping();
        m_impl->saveTask.cancel();
        m_impl->rescueUnsavedText();
        isDirty.set(false);
    }
    m_impl->settleQueuedText(deleted.url);
    store.trashNote(deleted);
    if (tab)
        m_impl->removeTab(tab->id);
    saveSession();
}

void AppState::Impl::removeTab(Uuid id)
{
    Tabs rest = app.tabs.get();
    const size_t index = indexOf(rest, id);
    if (index == rest.size())
        return;
    rest.erase(rest.begin() + static_cast<ptrdiff_t>(index));
    if (rest.empty()) {
        showFreshNote();
        return loadActiveDocument();
    }
    const bool wasActive = app.activeTabID.get() == id;
    if (wasActive)
        app.activeTabID.set(rest[std::min(index, rest.size() - 1)]->id);
    app.tabs.set(std::move(rest));
    if (wasActive)
        loadActiveDocument();
}

// ---- When there is no tab

void AppState::Impl::showOnly(const Note& note)
{
    const auto tab = std::make_shared<EditorTab>(NoteSource{note.id}, note.title);
    app.tabs.set({tab});
    app.activeTabID.set(tab->id);
}

void AppState::Impl::showFreshNote()
{
    showOnly(app.store.createNote());
}

void AppState::Impl::showFirstNote()
{
    if (app.store.notes->empty())
        showFreshNote();
    else
        showOnly(Note(app.store.notes->front()));
}

} // namespace quillmark
