#include "text/UndoManager.h"

#include "text/Unicode.h"

#include <cassert>
#include <deque>
#include <ranges>
#include <variant>
#include <vector>

namespace quillmark {

namespace {

/// A text that the history keeps. A rope of a few units would be larger than the units and keep a leaf alive.
class KeptText {
public:
    KeptText(const Rope& text, Range range)
    {
        assert(range.location >= 0 && range.end() <= text.length());
        if (range.length <= longestString)
            m_text = text.text(range);
        else
            m_text = text.slice(range);
    }

    int64_t length() const
    {
        const auto* string = std::get_if<std::u16string>(&m_text);
        return string ? static_cast<int64_t>(string->size()) : std::get<Rope>(m_text).length();
    }

    void insert(int64_t offset, const KeptText& other)
    {
        assert(offset >= 0 && offset <= length());
        if (auto* string = std::get_if<std::u16string>(&m_text)) {
            if (length() + other.length() <= longestString) {
                string->insert(static_cast<size_t>(offset), std::get<std::u16string>(other.m_text));
                return;
            }
            m_text = Rope(*string);
        }
        std::visit(
            [&](const auto& text) { std::get<Rope>(m_text).replace({offset, 0}, text); }, other.m_text);
    }

    void putInto(TextStorage& storage, Range range) const
    {
        std::visit([&](const auto& text) { storage.replace(range, text); }, m_text);
    }

private:
    static constexpr int64_t longestString = 512; // units

    std::variant<std::u16string, Rope> m_text;
};

/// Whether text typed at `typed` goes on with the word, or the blanks, that was typed before it.
bool continuesWord(const Rope& text, Range typed)
{
    constexpr int64_t longestTyping = 256; // units; more at once was not typed
    if (typed.isEmpty() || typed.length > longestTyping || typed.location == 0)
        return false;
    const char16_t previous = text.at(typed.location - 1);
    const std::u16string units = text.text(typed);
    const bool hasLineFeed = previous == u'\n' || units.find(u'\n') != std::u16string::npos;
    const bool startsWord = isWhiteSpace(previous) && !isWhiteSpace(units.front());
    return !hasLineFeed && !startsWord;
}

} // namespace

/// Takes an edit back, or makes it again: `with` replaces `range`.
struct UndoManager::Change {
    Range range;
    KeptText with;
};

struct UndoManager::Step {
    Kind kind = Kind::other;
    Selection before;
    Selection after;
    SteadyTime time; ///< of the last edit
    std::vector<Change> changes; ///< to be made from the last to the first
};

struct UndoManager::Impl {
    using Steps = std::deque<Step>; // no step moves when there are many

    explicit Impl(TextStorage& edited)
        : storage(edited)
        , connection(
              edited.onEdit([this](const TextEdit& edit, const Rope& oldText) { record(edit, oldText); }))
    {
    }

    void record(const TextEdit& edit, const Rope& oldText);
    void keep(Step step);
    bool joinsLast(const Step& step) const;
    void join(Step step);
    void make(Step& step);
    template <class Kept> void forget(Kept& kept);

