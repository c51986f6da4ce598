// What lies in the desktop's wastebaskets: that of the home folder and that of the disk a file was on.
#pragma once

#include "platform/FileSystem.h"

namespace quillmark {

struct TrashedFile {
    Path file; ///< where it is now
    Path record; ///< says where it was; goes when the file leaves the wastebasket
};

/// The file that was last moved to a wastebasket from the path `original`; ENOENT when there is none. Reads
/// every record there is. Any thread.
Result<TrashedFile> findTrashed(FileSystem& disk, const Path& original);

} // namespace quillmark
