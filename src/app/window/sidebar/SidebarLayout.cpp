#include "app/window/sidebar/SidebarLayout.h"

#include <algorithm>

namespace quillmark {

SidebarLayout::Item SidebarLayout::item(int row) const
{
    const int notesHeader = notesHeaderRow();
    if (row > notesHeader)
        return {Kind::note, row - notesHeader - 1};
    if (row == notesHeader)
        return {Kind::notesHeader, 0};
    return row == 0 ? Item{Kind::filesHeader, 0} : Item{Kind::file, row - 1};
}

int64_t SidebarLayout::top(int row) const
{
    const int notesHeader = notesHeaderRow();
    int64_t top = 0;
    if (row > 0 && m_fileCount > 0)
        top += headerHeight + int64_t(std::min(row - 1, m_fileCount)) * fileHeight;
    if (row > notesHeader)
        top += headerHeight + int64_t(row - notesHeader - 1) * noteHeight;
    return top;
}

int SidebarLayout::rowAt(int64_t y) const
{
    if (y < 0 || y >= top(rowCount()))
        return -1;
    const int notesHeader = notesHeaderRow();
    const int64_t firstNote = top(notesHeader + 1);
    if (y >= firstNote)
        return notesHeader + 1 + int((y - firstNote) / noteHeight);
    if (y >= top(notesHeader))
        return notesHeader;
    return y < headerHeight ? 0 : 1 + int((y - headerHeight) / fileHeight);
}

int SidebarLayout::heightOf(Kind kind)
{
    switch (kind) {
    case Kind::file:
        return fileHeight;
    case Kind::note:
        return noteHeight;
    case Kind::filesHeader:
    case Kind::notesHeader:
        break;
    }
    return headerHeight;
}

} // namespace quillmark
