// The files of the notes folder as the store lists them.
#pragma once

#include "base/Scheduler.h"
#include "notes/Note.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

inline constexpr size_t leadingBytes = 512; ///< of a note that title and preview are taken from

/// Those of what may be note files: not hidden, ".txt" in any case of letters, regular or a link.
std::vector<std::string> noteNames(std::vector<Folder::Name> names);

/// The folder's note files, with their FileInfo. Those of many are asked for on several
/// threads.
Result<std::vector<FolderEntry>> listNoteFiles(Scheduler& scheduler, Folder& folder);

/// The beginning of a file as text; empty when it cannot be read. A character that the end cuts is left out.
/// Any thread.
std::u16string readLeadingText(Folder& folder, const std::string& name);

/// New records of the named files, in their order, without those that turn out not to be regular files. Reads
/// the files' beginnings, those of many on several threads. `path` is the folder's.
std::vector<Note> makeRecords(
    Scheduler& scheduler, Folder& folder, const Path& path, std::span<const std::string> names);

bool isNewestFirst(const std::vector<Note>& notes);
void sortNewestFirst(std::vector<Note>& notes); ///< stable

} // namespace quillmark
