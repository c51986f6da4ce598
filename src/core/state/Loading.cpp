#include "core/state/Impl.h"

#include "text/Unicode.h"

namespace quillmark {

void AppState::Impl::loadActiveDocument()
{
    saveTask.cancel();
    looking.cancel();
    failedSaves = 0;
    activeFileWatcher.reset();
    const auto tab = tabs.active();
    const auto url = tab ? urlOf(*tab) : std::nullopt;
    if (!url)
        return document.showNothing(app.activeTabID.get());
    app.m_syntaxLanguage.set(tab->languageOverride.value_or(languageForURL(*url)));
    watchActiveFile(*tab);
    const Note* note = tab->note() ? app.store.find(tab->note()->id) : nullptr;
    document.load({.tabID = tab->id,
        .file = *url,
        .note = note ? std::optional(note->id) : std::nullopt,
        .recordedSize = note ? note->byteSize : 0});
}

void AppState::Impl::willShow()
{
    app.setCursor(1, 1);
}

void AppState::Impl::didShow()
{
    detectLanguageFromContent();
    app.scheduleStats(AppState::Immediate::yes);
    showSafety();
}

void AppState::Impl::detectLanguageFromContent()
{
    const auto tab = tabs.active();
    if ((tab && tab->languageOverride) || app.syntaxLanguage.get() != Language::plain)
        return;
    const std::u16string start = document.currentText().text({0, sniffedUnits});
    app.m_syntaxLanguage.set(guessLanguage(firstGraphemes(start, sniffedCharacters)));
}

} // namespace quillmark