    TextStorage& storage;
    Steps undoable;
    Steps redoable;
    Step open; ///< the group that is being recorded
    int depth = 0; ///< of nested groups
    bool lastMayGrow = false;
    bool isMaking = false; ///< the storage is being edited by undo or redo
    Connection connection;
};

void UndoManager::Impl::record(const TextEdit& edit, const Rope& oldText)
{
    assert(edit.edited.end() <= storage.length());
    if (isMaking)
        return;
    forget(redoable);
    Change change{edit.edited, KeptText(oldText, edit.replaced())};
    if (depth > 0) {
        open.changes.push_back(std::move(change));
        return;
    }
    const int64_t oldEnd = edit.replaced().end();
    const int64_t newEnd = edit.edited.end();
    Step step{.before = {oldEnd, oldEnd}, .after = {newEnd, newEnd}, .time = {}, .changes = {}};
    step.changes.push_back(std::move(change));
    keep(std::move(step));
}

void UndoManager::Impl::keep(Step step)
{
    assert(depth == 0 && !step.changes.empty());
    if (lastMayGrow && !undoable.empty() && joinsLast(step))
        join(std::move(step));
    else
        undoable.push_back(std::move(step));
    lastMayGrow = true;
}

bool UndoManager::Impl::joinsLast(const Step& step) const
{
    const Step& last = undoable.back();
    if (step.kind != last.kind || step.before != last.after || step.time - last.time > longestPause
        || step.changes.size() != 1 || last.changes.size() != 1)
        return false;
    const Range range = step.changes.front().range;
    const Range lastRange = last.changes.front().range;
    const bool bothDelete = range.isEmpty() && lastRange.isEmpty();
    switch (step.kind) {
    case Kind::typing:
        // A selection that an input method removed first goes with what it then puts there.
        return range.location == lastRange.end()
            && (lastRange.isEmpty() || continuesWord(storage.text(), range));
    case Kind::deletingBackward:
        return bothDelete && range.location + step.changes.front().with.length() == lastRange.location;
    case Kind::deletingForward:
        return bothDelete && range.location == lastRange.location;
    case Kind::other:
        break;
    }
    return false;
}

void UndoManager::Impl::join(Step step)
{
    assert(!undoable.empty() && undoable.back().changes.size() == 1 && step.changes.size() == 1);
    Step& last = undoable.back();
    Change& grown = last.changes.front();
    const Change& added = step.changes.front();
    const bool isInFront = step.kind == Kind::deletingBackward;
    grown.with.insert(isInFront ? 0 : grown.with.length(), added.with);
    grown.range
        = {std::min(grown.range.location, added.range.location), grown.range.length + added.range.length};
    last.after = step.after;
    last.time = step.time;
}

/// Makes the changes of a step and turns them into those that take them back.
void UndoManager::Impl::make(Step& step)
{
    assert(!isMaking && depth == 0 && !step.changes.empty());
    isMaking = true;
    for (Change& change : step.changes | std::views::reverse) {
        const Rope oldText = storage.text();
        assert(change.range.end() <= oldText.length() && "the text was changed behind its history");
        change.with.putInto(storage, change.range);
        change = {{change.range.location, change.with.length()}, KeptText(oldText, change.range)};
    }
    isMaking = false;
    std::ranges::reverse(step.changes);
    lastMayGrow = false;
}

/// Many steps, or long texts in them, take time to free.
template <class Kept> void UndoManager::Impl::forget(Kept& kept)
{
    if (!kept.empty())
        storage.letGo(std::exchange(kept, {}));
}

UndoManager::UndoManager(TextStorage& storage)
    : m_impl(std::make_unique<Impl>(storage))
{
}

UndoManager::~UndoManager() = default;

void UndoManager::begin(Kind kind, Selection before, SteadyTime now)
{
    assert(!m_impl->isMaking);
    if (m_impl->depth++ == 0)
        m_impl->open = {.kind = kind, .before = before, .after = {}, .time = now, .changes = {}};
}

void UndoManager::end(Selection after)
{
    assert(m_impl->depth > 0);
    if (--m_impl->depth > 0)
        return;
    Step step = std::exchange(m_impl->open, {});
    step.after = after;
    if (!step.changes.empty())
        m_impl->keep(std::move(step));
}

void UndoManager::breakJoin()
{
    m_impl->lastMayGrow = false;
}

bool UndoManager::canUndo() const
{
    return m_impl->depth == 0 && !m_impl->undoable.empty();
}

bool UndoManager::canRedo() const
{
    return m_impl->depth == 0 && !m_impl->redoable.empty();
}

std::optional<UndoManager::Selection> UndoManager::undo()
{
    if (!canUndo())
        return std::nullopt;
    Step step = std::move(m_impl->undoable.back());
    m_impl->undoable.pop_back();
    m_impl->make(step);
    m_impl->redoable.push_back(std::move(step));
    return m_impl->redoable.back().before;
}

std::optional<UndoManager::Selection> UndoManager::redo()
{
    if (!canRedo())
        return std::nullopt;
    Step step = std::move(m_impl->redoable.back());
    m_impl->redoable.pop_back();
    m_impl->make(step);
    m_impl->undoable.push_back(std::move(step));
    return m_impl->undoable.back().after;
}

void UndoManager::removeAll()
{
    m_impl->forget(m_impl->undoable);
    m_impl->forget(m_impl->redoable);
    m_impl->forget(m_impl->open.changes);
    m_impl->lastMayGrow = false;
}

} // namespace quillmark
