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

} // namespace

// ---- The document

void AppState::setLineEndings(LineEnds value)
{
    if (!m_impl->document.setLineEndings(value))
        return;
    m_impl->scheduleSave(saveDelay);
    showNotice("Переносы строк: " + std::string(nameOf(value)) + " — файл будет пересохранён");
}

void AppState::setLanguageOverride(Language language)
{
    m_syntaxLanguage.set(language);
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
        m_syntaxLanguage.set(guessLanguage(start));
}

void AppState::goToLine(int64_t line)
{
    m_goToLineVisible.set(false);
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
    m_impl->document.takeEditorText();
    const auto written = m_impl->document.saveAs(url);
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

/// The active tab shows the new file from now on; no other tab does.
void AppState::Impl::adoptSavedAsFile(const Path& url, EditorTab& tab)
{
    const TabSource source = FileSource{url};
    tabs.removeIf([&](const EditorTab& other) { return *other.source == source; });
    tabs.setSource(tab, source);
    tabs.setTitle(tab, displayName(url));
    lastFlushAt = services.scheduler.now();
    if (!tab.languageOverride)
        app.m_syntaxLanguage.set(languageForURL(url));
    watchActiveFile(tab);
    app.saveSession();
    app.showNotice("Сохранено: " + displayPath(url));
}

// ---- The notes folder

void AppState::chooseNotesFolder(const Path& folder)
{
    m_impl->document.finishTyping();
    flushSave(AllowBackground::no);
    static_cast<void>(m_impl->document.rescue());
    commitActiveNoteTitle();
    saveSession();
    if (!store.setNotesFolder(folder))
        return showNotice("Не удалось получить доступ к папке");
    reloadNotesFolder();
    showNotice("Папка заметок: " + displayPath(folder));
}

void AppState::reloadNotesFolder()
{
    m_impl->saveTask.cancel();
    static_cast<void>(m_impl->document.rescue());
    m_impl->document.wordsWentElsewhere();
    Tabs rest = fileTabs();
    if (!store.notes->empty()) {
        const Note& first = store.notes->front();
        rest.insert(rest.begin(), std::make_shared<EditorTab>(NoteSource{first.id}, first.title));
    }
    if (rest.empty()) {
        m_impl->showFreshNote();
    } else {
        const Uuid first = rest.front()->id;
        m_impl->tabs.replaceAll(std::move(rest), first);
    }
    m_impl->loadActiveDocument();
    saveSession();
}

} // namespace quillmark
