// The files of the notes folder as the store lists them.
#pragma once

#include "base/Scheduler.h"
#include "notes/Note.h"

#include <string>
#include <vector>

namespace quillmark {

inline constexpr size_t leadingBytes = 512; ///< of a note that title and preview are taken from

bool isNoteFile(const FolderEntry& entry); ///< not hidden, regular, ".txt" in any case of letters

/// The first bytes of a file as text; empty when it cannot be read. A character that the end cuts is left
/// out. Any thread.
std::u16string readLeadingText(FileSystem& files, const Path& file);

/// New records of files in a folder, in their order. Reads the files' beginnings, those of many on several
/// threads.
std::vector<Note> makeRecords(Scheduler& scheduler, FileSystem& files, const Path& folder,
    const std::vector<const FolderEntry*>& entries);

bool isNewestFirst(const std::vector<Note>& notes);
void sortNewestFirst(std::vector<Note>& notes); ///< stable

} // namespace quillmark
