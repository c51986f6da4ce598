// One open tab and what it shows.
#pragma once

#include "base/Observable.h"
#include "base/Uuid.h"
#include "editor/Language.h"
#include "platform/FileSystem.h"

#include <optional>
#include <string>
#include <variant>

namespace quillmark {

struct NoteSource {
    Uuid id; ///< Note::id; the tab stores the id, not the record
    bool operator==(const NoteSource&) const = default;
};
struct FileSource {
    Path url; ///< absolute and normalised
    bool operator==(const FileSource&) const = default;
};
using TabSource = std::variant<NoteSource, FileSource>;

/// Shared with the views, which watch its observable fields; the TabList changes them. Main thread only.
class EditorTab {
    friend class TabList;
    Variable<TabSource> m_source;
    Variable<std::string> m_title;
    Variable<bool> m_isDirty{false};

public:
    EditorTab(TabSource initialSource, std::string initialTitle)
        : m_source(std::move(initialSource))
        , m_title(std::move(initialTitle))
    {
    }

    const Uuid id = Uuid::random();
    const Observable<TabSource>& source = m_source;
    const Observable<std::string>& title = m_title;
    const Observable<bool>& isDirty = m_isDirty; ///< edits that are not yet written
    std::optional<Language> languageOverride; ///< chosen by the user; absent: found from the file
    bool encodingNoticeShown = false; ///< the notice about writing as UTF-8 comes once a tab

    const NoteSource* note() const { return std::get_if<NoteSource>(&source.get()); }
    const FileSource* file() const { return std::get_if<FileSource>(&source.get()); }
};

} // namespace quillmark
