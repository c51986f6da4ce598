#pragma once

#include <filesystem>

namespace quillmark {

/// The desktop's wastebasket.
class Trash {
public:
    virtual ~Trash() = default;

    /// Asks for the file to be moved to the wastebasket. Returns at once; the move happens on a background
    /// thread and a failure is only logged: the file then stays where it is. Main thread.
    virtual void recycle(const std::filesystem::path& file) = 0;
};

} // namespace quillmark
