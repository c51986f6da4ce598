// Where things live on this desktop, by the XDG Base Directory rules. Paths are bytes and always absolute.
#pragma once

#include "io/JournalFiles.h"

#include <functional>
#include <optional>
#include <string>

namespace quillmark {

using Environment = std::function<std::optional<std::string>(const char* name)>;

Environment processEnvironment();

struct StandardPaths {
    Path config; ///< of this program: settings
    Path state; ///< of this program: recovery, journal
    Path documents; ///< of the user
    std::optional<Path> runtime; ///< of this program, in memory, gone with the user's last session
    Path temporary; ///< of this program and this user, in a folder that all users share

    Path settings() const { return config / "settings.json"; }
    Path recovered() const { return state / "recovered"; }
    JournalFolders journal() const;

    /// Reads the environment and the user's user-dirs.dirs; makes no folder.
    static StandardPaths find(FileSystem& disk, const Environment& environment = processEnvironment());
};

} // namespace quillmark
