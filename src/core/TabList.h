// The open tabs in their order, and which one is active. It opens, loads and saves nothing.
#pragma once

#include "core/EditorTab.h"

#include <functional>
#include <memory>
#include <vector>

namespace quillmark {

/// Main thread only. The id of the active tab names a tab of the list, once there is one.
class TabList {
    using Tab = std::shared_ptr<EditorTab>;

public:
    using Tabs = std::vector<Tab>;

private:
    Variable<Tabs> m_tabs;
    Variable<std::optional<Uuid>> m_activeID;

public:
    const Observable<Tabs>& tabs = m_tabs;
    const Observable<std::optional<Uuid>>& activeID = m_activeID;

    Tab active() const; ///< null while there is no tab
    Tab find(const Uuid& id) const; ///< null when there is none
    Tab find(const TabSource& source) const; ///< likewise
    Tab neighbour(int offset) const; ///< of the active tab, around the ends; null without an active tab

    Tab append(TabSource source, std::string title);
    void activate(const Uuid& id); ///< of a tab in the list
    void replaceAll(Tabs all, const Uuid& active); ///< which is one of them
    /// Takes a tab out. When it was the active one, the tab that takes its place is active then, the last one
    /// where there is none behind. Not for the only tab.
    void remove(const Uuid& id);
    void removeIf(const std::function<bool(const EditorTab&)>& isGone); ///< never the active one

    void setSource(EditorTab& tab, TabSource source) { tab.m_source.set(std::move(source)); }
    void setTitle(EditorTab& tab, std::string title) { tab.m_title.set(std::move(title)); }
    void setDirty(EditorTab& tab, bool isDirty) { tab.m_isDirty.set(isDirty); }

    void checkInvariants() const; ///< asserts them
};

} // namespace quillmark
