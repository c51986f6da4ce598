#include "core/state/Impl.h"

#include "text/Unicode.h"

#include <algorithm>
#include <array>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr std::array<Duration, 3> retryDelays = {2s, 10s, 60s}; ///< after a save that failed

/// As a part of a sentence: "Нет места на диске" becomes "нет места на диске".
std::string withinSentence(const std::string& words)
{
    const std::u16string text = utf16(words);
    const std::u16string_view first = firstGraphemes(text, 1);
    return utf8(lowercase(first)) + utf8(std::u16string_view(text).substr(first.size()));
}

} // namespace

void AppState::textDidChange()
{
    const bool isShown = m_impl->document.tabID() == activeTabID.get();
    if (!activeTab() || !isShown || isLoading.get() || isReadOnly.get())
        return; // an edit of the empty text that stands in while a document is being read
    m_impl->document.edited();
    m_impl->scheduleSave(saveDelay);
    scheduleStats(Immediate::no);
}

void AppState::Impl::scheduleSave(Duration delay)
{
    saveTask = services.scheduler.after(delay, [this] { app.flushSave(AllowBackground::yes); });
}

void AppState::flushSave(AllowBackground allowBackground)
{
    OpenDocument& document = m_impl->document;
    m_impl->saveTask.cancel();
    const auto tab = activeTab();
    if (!isDirty.get() || isLoading.get() || !tab || document.tabID() != tab->id)
        return;
    document.takeEditorText();
    m_impl->announceEncoding(*tab);
    if (!m_impl->urlOf(*tab)) // its note has gone
        return;
    const auto result = document.save(allowBackground);
    if (!result)
        return;
    if (*result)
        m_impl->saved(*tab, **result);
    else if (result->error().code == changedOutside)
        m_impl->activeNoteChanged();
    else
        m_impl->saveFailed(result->error());
}

void AppState::Impl::saved(EditorTab& tab, const OpenDocument::Saved& saved)
{
    failedSaves = 0;
    if (saved.hasReplacedOutsideVersion)
        app.showNotice(fileChangedNotice);
    lastFlushAt = services.scheduler.now();
    if (const NoteSource* source = tab.note()) {
        app.store.noteDidSave(source->id, document.currentText(), saved.bytes);
        if (const Note* note = app.store.find(source->id))
            tabs.setTitle(tab, note->title);
    }
    document.wasSaved();
    detectLanguageFromContent();
}

void AppState::Impl::saveFailed(const Error& error)
{
    services.log.line("Quillmark: save failed: " + error.message);
    scheduleSave(retryDelays[std::min(failedSaves++, retryDelays.size() - 1)]);
    showSafety();
}

void AppState::Impl::queuedTextSaved(const UnsavedWords::Events::Saved& saved)
{
    if (saved.file.hasReplacedOutsideVersion)
        app.showNotice(fileChangedNotice);
    if (saved.facts.note)
        app.store.setByteSize(*saved.facts.note, saved.file.bytes);
    if (saved.isAll && saved.document == document.id())
        document.wasSaved();
}

/// A document that was read in an 8-bit encoding is written as UTF-8, and the user is told so once a tab.
void AppState::Impl::announceEncoding(EditorTab& tab)
{
    const TextEncoding encoding = app.encodingName.get();
    if (!changesWhenWritten(encoding))
        return;
    if (!std::exchange(tab.encodingNoticeShown, true))
        app.showNotice("Файл был в " + std::string(nameOf(encoding)) + " — пересохранён в UTF-8");
    document.becomeUtf8();
}

/// What the ledger says of the words, for the status bar, the tabs and the banner.
void AppState::Impl::showSafety()
{
    app.m_isSaved.set(!document.isDirty.get() && words.isSafe(document.id()));
    const auto unsafe = words.unsafe(document.id());
    for (const auto& tab : *tabs.tabs) {
        const bool isActive = tab == tabs.active();
        if (!isActive && !tab->isDirty.get() && !unsafe)
            continue;
        const auto url = isActive ? std::nullopt : urlOf(*tab);
        tabs.setDirty(*tab,
            isActive ? document.isDirty.get() : url && words.stateOf(*url) == UnsavedWords::State::refused);
    }
    if (!unsafe)
        return app.m_unsafeWords.set(std::nullopt);
    const Path& file = unsafe->facts.file;
    const std::string name = unsafe->facts.note ? displayName(file.stem()) : displayName(file);
    std::string text = "Не удалось сохранить «" + name + "»: " + withinSentence(unsafe->error.message) + ".";
    if (unsafe->isInMemoryOnly)
        text += " Текст пока только в памяти.";
    app.m_unsafeWords.set(UnsafeWords{.name = name, .text = std::move(text)});
}

} // namespace quillmark
