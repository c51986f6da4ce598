#pragma once

#include "platform/FileManager.h"

#include <vector>

namespace quillmark::test {

/// A file manager that only remembers what it was to show.
class RecordingFileManager final : public FileManager {
public:
    void reveal(const std::filesystem::path& file) override { revealed.push_back(file); }

    std::vector<std::filesystem::path> revealed;
};

} // namespace quillmark::test
