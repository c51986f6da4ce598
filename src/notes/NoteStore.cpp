#include "notes/NoteStore.h"

#include "io/Bookmark.h"
#include "io/Encode.h"
#include "io/ReadFile.h"
#include "notes/NoteFiles.h"
#include "notes/NoteNames.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <cerrno>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view folderKey = "notesFolderBookmark";
constexpr Duration renameDelay = 5s;
constexpr int64_t leadingCharacters = 1024;
constexpr int64_t leadingUnits
    = 64 * leadingCharacters; // bounds what a text of endless combining marks costs
constexpr uint32_t newFileMode = 0666; // less the umask

TitleAndPreview titleAndPreviewOf(const Rope& text)
{
    const std::u16string start = text.text({0, leadingUnits});
    return titleAndPreview(firstGraphemes(start, leadingCharacters));
}

} // namespace

NoteStore::NoteStore(NoteStoreServices services)
    : m_services(std::move(services))
    , m_self(this, [](NoteStore*) {})
{
    useFolder(resolveFolder());
}

const Note* NoteStore::find(const Uuid& id) const
{
    const auto found = std::ranges::find(notes.get(), id, &Note::id);
    return found != notes->end() ? &*found : nullptr;
}

// ---- The folder

Path NoteStore::resolveFolder()
{
    const auto stored = m_services.defaults.data(folderKey);
    if (!stored)
        return m_services.defaultFolder;
    const auto resolved = resolveBookmark(m_services.files, *stored);
    if (!resolved)
        return m_services.defaultFolder; // the key stays: the folder may be back at the next start
    if (resolved->isStale) {
        if (const auto fresh = makeBookmark(m_services.files, resolved->path))
            m_services.defaults.setData(folderKey, *fresh);
    }
    return resolved->path;
}

void NoteStore::useFolder(const Path& folder)
{
    m_renameTasks.clear();
    m_syncTask.cancel();
    m_unmade.clear();
    m_reported.clear();
    m_comparisons.clear();
    clearSearch();
    (void)m_services.files.makeFolders(folder);
    m_folderURL.set(folder);
    reloadNotes();
    startWatchingFolder();
}

bool NoteStore::setNotesFolder(const Path& folder)
{
    const auto info = m_services.files.stat(folder);
    const auto bookmark = makeBookmark(m_services.files, folder);
    if (!bookmark || !info || info->kind != FileInfo::Kind::folder)
        return false;
    m_services.defaults.setData(folderKey, *bookmark);
    useFolder(folder);
    return true;
}

void NoteStore::resetNotesFolder()
{
    m_services.defaults.remove(folderKey);
    useFolder(m_services.defaultFolder);
}

void NoteStore::reloadNotes()
{
    const Path& path = folderURL.get();
    std::vector<Note> found;
    const auto folder = m_services.files.openFolder(path);
    auto names = folder ? (*folder)->names() : std::unexpected(folder.error());
    if (const auto info = m_services.files.stat(path))
        m_folderDevice = info->device;
    if (names) {
        if (std::ranges::any_of(*names, isTemporaryName, &Folder::Name::bytes))
            removeStaleTemporaries(m_services.files, path);
        found = makeRecords(m_services.scheduler, **folder, path, noteNames(std::move(*names)));
    }
    sortNewestFirst(found);
    m_notes.set(std::move(found));
}

// ---- Records

void NoteStore::insertInFront(Note note)
{
    assert(!find(note.id) && !note.title.empty());
    m_notes.modify([&](Notes& all) {
        all.insert(all.begin(), std::move(note));
        return true;
    });
}

void NoteStore::update(const Note& note)
{
    m_notes.modify([&](Notes& all) {
        const auto place = std::ranges::find(all, note.id, &Note::id);
        if (place == all.end() || *place == note)
            return false;
        *place = note;
        return true;
    });
}

