#include "core/state/Impl.h"

#include "text/Unicode.h"

#include <algorithm>
#include <system_error>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration restoreOffer = 10s; ///< how long a deleted note can be taken back with one click

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

std::string displayPath(const Path& path)
{
    return utf8(utf16(path.native()));
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
    if (const auto tab = m_impl->tabs.find(source))
        return selectTab(tab->id);
    if (const Note* note = store.find(noteID))
        m_impl->openAndSelect(source, note->title);
}

void AppState::openFile(const Path& path)
{
    const FileSource source{standardised(path)};
    if (const auto tab = m_impl->tabs.find(source))
        return selectTab(tab->id);
    m_impl->openAndSelect(source, displayName(source.url));
}

void AppState::Impl::openAndSelect(TabSource source, std::string title)
{
    app.selectTab(tabs.append(std::move(source), std::move(title))->id);
}

void AppState::selectTab(Uuid tabID)
{
    if (activeTabID.get() == tabID || !m_impl->tabs.find(tabID))
        return;
    m_impl->leaveActiveDocument();
    if (!m_impl->tabs.find(tabID)) // leaving may have taken tabs with it
        return;
    m_impl->tabs.activate(tabID);
    m_impl->loadActiveDocument();
    saveSession();
}

void AppState::selectAdjacentTab(int offset)
{
    if (const auto tab = m_impl->tabs.neighbour(offset))
        selectTab(tab->id);
}

void AppState::commitActiveNoteTitle()
{
    const auto noteID = activeNoteID();
    if (!noteID || m_impl->document.isUnreadable()) // nobody knows the title of what could not be read
        return;
    store.renameFileIfNeeded(*noteID);
    if (const Note* note = store.find(*noteID))
        m_impl->tabs.setTitle(*activeTab(), note->title);
}

/// After it the outgoing document is clean: what could not be written is in the recovery folder, or held.
void AppState::Impl::leaveActiveDocument()
{
    document.finishTyping();
    app.flushSave(AllowBackground::no);
    app.commitActiveNoteTitle();
    const bool isUnsaved = document.isDirty.get() && !document.text().isEmpty();
    if (document.rescue() && isUnsaved)
        app.showNotice("Не удалось сохранить «" + displayName(document.file())
            + "» — текст в меню «Файл», «Восстановленные тексты…»");
    document.wordsWentElsewhere();
}

// ---- Closing

void AppState::closeTab(Uuid tabID)
{
    const auto tab = m_impl->tabs.find(tabID);
    if (!tab)
        return;
    const bool isActive = activeTabID.get() == tabID;
    if (isActive)
        m_impl->document.finishTyping();
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
    return !app.isLoading.get() && !document.isUnreadable() && isBlank(document.text());
}

/// A note that looks empty goes to the Trash only when the disk agrees: another program may have filled it.
bool AppState::Impl::isStillEmpty(const Note& note, bool wasActive)
{
    const auto unsaved = words.stateOf(note.url);
    if ((!wasActive && note.byteSize != 0) || (unsaved && unsaved != UnsavedWords::State::kept))
        return false;
    const auto info = services.files.stat(note.url);
    return info ? info->size == note.byteSize : saysMissing(info.error());
}

void AppState::deleteNote(const Note& note)
{
    const Note deleted = note; // the record goes with the first step
    const auto tab = m_impl->tabs.find(NoteSource{deleted.id});
    OpenDocument& document = m_impl->document;
    std::optional<Rope> lastWords = m_impl->words.queue().pendingText(deleted.url);
    if (tab && tab == activeTab()) {
        // No save may make the file again, and the Trash gets it without the last words.
        document.finishTyping();
        m_impl->saveTask.cancel();
        if (isDirty.get())
            lastWords = document.text();
        static_cast<void>(document.rescue(UnsavedWords::Retry::recoveryOnly));
        document.wordsWentElsewhere();
    }
    m_impl->words.giveUp(deleted.url);
    store.trashNote(
        deleted, [self = std::weak_ptr(m_impl->self), deleted, lastWords](const Status& isInTrash) {
            const auto impl = self.lock();
            if (impl && isInTrash)
                impl->offerToRestore({.note = deleted, .name = deleted.title, .lastWords = lastWords});
        });
    if (tab)
        m_impl->removeTab(tab->id);
    saveSession();
}

void AppState::Impl::offerToRestore(TrashedNote trashed)
{
    app.m_trashedNote.set(std::move(trashed));
    trashedNoteTask = services.scheduler.after(restoreOffer, [this] { app.m_trashedNote.set(std::nullopt); });
}

void AppState::restoreTrashedNote()
{
    const auto trashed = trashedNote.get();
    if (!trashed)
        return;
    m_impl->trashedNoteTask.cancel();
    m_trashedNote.set(std::nullopt);
    store.restoreTrashedNote(trashed->note, [this, lastWords = trashed->lastWords](const Result<Note>& note) {
        if (!note)
            return showNotice("Не удалось вернуть заметку: " + note.error().message);
        if (lastWords)
            static_cast<void>(store.saveNoteText(*lastWords, note->id)); // a failure leaves them in recovery
        openNote(note->id);
    });
}

void AppState::Impl::removeTab(const Uuid& id)
{
    if (!tabs.find(id))
        return;
    const bool wasActive = app.activeTabID.get() == id;
    if (app.tabs->size() == 1)
        showFreshNote();
    else
        tabs.remove(id);
    if (wasActive)
        loadActiveDocument();
}

// ---- When there is no tab

void AppState::Impl::showOnly(const Note& note)
{
    const auto tab = std::make_shared<EditorTab>(NoteSource{note.id}, note.title);
    tabs.replaceAll({tab}, tab->id);
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
