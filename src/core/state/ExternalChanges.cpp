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

/// Whether the file is the one that was last read or written, or has the same bytes.
bool AppState::Impl::isAsKnown(const Path& url)
{
    const auto info = services.files.stat(url);
    return info && services.writer.known().stateOf(services.files, url, *info) == KnownFiles::State::asKnown;
}

// ---- Files

void AppState::Impl::watchActiveFile(const EditorTab& tab)
{
    if (const FileSource* file = tab.file())
        activeFileWatcher
            = services.watching.watchFile(file->url, [this] { scheduleFileCheck(fileCheckDelay); });
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
    if (writeQueue.pendingText(file->url) || isAsKnown(file->url))
        return;
    const auto info = services.files.stat(file->url);
    if (!info && saysMissing(info.error())) {
        app.showNotice("Файл удалён или перемещён — текст в памяти, сохранится при следующей правке");
        app.isDirty.set(true);
        tab->isDirty.set(true);
        journal.textChanged(document.id);
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
        else if (contains(changedIDs, *id) && !isAsKnown(note->url))
            activeNoteChanged(note->url);
    }
    app.saveSession();
}

/// The user's words become a note of their own, and the editor shows what the other program wrote.
void AppState::Impl::activeNoteChanged(Path url)
{
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
    if (isShown && app.isDirty.get()) // what has been typed since is one copy with it
        return activeNoteChanged(url);
    if (text)
        keepAsConflictCopy(id, *text, url);
    if (isShown)
        loadActiveDocument();
}

} // namespace quillmark
