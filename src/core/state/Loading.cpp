#include "core/state/Impl.h"

#include "text/Unicode.h"

#include <algorithm>

#include <malloc.h>

namespace quillmark {
namespace {

constexpr int64_t hugeText = 4 * 1024 * 1024; ///< units; what it leaves behind goes back to the system

int64_t sizeOf(FileSystem& files, const Path& url)
{
    const auto info = files.stat(url);
    return info && info->kind == FileInfo::Kind::regular ? info->size : 0;
}

} // namespace

void AppState::Impl::loadActiveDocument()
{
    loadTask.cancel();
    saveTask.cancel();
    comparing.cancel();
    activeFileWatcher.reset();
    app.isLoading.set(false);
    const auto tab = app.activeTab();
    document = {};
    document.tabID = app.activeTabID.get();
    const auto url = tab ? urlOf(*tab) : std::nullopt;
    if (!url) {
        app.isReadOnly.set(false);
        return applyLoadedDocument({});
    }

    const bool isOnDisk = writeQueue.finish(*url).has_value();
    const Note* note = tab->note() ? app.store.find(tab->note()->id) : nullptr;
    const int64_t size
        = std::max(note ? note->byteSize : 0, sizeOf(services.files, *url)); // it may have grown
    app.isReadOnly.set(size > largestEditableFile);
    app.syntaxLanguage.set(tab->languageOverride.value_or(languageForURL(*url)));
    watchActiveFile(*tab);

    if (!isOnDisk && loadQueuedText(*url))
        return;
    if (size >= backgroundThreshold)
        loadInBackground(*url);
    else
        publish(*url, readTextFile(services.files, *url));
}

/// The disk does not take a text that is newer than the file: the document goes on where it was left.
bool AppState::Impl::loadQueuedText(const Path& url)
{
    const auto text = writeQueue.pendingText(url);
    const auto save = queuedSaves.find(url.native());
    if (!text || save == queuedSaves.end())
        return false;
    document.id = save->second.document;
    applyLoadedDocument(
        {.text = *text, .lineEndings = save->second.lineEnds == LineEnds::crlf ? "CRLF" : "LF"});
    return true;
}

void AppState::Impl::loadInBackground(const Path& url)
{
    app.isLoading.set(true);
    replaceText({});
    loadTask = services.scheduler.background(
        Priority::userInitiated,
        [&files = services.files, url](const CancelToken& token) { return readTextFile(files, url, token); },
        [this, url, tabID = document.tabID](Result<TextFile> read) {
            if (app.activeTabID.get() != tabID)
                return;
            const auto tab = app.activeTab();
            if (tab && urlOf(*tab) != url) // renamed meanwhile
                return loadActiveDocument();
            publish(url, std::move(read));
        });
}

void AppState::Impl::publish(const Path& url, Result<TextFile> read)
{
    if (!read && saysMissing(read.error()))
        services.writer.known().rememberMissing(url);
    else if (!read)
        document.unreadable = read.error();
    if (!read)
        return applyLoadedDocument({});
    services.writer.known().remember(url, FileStamp(read->info, read->hash));
    document.isLossy = read->content.lossy;
    applyLoadedDocument(std::move(read->content));
}

void AppState::Impl::applyLoadedDocument(TextFileReader::Result result)
{
    app.encodingName.set(std::move(result.encodingName));
    app.lineEndings.set(std::move(result.lineEndings));
    app.isDirty.set(false);
    if (const auto tab = app.activeTab())
        tab->isDirty.set(false);
    app.isLoading.set(false);
    app.cursorLine.set(1);
    app.cursorColumn.set(1);
    replaceText(std::move(result.text));
    detectLanguageFromContent();
    app.scheduleStats(AppState::Immediate::yes);
}

/// Gives the editor another text. Taking a large one apart takes time, so the old one dies on another thread.
void AppState::Impl::replaceText(Rope text)
{
    Rope shown = app.editorText();
    Rope loaded = std::exchange(currentText, std::move(text));
    app.loadGeneration.set(app.loadGeneration.get() + 1);
    const int64_t length = std::max(shown.length(), loaded.length());
    if (length < backgroundThreshold)
        return;
    services.scheduler.runInBackground(
        Priority::utility, [a = std::move(shown), b = std::move(loaded), length]() mutable {
            a = b = Rope();
            if (length >= hugeText)
                malloc_trim(0); // the heap would keep it
        });
}

void AppState::Impl::detectLanguageFromContent()
{
    const auto tab = app.activeTab();
    if ((tab && tab->languageOverride) || app.syntaxLanguage.get() != Language::plain)
        return;
    const std::u16string start = currentText.text({0, sniffedUnits});
    app.syntaxLanguage.set(guessLanguage(firstGraphemes(start, sniffedCharacters)));
}

} // namespace quillmark
