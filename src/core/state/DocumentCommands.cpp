// What the user does to the active document as a whole, and to the notes folder.
#include "core/SaveAsFormat.h"
#include "core/state/Impl.h"
#include "notes/NoteNames.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cerrno>

namespace quillmark {
namespace {

constexpr int64_t leastPastedCharacters = 20; ///< that tell a language
constexpr std::string_view panelFolderKey = "panelFolder"; ///< the bytes of its path

std::string forUser(const Path& path)
{
    return utf8(utf16(path.native()));
}

} // namespace

// ---- The document

void AppState::setLineEndings(std::string_view value)
{
    const auto tab = activeTab();
    if (value == lineEndings.get() || (value != "LF" && value != "CRLF") || isReadOnly.get()
        || isLoading.get())
        return;
    lineEndings.set(std::string(value));
    isDirty.set(true);
    if (tab)
        tab->isDirty.set(true);
    m_impl->journal.textChanged(m_impl->document.id);
    m_impl->scheduleSave();
    showNotice("Переносы строк: " + std::string(value) + " — файл будет пересохранён");
}

void AppState::setLanguageOverride(Language language)
{
    syntaxLanguage.set(language);
    if (const auto tab = activeTab())
        tab->languageOverride = language;
}

void AppState::detectLanguageAfterPaste(std::u16string_view text, const PlainTextView& view)
{
    const auto tab = activeTab();
    if (&view != textView() || !tab || tab->languageOverride || syntaxLanguage.get() != Language::plain)
        return;
    const std::u16string_view start = firstGraphemes(text.substr(0, sniffedUnits), sniffedCharacters);
    if (graphemeCount(start) >= leastPastedCharacters)
        syntaxLanguage.set(guessLanguage(start));
}

void AppState::goToLine(int64_t line)
{
    goToLineVisible.set(false);
    PlainTextView* const view = textView();
    if (line < 1 || !view)
        return;
    const Line wanted{std::min(line, view->text().lineCount()) - 1};
    view->select(Selection::at({view->text().startOf(wanted)}));
    view->bringIntoView(view->selection().caret);
    view->becomeFirstResponder();
}

void AppState::scrollEditorToFraction(double fraction)
{
    PlainTextView* const view = textView();
    if (!view)
        return;
    const double document = view->contentHeight();
    const double visible = view->visibleHeight();
    if (visible < document)
        view->scrollTo(std::max(0.0, std::min(document * fraction - visible * 0.5, document - visible)));
}

// ---- Another name

std::optional<AppState::SaveSuggestion> AppState::saveSuggestion() const
{
    const auto tab = activeTab();
    if (!tab)
        return std::nullopt;
    const std::string extension(defaultSaveExtension(syntaxLanguage.get()));
    const std::string base = tab->file() ? fileStem(tab->file()->url) : fileBaseName(tab->title.get());
    return SaveSuggestion{.folder = panelFolder().value_or(store.folderURL.get()),
        .name = base + "." + extension,
        .extension = extension};
}

void AppState::saveAs(const Path& path)
{
    const auto tab = activeTab();
    if (!tab || isLoading.get())
        return;
    const Path url = standardised(path);
    m_impl->currentText = editorText();
    const auto written = m_impl->writeUnder(url);
    if (!written)
        return showNotice("Не удалось сохранить: " + written.error().message);
    m_impl->adoptSavedAsFile(url, *tab);
    rememberPanelFolder(url);
}

std::optional<Path> AppState::panelFolder() const
{
    const auto tab = activeTab();
    if (const FileSource* file = tab ? tab->file() : nullptr)
        return file->url.parent_path();
    const auto stored = m_impl->services.defaults.data(panelFolderKey);
    const auto info = stored ? m_impl->services.files.stat(*stored) : systemFailure(ENOENT);
    return info && info->kind == FileInfo::Kind::folder ? std::optional<Path>(*stored) : std::nullopt;
}

void AppState::rememberPanelFolder(const Path& chosenFile)
{
    m_impl->services.defaults.setData(panelFolderKey, chosenFile.parent_path().native());
}

Status AppState::Impl::writeUnder(const Path& url)
{
    const auto tab = app.activeTab();
    if (urlOf(*tab) == url) {
        if (const Status allowed = mayReplace(url); !allowed)
            return allowed;
        if (const Status kept = keepBytes(url); !kept)
            return kept;
    }
    queuedSaves.erase(url.native()); // what is queued is older
    const uint64_t version = journal.version(document.id);
    const auto written = writeQueue.writeNow({.target = url,
        .text = currentText,
        .lineEnds = lineEnds(),
        .outsideVersion = OutsideVersion::replaceKept,
        .version = version});
    if (!written)
        return std::unexpected(written.error());
    journal.saved(document.id, version);
    unkept.erase(document.id);
    return {};
}

/// The active tab shows the new file from now on; no other tab does.
void AppState::Impl::adoptSavedAsFile(const Path& url, EditorTab& tab)
{
    const FileSource source{url};
    Tabs rest = app.tabs.get();
    std::erase_if(
        rest, [&](const auto& other) { return other->id != tab.id && *other->source == TabSource(source); });
    tab.source.set(source);
    tab.title.set(displayName(url));
    tab.isDirty.set(false);
    app.tabs.set(std::move(rest));
    app.isDirty.set(false);
    app.encodingName.set("UTF-8");
    document.unreadable.reset();
    document.isLossy = false;
    lastFlushAt = services.scheduler.now();
    if (!tab.languageOverride)
        app.syntaxLanguage.set(languageForURL(url));
    watchActiveFile(tab);
    app.saveSession();
    app.showNotice("Сохранено: " + forUser(url));
}

// ---- The notes folder

void AppState::chooseNotesFolder(const Path& folder)
{
    m_impl->finishTyping();
    flushSave(AllowBackground::no);
    m_impl->rescueUnsavedText();
    commitActiveNoteTitle();
    saveSession();
    if (!store.setNotesFolder(folder))
        return showNotice("Не удалось получить доступ к папке");
    reloadNotesFolder();
    showNotice("Папка заметок: " + forUser(folder));
}

void AppState::reloadNotesFolder()
{
    m_impl->saveTask.cancel();
    m_impl->rescueUnsavedText();
    isDirty.set(false);
    Tabs rest = fileTabs();
    if (!store.notes->empty()) {
        const Note& first = store.notes->front();
        rest.insert(rest.begin(), std::make_shared<EditorTab>(NoteSource{first.id}, first.title));
    }
    if (rest.empty()) {
        m_impl->showFreshNote();
    } else {
        activeTabID.set(rest.front()->id);
        tabs.set(std::move(rest));
    }
    m_impl->loadActiveDocument();
    saveSession();
}

} // namespace quillmark
