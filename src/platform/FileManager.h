#pragma once

#include <filesystem>

namespace quillmark {

/// The desktop's window onto folders.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// Shows the file or folder, selected in the folder that holds it. Returns at once; a failure is only
    /// logged. Main thread.
    virtual void reveal(const std::filesystem::path& file) = 0;
};

} // namespace quillmark
