// Files for benchmarks, made once a run in a temporary folder and removed at its end.
#pragma once

#include "EditorTexts.h"
#include "support/TestEnvironment.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace quillmark::bench {

class SampleFile {
public:
    explicit SampleFile(int64_t size, Lines lines = Lines::ofWords)
        : m_path(m_folder / "sample.log")
    {
        const std::string block
            = makeText(std::min<int64_t>(size, 8'000'000), lines); // repeated: it takes long
        std::ofstream out(m_path, std::ios::binary);
        for (int64_t left = size; left > 0; left -= static_cast<int64_t>(block.size()))
            out << std::string_view(block).substr(0, static_cast<size_t>(left));
    }

    const std::filesystem::path& path() const { return m_path; }

private:
    test::TemporaryFolder m_folder;
    std::filesystem::path m_path;
};

} // namespace quillmark::bench
