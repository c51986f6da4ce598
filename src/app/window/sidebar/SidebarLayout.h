// Which rows the sidebar has and where they stand, by arithmetic: the cost does not depend on the number of
// notes.
#pragma once

#include <cstdint>

namespace quillmark {

/// Heights are device-independent pixels, rows are counted from 0. With no files the list has the notes'
/// section only.
class SidebarLayout {
public:
    enum class Kind { filesHeader, file, notesHeader, note };

    struct Item {
        Kind kind = Kind::note;
        int index = 0; ///< among the files or the notes
        bool operator==(const Item&) const = default;
    };

    SidebarLayout() = default;
    SidebarLayout(int fileCount, int noteCount)
        : m_fileCount(fileCount)
        , m_noteCount(noteCount)
    {
    }

    int rowCount() const { return notesHeaderRow() + 1 + m_noteCount; }
    Item item(int row) const;
    int rowOfFile(int index) const { return 1 + index; }
    int rowOfNote(int index) const { return notesHeaderRow() + 1 + index; }

    int64_t top(int row) const;
    int height(int row) const { return heightOf(item(row).kind); }
    int64_t totalHeight() const { return top(rowCount()) + bottomInset; }
    int rowAt(int64_t y) const; ///< -1 above the first and below the last

private:
    static constexpr int headerHeight = 30;
    static constexpr int fileHeight = 28;
    static constexpr int noteHeight = 46;
    static constexpr int bottomInset = 8;

    static int heightOf(Kind kind);
    int notesHeaderRow() const { return m_fileCount > 0 ? 1 + m_fileCount : 0; }

    int m_fileCount = 0;
    int m_noteCount = 0;
};

} // namespace quillmark
