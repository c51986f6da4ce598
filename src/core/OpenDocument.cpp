#include "core/OpenDocument.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <utility>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

/// Whether nobody shall wait for its write: it has backgroundThreshold bytes or more. Counts them only where
/// the length does not tell.
bool isLarge(const Rope& text)
{
    constexpr int64_t mostBytesPerUnit = 3;
    if (text.length() >= backgroundThreshold)
        return true;
    return text.length() * mostBytesPerUnit >= backgroundThreshold && utf8Length(text) >= backgroundThreshold;
}

int64_t sizeOf(FileSystem& files, const Path& file)
{
    const auto info = files.stat(file);
    return info && info->kind == FileInfo::Kind::regular ? info->size : 0;
}

} // namespace

OpenDocument::OpenDocument(Services services, UnsavedWords& words, Events events)
    : m_services(services)
    , m_words(words)
    , m_events(std::move(events))
{
}

DocumentFacts OpenDocument::facts() const
{
    return {.file = m_file,
        .note = m_note,
        .encoding = m_encodingName.get(),
        .lineEnds = m_lineEndings.get(),
        .isLossy = m_isLossy,
        .unreadable = m_unreadable};
}

// ---- The editor

Rope OpenDocument::text() const
{
    return m_textView ? m_textView->text() : m_currentText;
}

void OpenDocument::setTextView(PlainTextView* view)
{
    if (m_textView && isDirty.get())
        takeEditorText();
    m_textView = view;
}

void OpenDocument::finishTyping()
{
    if (m_textView)
        m_textView->commitComposition();
}

void OpenDocument::takeEditorText()
{
    m_currentText = text();
}

// ---- Loading

void OpenDocument::begin(const Place& place)
{
    m_reading.cancel();
    m_keeping.cancel();
    m_isLoading.set(false);
    static_cast<void>(rescue()); // words that came back while their document was being left
    setDirty(false);
    m_words.closed(m_id);
    m_id = Uuid::random();
    m_tabID = place.tabID;
    m_file = place.file;
    m_note = place.note;
    m_unreadable.reset();
    m_isLossy = false;
}

void OpenDocument::showNothing(std::optional<Uuid> tabID)
{
    begin({.tabID = tabID, .file = {}, .note = {}});
    m_isReadOnly.set(false);
    m_encodingName.set(TextEncoding::utf8);
    m_lineEndings.set(LineEnds::lf);
    setDirty(false);
    show({});
}

void OpenDocument::load(const Place& place)
{
    assert(!place.file.empty());
    begin(place);
    static_cast<void>(m_words.queue().finish(m_file)); // what fails is held, and taken back
    const int64_t size = std::max(place.recordedSize, sizeOf(m_services.files, m_file));
    m_isReadOnly.set(size > largestEditableFile);
    if (auto held = m_words.takeBack(m_file))
        showHeld(std::move(*held));
    else
        read(Reading::first, size);
}

void OpenDocument::reload()
{
    assert(!m_file.empty() && !isDirty.get());
    m_reading.cancel();
    m_isLoading.set(false);
    m_shownBefore = text();
    read(Reading::again, sizeOf(m_services.files, m_file));
}

void OpenDocument::read(Reading reading, int64_t size)
{
    if (size >= backgroundThreshold)
        return readInBackground(reading);
    publish(reading, readTextFile(m_services.files, m_file));
}

void OpenDocument::readInBackground(Reading reading)
{
    m_isLoading.set(true);
    setDirty(false);
    replaceText({});
    m_reading = m_services.scheduler.background(
        Priority::userInitiated,
        [&files = m_services.files, file = m_file](
            const CancelToken& token) { return readTextFile(files, file, token); },
        [this, reading](Result<TextFile> read) { publish(reading, std::move(read)); });
}

