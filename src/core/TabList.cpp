#include "core/TabList.h"

#include <algorithm>
#include <cassert>

namespace quillmark {
namespace {

size_t indexOf(const TabList::Tabs& tabs, const Uuid& id)
{
    const auto found = std::ranges::find(tabs, id, [](const auto& tab) { return tab->id; });
    return static_cast<size_t>(found - tabs.begin());
}

} // namespace

TabList::Tab TabList::active() const
{
    return m_activeID.get() ? find(*m_activeID.get()) : nullptr;
}

TabList::Tab TabList::find(const Uuid& id) const
{
    const size_t index = indexOf(*tabs, id);
    return index < tabs->size() ? tabs.get()[index] : nullptr;
}

TabList::Tab TabList::find(const TabSource& source) const
{
    const auto found
        = std::ranges::find(*tabs, source, [](const auto& tab) -> const TabSource& { return *tab->source; });
    return found != tabs->end() ? *found : nullptr;
}

TabList::Tab TabList::neighbour(int offset) const
{
    if (!active())
        return nullptr;
    const auto count = static_cast<int64_t>(tabs->size());
    const auto index = static_cast<int64_t>(indexOf(*tabs, *m_activeID.get()));
    return tabs.get()[static_cast<size_t>(((index + offset) % count + count) % count)];
}

TabList::Tab TabList::append(TabSource source, std::string title)
{
    assert(!find(source));
    auto tab = std::make_shared<EditorTab>(std::move(source), std::move(title));
    m_tabs.modify([&](Tabs& all) {
        all.push_back(tab);
        return true;
    });
    return tab;
}

void TabList::activate(const Uuid& id)
{
    assert(find(id));
    m_activeID.set(id);
}

void TabList::replaceAll(Tabs all, const Uuid& active)
{
    assert(indexOf(all, active) < all.size());
    if (find(active))
        m_activeID.set(active); // those who watch never see a list without its active tab
    m_tabs.set(std::move(all));
    m_activeID.set(active);
}

void TabList::remove(const Uuid& id)
{
    Tabs rest = tabs.get();
    const size_t index = indexOf(rest, id);
    assert(index < rest.size() && rest.size() > 1);
    rest.erase(rest.begin() + static_cast<ptrdiff_t>(index));
    const Uuid next = m_activeID.get() == id ? rest[std::min(index, rest.size() - 1)]->id : *m_activeID.get();
    replaceAll(std::move(rest), next);
}

void TabList::removeIf(const std::function<bool(const EditorTab&)>& isGone)
{
    Tabs rest = tabs.get();
    std::erase_if(rest, [&](const Tab& tab) { return m_activeID.get() != tab->id && isGone(*tab); });
    m_tabs.set(std::move(rest));
}

void TabList::checkInvariants() const
{
    assert(active());
    for (const Tab& tab : *tabs) {
        assert(find(*tab->source) == tab); // a document never has two tabs
        static_cast<void>(tab);
    }
}

} // namespace quillmark
