// What other programs do to the files of open documents. The user's words win where there are any; nothing of
// either side is lost.
#include "core/state/Impl.h"

#include "text/Unicode.h"

#include <algorithm>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration fileCheckDelay = 400ms; ///< from the last notice of a burst
constexpr Duration ownWriteWindow = 1500ms; ///< after a flush a notice is taken for one of our own save

bool contains(const std::vector<Uuid>& ids, const Uuid& id)
{
    return std::ranges::find(ids, id) != ids.end();
}

} // namespace

/// Calls `then` unless the file is the one that was last read or written, or has the same bytes. Large ones
/// are compared in the background, and nothing comes of it when the document is another one by then.
void AppState::Impl::ifChanged(const Path& url, std::function<void()> then)
{
    using State = KnownFiles::State;
    const auto info = services.files.stat(url);
    KnownFiles& known = services.writer.known();
    if (!info || info->size < backgroundThreshold) {
        if (!info || known.stateOf(services.files, url, *info) != State::asKnown)
            then();
        return;
    }
    comparing = services.scheduler.background(
        Priority::userInitiated,
        [&known, &files = services.files, url, info = *info](
            const CancelToken&) { return known.stateOf(files, url, info); },
        [this, url, then = std::move(then), id = document.id, flushedAt = lastFlushAt](State state) {
            if (document.id != id || app.isLoading.get() || state == State::asKnown)
                return;
            if (lastFlushAt != flushedAt) // it was written meanwhile
                return ifChanged(url, then);
            then();
        });
}

/// Whether another program has written just what a save would write. Nobody knows of a large text.
bool AppState::Impl::isWrittenAlready(const Path& url, const FileInfo& info)
{
    const Rope text = app.editorText();
    if (info.size >= backgroundThreshold || text.length() > info.size)
        return false;
    const auto ours = hashOf(contentOf(text, lineEnds()));
    const auto theirs = hashOf(contentOfFile(services.files, url));
    return ours && theirs && *ours == *theirs;
}

// ---- Files

void AppState::Impl::watchActiveFile(const EditorTab& tab)
{
    if (const FileSource* file = tab.file())
        activeFileWatcher
            = services.watching.watchFile(file->url, [this] { scheduleFileCheck(fileCheckDelay); });
}

/// Some changes nobody announces: on network disks, or above a folder that is watched.
void AppState::didBecomeActive()
{
    store.watchAnew();
    if (const auto tab = activeTab(); tab && tab->file()) {
        m_impl->watchActiveFile(*tab);
        m_impl->scheduleFileCheck(fileCheckDelay);
    }
}

void AppState::Impl::scheduleFileCheck(Duration delay)
{
    fileCheckTask = services.scheduler.after(delay, [this] { checkActiveFileOnDisk(); });
}

void AppState::Impl::checkActiveFileOnDisk()
{
    const auto tab = app.activeTab();
    const FileSource* const file = tab ? tab->file() : nullptr;
    if (!file)
        return;
    if (app.isLoading.get()) // what is being read may be the old file still
        return scheduleFileCheck(fileCheckDelay);
    const SteadyTime now = services.scheduler.now();
    if (lastFlushAt && now - *lastFlushAt <= ownWriteWindow) // looked at once more when it is over
        return scheduleFileCheck(*lastFlushAt + ownWriteWindow - now + 1ms);
    if (!writeQueue.pendingText(file->url))
        ifChanged(file->url, [this, url = file->url] { activeFileChanged(url); });
}

void AppState::Impl::activeFileChanged(const Path& url)
{
    finishTyping();
    const auto tab = app.activeTab();
    const auto info = services.files.stat(url);
    if (!info && saysMissing(info.error())) {
        app.showNotice("Файл удалён или перемещён — текст в памяти, сохранится при следующей правке");
        app.isDirty.set(true);
        tab->isDirty.set(true);
        journal.textChanged(document.id);
    } else if (app.isDirty.get() && info && isWrittenAlready(url, *info)) {
        app.flushSave(AllowBackground::no);
    } else if (app.isDirty.get()) {
        app.showNotice(fileChangedNotice);
    } else {
        loadActiveDocument();
    }
}

// ---- Notes

void AppState::Impl::handleExternalNoteChanges(
    const std::vector<Uuid>& changedIDs, const std::vector<Uuid>& removedIDs)
{
    Tabs rest = app.tabs.get();
    std::erase_if(rest, [&](const auto& tab) {
        return tab->note() && tab->id != app.activeTabID.get() && contains(removedIDs, tab->note()->id);
    });
    app.tabs.set(std::move(rest));
    for (const auto& tab : *app.tabs) {
        if (tab->note() && contains(changedIDs, tab->note()->id))
            tab->title.set(app.store.find(tab->note()->id)->title);
    }
    if (const auto id = app.activeNoteID()) {
        const Note* const note = app.store.find(*id);
        if (contains(removedIDs, *id))
            activeNoteRemoved(*app.activeTabID.get());
        else if (contains(changedIDs, *id))
            ifChanged(note->url, [this, url = note->url] { activeNoteHasAnotherVersion(url); });
    }
    app.saveSession();
}

/// Whether it differs from the user's words, a save finds out: now, or once the disk takes one.
void AppState::Impl::activeNoteHasAnotherVersion(const Path& url)
{
    finishTyping();
    if (app.isDirty.get())
        app.flushSave(AllowBackground::no);
    else
        activeNoteChanged(url);
}

/// The user's words become a note of their own, and the editor shows what the other program wrote.
void AppState::Impl::activeNoteChanged(Path url)
{
    finishTyping();
    const auto tab = app.activeTab();
    if (app.isDirty.get()) {
        keepAsConflictCopy(document.id, app.editorText(), url);
        app.isDirty.set(false);
        tab->isDirty.set(false);
    }
    loadActiveDocument();
}

/// The document's journal goes when the text is safe.
void AppState::Impl::keepAsConflictCopy(const Uuid& id, const Rope& text, const Path& url)
{
    const auto copy = app.store.writeConflictCopy(text, url);
    if (!copy)
        return keep(id, {.original = url, .text = text});
    unkept.erase(id);
    journal.forget(id);
    const std::string name = utf8(utf16(copy->stem().native()));
    app.showNotice("Заметка изменена снаружи — ваша версия сохранена как «" + name + "»");
}

void AppState::Impl::activeNoteRemoved(const Uuid& tabID)
{
    finishTyping();
    saveTask.cancel();
    rescueUnsavedText();
    app.isDirty.set(false);
    app.closeTab(tabID);
    app.showNotice("Файл заметки удалён снаружи");
}

/// A queued text of a note met another program's version.
void AppState::Impl::queuedNoteWasChanged(const Path& url)
{
    const Uuid id = queuedSaves.extract(url.native()).mapped().document;
    const auto text = writeQueue.pendingText(url);
    writeQueue.discard(url);
    const auto tab = app.activeTab();
    const bool isShown = tab && tab->note() && urlOf(*tab) == url && document.id == id;
    if (isShown)
        finishTyping();
    if (isShown && app.isDirty.get()) // what has been typed since is one copy with it
        return activeNoteChanged(url);
    if (text)
        keepAsConflictCopy(id, *text, url);
    if (isShown)
        loadActiveDocument();
}

} // namespace quillmark