void OpenDocument::publish(Reading reading, Result<TextFile> read)
{
    if (!read)
        return couldNotRead(reading, read.error());
    if (reading == Reading::again) {
        m_words.closed(m_id);
        m_id = Uuid::random();
    }
    m_shownBefore = {};
    m_unreadable.reset();
    m_services.writer.known().remember(m_file, FileStamp(read->info, read->hash));
    m_isLossy = read->content.lossy;
    m_isReadOnly.set(read->info.size > largestEditableFile);
    m_encodingName.set(read->content.encodingName);
    m_lineEndings.set(read->content.lineEndings);
    setDirty(false);
    const bool wasLoading = isLoading.get();
    show(std::move(read->content.text));
    if (wasLoading) // it may have been replaced while it was read
        m_events.lookAgain(0ms);
}

/// A file that is not there is an empty document. What else the disk says changes nothing that is shown.
void OpenDocument::couldNotRead(Reading reading, const Error& error)
{
    const auto stamp = m_services.writer.known().stampOf(m_file);
    const uint64_t device = stamp && !stamp->isMissing() ? stamp->device : 0;
    const bool isReallyMissing = isMissing(m_services.files, m_file, error, device);
    if (reading == Reading::again) {
        const bool wasLoading = m_isLoading.get();
        m_isLoading.set(false);
        Rope before = std::exchange(m_shownBefore, {});
        if (wasLoading)
            show(std::move(before));
        return m_events.lookAgain(unreachablePause);
    }
    if (saysMissing(error))
        m_services.writer.known().rememberMissing(m_file);
    else
        m_unreadable = error;
    m_encodingName.set(TextEncoding::utf8);
    m_lineEndings.set(LineEnds::lf);
    setDirty(false);
    show({});
    if (!isReallyMissing)
        m_events.lookAgain(unreachablePause);
}

/// The document goes on where it was left.
void OpenDocument::showHeld(UnsavedWords::Held held)
{
    m_id = held.document;
    m_isLossy = held.facts.isLossy;
    m_unreadable = held.facts.unreadable;
    m_encodingName.set(held.facts.encoding);
    m_lineEndings.set(held.facts.lineEnds);
    m_isReadOnly.set(false);
    show(std::move(held.text));
    setDirty(true);
}

void OpenDocument::show(Rope text)
{
    m_isLoading.set(false);
    m_events.willShow();
    replaceText(std::move(text));
    m_events.didShow();
}

/// Gives the editor another text. The old one dies on another thread.
void OpenDocument::replaceText(Rope text)
{
    Rope shown = this->text();
    Rope loaded = std::exchange(m_currentText, std::move(text));
    m_loadGeneration.set(m_loadGeneration.get() + 1);
    m_services.scheduler.letGo(std::move(shown));
    m_services.scheduler.letGo(std::move(loaded));
}

void OpenDocument::moved(const Path& from, const Path& to)
{
    if (m_file != from)
        return;
    m_file = to;
    if (m_isLoading.get())
        readInBackground(Reading::first);
}

// ---- Editing

void OpenDocument::setDirty(bool isUnsaved)
{
    assert(!isUnsaved || !m_isReadOnly.get());
    m_isDirty.set(isUnsaved);
}

void OpenDocument::edited()
{
    if (m_isReadOnly.get() || m_isLoading.get())
        return;
    setDirty(true);
    m_words.typed(m_id, facts());
}

bool OpenDocument::setLineEndings(LineEnds lineEnds)
{
    if (lineEnds == m_lineEndings.get() || m_isReadOnly.get() || m_isLoading.get())
        return false;
    m_lineEndings.set(lineEnds);
    edited();
    return true;
}

void OpenDocument::vanished()
{
    m_services.writer.known().rememberMissing(m_file); // whatever appears there is somebody else's
    edited();
}

void OpenDocument::becomeUtf8()
{
    m_encodingName.set(TextEncoding::utf8);
}

// ---- Saving

