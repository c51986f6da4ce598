// What a note is called: title and preview from its text, the file name from its title, and the first name in
// a folder that is free. A file name never exceeds the 255 bytes that file systems allow.
#pragma once

#include "notes/Note.h"

#include <functional>
#include <string>
#include <string_view>

namespace quillmark {

inline constexpr std::string_view untitled = "Untitled";

struct TitleAndPreview {
    std::string title; ///< the first line that is not blank, at most 80 characters; never empty
    std::string preview; ///< what follows on one line, at most 80 characters
};

TitleAndPreview titleAndPreview(std::u16string_view text); ///< of the beginning of a note

/// The file name without extension that a note with this title should have. Leaves room for a number, "
/// copy", the suffix of a conflict copy and ".txt", so that none of them has to be cut.
std::string fileBaseName(std::string_view title);

std::string_view fileName(const Note& note); ///< valid as long as the note's path

/// A file's name without its last extension, as bytes.
std::string fileStem(const Path& path);

/// Whether a file called `stem` is named after `baseName`: exactly, or with a number that made the name free.
bool isNamedAfter(std::string_view stem, std::string_view baseName);

/// `stem` + `suffix`; a stem that leaves no room for it, a number and ".txt" is cut by whole characters.
std::string nameWithSuffix(std::string_view stem, std::string_view suffix);

std::string conflictSuffix(WallTime time); ///< " (conflict 2026-03-05 14-07)", in local time

/// Does `make` with free names until it does not fail with EEXIST: somebody else may take a name between the
/// look and the making. Returns the name that was made, or why not.
Result<Path> makeUnderFreeName(FileSystem& files, const Path& folder, std::string_view baseName,
    const std::function<Status(const Path&)>& make);

} // namespace quillmark