void NoteStore::noteDidSave(Uuid id, const Rope& text, int64_t byteSize)
{
    assert(byteSize >= 0);
    if (!find(id))
        return;
    m_unmade.erase(id);
    m_notes.modify([&](Notes& all) {
        Note& note = *std::ranges::find(all, id, &Note::id);
        auto [title, preview] = titleAndPreviewOf(text);
        note.title = std::move(title);
        note.preview = std::move(preview);
        note.modifiedAt = m_services.scheduler.wallNow();
        note.byteSize = byteSize;
        sortNewestFirst(all);
        return true;
    });
    scheduleRename(id);
}

void NoteStore::setByteSize(Uuid id, int64_t byteSize)
{
    const Note* found = find(id);
    if (!found || found->byteSize == byteSize)
        return;
    Note note = *found;
    note.byteSize = byteSize;
    update(note);
}

// ---- Files

Path NoteStore::uniqueNoteURL(std::string_view baseName)
{
    return *makeFile(folderURL.get(), baseName, [](const Path&) { return Status(); });
}

Result<Path> NoteStore::makeFile(
    const Path& folder, std::string_view baseName, const std::function<Status(const Path&)>& make)
{
    return makeUnderFreeName(m_services.files, folder, baseName,
        [&](const Path& path) { return isPromised(path) ? systemFailure(EEXIST) : make(path); });
}

/// Whether a file of this name is yet to be made, and would replace what somebody else put there: by a queued
/// text, or by the first save of a note whose file could not be made at once.
bool NoteStore::isPromised(const Path& path) const
{
    if (m_services.writeQueue.pendingText(path))
        return true;
    return std::ranges::any_of(m_unmade, [&](const Uuid& id) {
        const Note* note = find(id);
        return note && note->url == path;
    });
}

Note NoteStore::createNote()
{
    const auto made = makeFile(folderURL.get(), untitled, [&](const Path& path) -> Status {
        const auto file = m_services.files.createNew(path, newFileMode);
        if (!file)
            return std::unexpected(file.error());
        if (const auto info = (*file)->info())
            m_services.known.remember(path, FileStamp(*info, contentHash("")));
        return {};
    });
    Note note{.id = Uuid::random(),
        .url = made ? *made : uniqueNoteURL(untitled),
        .title = std::string(untitled),
        .preview = "",
        .modifiedAt = m_services.scheduler.wallNow(),
        .byteSize = 0};
    if (!made)
        m_unmade.insert(note.id);
    insertInFront(note);
    return note;
}

void NoteStore::scheduleRename(Uuid id)
{
    m_renameTasks[id] = m_services.scheduler.after(renameDelay, [this, id] { renameFileIfNeeded(id); });
}

void NoteStore::renameFileIfNeeded(Uuid id)
{
    m_renameTasks.erase(id);
    const Note* found = find(id);
    if (!found)
        return;
    const Note note = *found;
    const std::string desired = fileBaseName(note.title);
    if (isNamedAfter(fileStem(note.url), desired))
        return;
    if (const Status moved = moveToName(note, desired); !moved)
        m_services.log.line("Ledgerly: rename failed: " + moved.error().message);
}

Status NoteStore::moveToName(const Note& note, std::string_view baseName)
{
    // A queued text would otherwise make the old name again.
    if (const Status written = m_services.writeQueue.finish(note.url); !written)
        return written;
    const auto target = makeFile(folderURL.get(), baseName,
        [&](const Path& path) { return m_services.files.renameNoReplace(note.url, path); });
    if (!target)
        return std::unexpected(target.error());
    m_services.known.move(note.url, *target);
    Note moved = note;
    moved.url = *target;
    update(moved);
    m_renamed.emit(note.url, *target);
    return {};
}

void NoteStore::trashNote(Note note, Trash::Done done)
{
    m_renameTasks.erase(note.id);
    if (!m_services.writeQueue.finish(note.url)) {
        if (const auto text = m_services.writeQueue.pendingText(note.url))
            (void)m_services.recovery.keep(*text, note.url);
        m_services.writeQueue.discard(note.url);
    }
    m_services.trash.recycle(note.url, std::move(done));
    m_services.known.rememberMissing(note.url); // also for another record of this path
    m_notes.modify([&](Notes& all) {
        return std::erase_if(all, [&](const Note& other) { return other.id == note.id; }) > 0;
    });
}