std::optional<Result<OpenDocument::Saved>> OpenDocument::save(AllowBackground allowBackground)
{
    assert(isDirty.get() && !isLoading.get() && !isReadOnly.get() && !m_file.empty());
    const bool mayQueue = allowBackground == AllowBackground::yes && isLarge(m_currentText);
    if (const Status allowed = mayReplace(); !allowed)
        return std::unexpected(allowed.error());
    if (mayQueue && m_isLossy) {
        keepBytesThenSave();
        return std::nullopt;
    }
    if (const Status kept = keepBytes(); !kept)
        return std::unexpected(kept.error());
    m_unreadable.reset(); // it has gone since
    if (mayQueue) {
        m_words.enqueue(m_id, facts(), m_currentText);
        const int64_t carriageReturns
            = m_lineEndings.get() == LineEnds::crlf ? m_currentText.lineCount() - 1 : 0;
        return Saved{.bytes = m_currentText.length() + carriageReturns};
    }
    const auto written = m_words.write(m_id, facts(), m_currentText);
    if (!written)
        return std::unexpected(written.error());
    return Saved{written->bytes, written->hasReplacedOutsideVersion};
}

Status OpenDocument::saveAs(const Path& file)
{
    if (file == m_file) {
        if (const Status allowed = mayReplace(); !allowed)
            return allowed;
        if (const Status kept = keepBytes(); !kept)
            return kept;
    }
    DocumentFacts asFile = facts();
    asFile.file = file;
    asFile.note.reset();
    asFile.isLossy = false;
    asFile.unreadable.reset();
    const auto written = m_words.write(m_id, asFile, m_currentText);
    if (!written)
        return std::unexpected(written.error());
    m_file = file;
    m_note.reset();
    m_isLossy = false;
    m_unreadable.reset();
    m_isReadOnly.set(written->bytes > largestEditableFile);
    becomeUtf8();
    setDirty(false);
    return {};
}

void OpenDocument::wasSaved()
{
    setDirty(false);
}

void OpenDocument::wordsWentElsewhere()
{
    setDirty(false);
}

bool OpenDocument::rescue(UnsavedWords::Retry retry)
{
    return !isDirty.get() || m_words.keep(m_id, facts(), text(), retry);
}

Status OpenDocument::mayReplace()
{
    return !m_unreadable || isGone() ? Status() : std::unexpected(*m_unreadable);
}

bool OpenDocument::isGone() const
{
    const auto info = m_services.files.stat(m_file);
    return !info && saysMissing(info.error());
}

/// The bytes that were no text are about to be replaced, and nothing is until they are kept.
Status OpenDocument::keepBytes()
{
    m_keeping.cancel();
    if (!m_isLossy)
        return {};
    const auto kept = m_services.recovery.keepCopy(m_file);
    if (!kept && !isGone())
        return std::unexpected(kept.error());
    m_isLossy = false;
    if (kept)
        m_events.bytesKept(*kept);
    return {};
}

/// The document stays dirty until the copy is there. A flush that somebody waits for makes its own.
void OpenDocument::keepBytesThenSave()
{
    if (m_keeping.isPending())
        return;
    m_keeping = m_services.scheduler.background(
        Priority::utility,
        [&recovery = m_services.recovery, file = m_file](
            const CancelToken&) { return recovery.keepCopy(file); },
        [this](const Result<Path>& kept) {
            if (!kept && !isGone())
                return m_services.log.line("Quillmark: save failed: " + kept.error().message);
            m_isLossy = false;
            if (kept)
                m_events.bytesKept(*kept);
            m_events.saveAgain();
        });
}

/// Nobody knows of a large text.
bool OpenDocument::isWrittenAlready() const
{
    const Rope ours = text();
    const int64_t theirSize = sizeOf(m_services.files, m_file);
    if (theirSize >= backgroundThreshold || ours.length() > theirSize)
        return false;
    const auto ourHash = hashOf(contentOf(ours, m_lineEndings.get()));
    const auto theirHash = hashOf(contentOfFile(m_services.files, m_file));
    return ourHash && theirHash && *ourHash == *theirHash;
}

void OpenDocument::checkInvariants() const
{
    assert(!m_isDirty.get() || (!m_isReadOnly.get() && !m_isLoading.get()));
    assert(!m_isLoading.get() || m_reading.isPending());
}

} // namespace quillmark
