// What happens to text whose file cannot be written when the program has to let go of it.
#include "core/state/Impl.h"

namespace quillmark {

/// Puts the active document's unsaved text into the recovery folder, unless nothing was typed since the last
/// time.
void AppState::Impl::rescueUnsavedText()
{
    const auto tab = app.activeTab();
    const bool isKept = rescued == document.id && journal.version(document.id) == 0;
    if (!app.isDirty.get() || !tab || isKept)
        return;
    rescued = document.id;
    keep(document.id,
        {.original = urlOf(*tab).value_or(Path(tab->title.get() + ".txt")), .text = app.editorText()});
    keepWhatCouldNotBeKept();
}

/// The journal goes only when the recovery folder has the text: until then it is the only copy on the disk.
void AppState::Impl::keep(const Uuid& id, Journal::Snapshot text)
{
    if (text.text.isEmpty() || services.recovery.keep(text.text, text.original)) {
        unkept.erase(id);
        journal.forget(id);
    } else {
        unkept.insert_or_assign(id, std::move(text));
        journal.textChanged(id); // which keeps trying
    }
}

/// A queued text whose document goes: it is written at once, or kept, and the journal knows it is safe.
void AppState::Impl::settleQueuedText(const Path& url)
{
    if (writeQueue.finish(url))
        return;
    const auto text = writeQueue.pendingText(url);
    const auto save = queuedSaves.extract(url.native());
    writeQueue.discard(url);
    if (text)
        keep(save ? save.mapped().document : Uuid::random(), {.original = url, .text = *text});
}

void AppState::Impl::keepWhatCouldNotBeKept()
{
    for (auto& [id, text] : std::map(unkept))
        keep(id, std::move(text));
}

/// The process is about to end: what is still queued is written, or kept.
void AppState::Impl::keepWhatCouldNotBeWritten()
{
    for (const WriteRequest& request : writeQueue.finishAll()) {
        const auto save = queuedSaves.find(request.target.native());
        const Uuid id = save != queuedSaves.end() ? save->second.document : Uuid::random();
        keep(id, {.original = request.target, .text = request.text});
    }
    keepWhatCouldNotBeKept();
}

std::optional<Journal::Snapshot> AppState::Impl::journalSnapshot(const Uuid& id) const
{
    if (id == document.id && app.isDirty.get()) {
        const auto tab = app.activeTab();
        const auto url = tab ? urlOf(*tab) : std::nullopt;
        return Journal::Snapshot{.original = url.value_or(Path()), .text = app.editorText()};
    }
    if (const auto text = unkept.find(id); text != unkept.end())
        return text->second;
    for (const auto& [path, save] : queuedSaves) {
        const auto text = save.document == id ? writeQueue.pendingText(path) : std::nullopt;
        if (text)
            return Journal::Snapshot{.original = path, .text = *text};
    }
    return std::nullopt;
}

void AppState::Impl::queuedWriteEnded(const WriteQueue::Outcome& outcome)
{
    const auto save = queuedSaves.find(outcome.target.native());
    if (save == queuedSaves.end())
        return;
    if (!outcome.result) {
        if (outcome.result.error().code == changedOutside)
            queuedNoteWasChanged(outcome.target);
        return;
    }
    if (outcome.result->hasReplacedOutsideVersion)
        app.showNotice(fileChangedNotice);
    journal.saved(save->second.document, outcome.version);
    if (save->second.note)
        app.store.setByteSize(*save->second.note, outcome.result->bytes);
    if (!writeQueue.pendingText(outcome.target))
        queuedSaves.erase(save);
}

} // namespace quillmark