void NoteStore::restoreTrashedNote(const Note& note, std::function<void(const Result<Note>&)> done)
{
    assert(done);
    m_services.trash.restore(note.url,
        [self = std::weak_ptr(m_self), note, done = std::move(done)](const Result<Path>& trashed) -> Status {
            const auto store = self.lock();
            if (!store)
                return systemFailure(ECANCELED);
            const Result<Note> back
                = trashed ? store->takeBack(*trashed, note) : std::unexpected(trashed.error());
            if (!back)
                store->m_services.log.line("Ledgerly: restore failed: " + back.error().message);
            done(back);
            return back ? Status() : std::unexpected(back.error());
        });
}

Result<Note> NoteStore::takeBack(const Path& trashed, Note note)
{
    const Path folder = note.url.parent_path();
    if (auto status = m_services.files.makeFolders(folder); !status)
        return std::unexpected(status.error());
    const auto target = makeFile(folder, fileStem(note.url),
        [&](const Path& free) { return m_services.files.renameNoReplace(trashed, free); });
    if (!target)
        return std::unexpected(target.error());
    m_services.known.forget(*target); // it was known as missing
    const auto opened = m_services.files.openFolder(folder);
    const std::vector<std::string> names{target->filename()};
    auto records = opened ? makeRecords(m_services.scheduler, **opened, folder, names) : Notes();
    if (records.empty()) { // it cannot be read just now
        note.id = Uuid::random();
        note.url = *target;
        records.push_back(std::move(note));
    }
    if (folder == folderURL.get()) // else it is a file of the folder that was left
        insertInFront(records.front());
    return records.front();
}

std::optional<Note> NoteStore::duplicateNote(Note note)
{
    if (!m_services.writeQueue.finish(note.url))
        return std::nullopt;
    const auto source = readFile(m_services.files, note.url);
    if (!source)
        return std::nullopt;
    const auto target = makeFile(
        folderURL.get(), nameWithSuffix(fileStem(note.url), " copy"), [&](const Path& path) -> Status {
            const auto made = createFile(m_services.files, path, source->info.mode, contentOf(source->bytes));
            return made ? Status() : std::unexpected(made.error());
        });
    if (!target)
        return std::nullopt;
    note.id = Uuid::random();
    note.url = *target;
    note.modifiedAt = m_services.scheduler.wallNow();
    insertInFront(note);
    return note;
}

Status NoteStore::saveNoteText(const Rope& text, Uuid id)
{
    const Note* note = find(id);
    if (!note)
        return systemFailure(ENOENT);
    const Path path = note->url; // the record may change while older texts are dealt with
    const auto written = m_services.writeQueue.writeNow({.target = path,
        .text = text,
        .lineEnds = LineEnds::lf,
        .outsideVersion = OutsideVersion::replaceKept});
    if (!written) {
        m_services.log.line("Ledgerly: save failed: " + written.error().message);
        (void)m_services.recovery.keep(text, path);
        return std::unexpected(written.error());
    }
    noteDidSave(id, text, written->bytes);
    return {};
}

std::optional<Path> NoteStore::writeConflictCopy(const Rope& text, const Path& path)
{
    const WallTime now = m_services.scheduler.wallNow();
    int64_t byteSize = 0;
    const std::string baseName = nameWithSuffix(fileStem(path), conflictSuffix(now));
    const Path folder = path.parent_path();
    const auto target = makeFile(folder, baseName, [&](const Path& free) -> Status {
        const auto made = createFile(m_services.files, free, newFileMode, contentOf(text, LineEnds::lf));
        if (!made)
            return std::unexpected(made.error());
        byteSize = made->bytes;
        return {};
    });
    if (!target)
        return std::nullopt;
    if (folder != folderURL.get()) // of a note in the folder that was left
        return *target;
    auto [title, preview] = titleAndPreviewOf(text);
    insertInFront({.id = Uuid::random(),
        .url = *target,
        .title = std::move(title),
        .preview = std::move(preview),
        .modifiedAt = now,
        .byteSize = byteSize});
    return *target;
}

} // namespace quillmark
