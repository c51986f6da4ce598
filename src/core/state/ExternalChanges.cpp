// What other programs do to the files of open documents. The user's words win where there are any; nothing of
// either side is lost.
#include "core/state/Impl.h"

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

/// Calls `then` unless the file is the one that was last read or written, or has the same bytes. A disk that
/// does not say is asked again later.
void AppState::Impl::lookAtFile(const Path& url, std::function<void(FileVerdict)> then)
{
    looking = fileLook.look(
        url, [this, url, then, id = document.id(), flushedAt = lastFlushAt](FileVerdict verdict) {
            if (document.id() != id || document.isLoading.get())
                return;
            if (lastFlushAt != flushedAt) // it was written meanwhile
                return lookAtFile(url, then);
            if (verdict == FileVerdict::unreachable)
                scheduleFileCheck(unreachablePause);
            else if (verdict != FileVerdict::ours)
                then(verdict);
        });
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
    const auto tab = tabs.active();
    const auto url = tab ? urlOf(*tab) : std::nullopt;
    if (!url)
        return;
    if (app.isLoading.get()) // what is being read may be the old file still
        return scheduleFileCheck(fileCheckDelay);
    const SteadyTime now = services.scheduler.now();
    if (lastFlushAt && now - *lastFlushAt <= ownWriteWindow) // looked at once more when it is over
        return scheduleFileCheck(*lastFlushAt + ownWriteWindow - now + 1ms);
    if (words.queue().pendingText(*url))
        return;
    lookAtFile(*url, [this, isNote = tab->note() != nullptr](FileVerdict verdict) {
        if (!isNote)
            activeFileChanged(verdict);
        else if (verdict == FileVerdict::changed) // that its file has gone is for the store to find
            activeNoteHasAnotherVersion();
    });
}

void AppState::Impl::activeFileChanged(FileVerdict verdict)
{
    document.finishTyping();
    if (document.isUnreadable() && document.isDirty.get())
        return; // what is typed beside bytes that nobody could read is not for their place
    if (verdict == FileVerdict::missing && document.isReadOnly.get())
        return; // a log that is about to be started anew: what is shown stays, and is never written
    if (verdict == FileVerdict::missing) {
        app.showNotice("Файл удалён или перемещён — текст в памяти, сохранится при следующей правке");
        document.vanished();
    } else if (document.isDirty.get() && document.isWrittenAlready()) {
        app.flushSave(AllowBackground::no);
    } else if (document.isDirty.get()) {
        app.showNotice(fileChangedNotice);
    } else {
        document.reload();
    }
}

// ---- Notes

void AppState::Impl::handleExternalNoteChanges(
    const std::vector<Uuid>& changedIDs, const std::vector<Uuid>& removedIDs)
{
    tabs.removeIf([&](const EditorTab& tab) { return tab.note() && contains(removedIDs, tab.note()->id); });
    for (const auto& tab : *app.tabs) {
        if (tab->note() && contains(changedIDs, tab->note()->id))
            tabs.setTitle(*tab, app.store.find(tab->note()->id)->title);
    }
    if (const auto id = app.activeNoteID()) {
        const Note* const note = app.store.find(*id);
        if (contains(removedIDs, *id))
            activeNoteRemoved(*app.activeTabID.get());
        else if (contains(changedIDs, *id))
            lookAtFile(note->url, [this](FileVerdict) { activeNoteHasAnotherVersion(); });
    }
    app.saveSession();
}

/// Whether it differs from the user's words, a save finds out: now, or once the disk takes one.
void AppState::Impl::activeNoteHasAnotherVersion()
{
    document.finishTyping();
    if (app.isDirty.get())
        app.flushSave(AllowBackground::no);
    else
        activeNoteChanged();
}

/// The user's words become a note of their own, and the editor shows what the other program wrote. Words that
/// nothing takes stay where they are.
void AppState::Impl::activeNoteChanged()
{
    document.finishTyping();
    if (app.isDirty.get()) {
        if (!keepAsConflictCopy(document.id(), document.facts(), document.text())) {
            static_cast<void>(words.takeBack(document.file())); // the editor has them still
            return saveFailed({.message = "Файл изменён снаружи"});
        }
        document.wordsWentElsewhere();
    }
    document.reload();
}

/// False when the words are neither in a note of their own nor in the recovery folder.
bool AppState::Impl::keepAsConflictCopy(const Uuid& id, const DocumentFacts& facts, const Rope& text)
{
    const auto copy = app.store.writeConflictCopy(text, facts.file);
    if (!copy)
        return words.keep(id, facts, text, UnsavedWords::Retry::recoveryOnly); // theirs stays in the file
    words.forget(id);
    app.showNotice(
        "Заметка изменена снаружи — ваша версия сохранена как «" + displayName(copy->stem()) + "»");
    return true;
}

void AppState::Impl::activeNoteRemoved(const Uuid& tabID)
{
    document.finishTyping();
    saveTask.cancel();
    static_cast<void>(document.rescue());
    document.wordsWentElsewhere();
    app.closeTab(tabID);
    app.showNotice("Файл заметки удалён снаружи");
}

/// A queued text of a note met another program's version.
void AppState::Impl::queuedNoteWasChanged(const Uuid& id, const DocumentFacts& facts, const Rope& text)
{
    const bool isShown = document.id() == id;
    if (isShown)
        document.finishTyping();
    if (isShown && app.isDirty.get()) // what has been typed since is one copy with it
        return activeNoteChanged();
    if (keepAsConflictCopy(id, facts, text) && isShown)
        document.reload();
    else if (isShown)
        loadActiveDocument();
}

} // namespace quillmark
