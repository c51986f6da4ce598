#include "core/state/Impl.h"
#include "text/Units.h"

#include <algorithm>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration saveDelay = 800ms;

int64_t utf8Length(std::span<const uint8_t> latin1)
{
    int64_t bytes = 0;
    for (const uint8_t unit : latin1)
        bytes += 1 + (unit >> 7);
    return bytes;
}

/// A surrogate counts as half of its pair. (One without its partner is written as U+FFFD: a byte more.)
int64_t utf8Length(std::span<const char16_t> units)
{
    int64_t bytes = 0;
    for (const char16_t unit : units)
        bytes += 1 + (unit >= 0x80) + (unit >= 0x800) - isSurrogate(unit);
    return bytes;
}

/// In bytes, with line feeds.
int64_t utf8Length(const Rope& text)
{
    int64_t bytes = 0;
    text.forEachChunk({0, text.length()}, [&](const Rope::Chunk& chunk) {
        bytes += std::visit([](const auto& units) { return utf8Length(units); }, chunk);
        return true;
    });
    return bytes;
}

/// Whether nobody shall wait for its write: it has backgroundThreshold bytes or more. Counts them only where
/// the length does not tell.
bool isLarge(const Rope& text)
{
    constexpr int64_t mostBytesPerUnit = 3;
    if (text.length() >= backgroundThreshold)
        return true;
    return text.length() * mostBytesPerUnit >= backgroundThreshold && utf8Length(text) >= backgroundThreshold;
}

} // namespace

void AppState::textDidChange()
{
    const auto tab = activeTab();
    if (!tab || isLoading.get()) // an edit of the empty text that stands in while a document is being read
        return;
    isDirty.set(true);
    tab->isDirty.set(true);
    m_impl->journal.textChanged(m_impl->document.id);
    m_impl->scheduleSave();
    scheduleStats(Immediate::no);
}

void AppState::Impl::scheduleSave()
{
    saveTask = services.scheduler.after(saveDelay, [this] { app.flushSave(AllowBackground::yes); });
}

void AppState::flushSave(AllowBackground allowBackground)
{
    m_impl->saveTask.cancel();
    const auto tab = activeTab();
    if (!isDirty.get() || isLoading.get() || !tab || m_impl->document.tabID != tab->id)
        return;
    m_impl->currentText = editorText();
    m_impl->announceEncoding(*tab);
    const auto url = m_impl->urlOf(*tab);
    if (!url)
        return;
    if (allowBackground == AllowBackground::yes && m_impl->document.isLossy && isLarge(m_impl->currentText))
        return m_impl->keepBytesThenSave(*url);
    const auto byteSize = m_impl->write(*tab, *url, allowBackground);
    if (!byteSize && byteSize.error().code == changedOutside)
        return m_impl->activeNoteChanged(*url);
    if (!byteSize) {
        m_impl->services.log.line("Quillmark: save failed: " + byteSize.error().message);
        return;
    }
    m_impl->lastFlushAt = m_impl->services.scheduler.now();
    if (const NoteSource* source = tab->note()) {
        store.noteDidSave(source->id, m_impl->currentText, *byteSize);
        if (const Note* note = store.find(source->id))
            tab->title.set(note->title);
    }
    isDirty.set(false);
    tab->isDirty.set(false);
    m_impl->detectLanguageFromContent();
}

/// The document stays dirty until the copy is there. A flush that somebody waits for makes its own.
void AppState::Impl::keepBytesThenSave(const Path& url)
{
    if (document.keeping.isPending())
        return;
    document.keeping = services.scheduler.background(
        Priority::utility,
        [&recovery = services.recovery, url](const CancelToken&) { return recovery.keepCopy(url); },
        [this, url](const Result<Path>& kept) {
            if (!kept && !isGone(url))
                return services.log.line("Quillmark: save failed: " + kept.error().message);
            document.isLossy = false;
            app.flushSave(AllowBackground::yes);
        });
}

/// The bytes that were no text are about to be replaced, and nothing is until they are kept.
Status AppState::Impl::keepBytes(const Path& url)
{
    document.keeping.cancel();
    if (!document.isLossy)
        return {};
    const auto kept = services.recovery.keepCopy(url);
    if (!kept && !isGone(url))
        return std::unexpected(kept.error());
    document.isLossy = false;
    return {};
}

/// A document that was read in an 8-bit encoding is written as UTF-8, and the user is told so once a tab.
void AppState::Impl::announceEncoding(EditorTab& tab)
{
    const std::string name = app.encodingName.get();
    if (name.starts_with("UTF"))
        return;
    if (!std::exchange(tab.encodingNoticeShown, true))
        app.showNotice("Файл был в " + name + " — пересохранён в UTF-8");
    app.encodingName.set("UTF-8");
}

/// Writes the current text, or queues it, and returns the size of the file as written, which of a queued text
/// is known when it is: until then it is the least that it can be.
Result<int64_t> AppState::Impl::write(const EditorTab& tab, const Path& url, AllowBackground allowBackground)
{
    if (const Status allowed = mayReplace(url); !allowed)
        return std::unexpected(allowed.error());
    if (const Status kept = keepBytes(url); !kept)
        return std::unexpected(kept.error());

    const WriteRequest request{.target = url,
        .text = currentText,
        .lineEnds = lineEnds(),
        .outsideVersion = tab.note() ? OutsideVersion::refuse : OutsideVersion::replaceKept,
        .version = journal.version(document.id)};
    if (allowBackground == AllowBackground::yes && isLarge(currentText)) {
        queuedSaves[url.native()]
            = {.document = document.id, .note = app.activeNoteID(), .lineEnds = request.lineEnds};
        writeQueue.enqueue(request);
        return currentText.length() + (request.lineEnds == LineEnds::crlf ? currentText.lineCount() - 1 : 0);
    }
    queuedSaves.erase(url.native()); // what is queued is older
    const auto written = writeQueue.writeNow(request);
    if (!written)
        return std::unexpected(written.error());
    if (written->hasReplacedOutsideVersion)
        app.showNotice(fileChangedNotice);
    journal.saved(document.id, request.version);
    unkept.erase(document.id);
    document.unreadable.reset();
    return written->bytes;
}

LineEnds AppState::Impl::lineEnds() const
{
    return app.lineEndings.get() == "CRLF" ? LineEnds::crlf : LineEnds::lf;
}

Status AppState::Impl::mayReplace(const Path& url)
{
    const bool isAllowed = !document.unreadable || isGone(url);
    return isAllowed ? Status() : std::unexpected(*document.unreadable);
}

bool AppState::Impl::isGone(const Path& url)
{
    const auto info = services.files.stat(url);
    return !info && saysMissing(info.error());
}

} // namespace quillmark
