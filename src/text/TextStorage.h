// The one mutable document: a current Rope and the observers of its edits.
#pragma once

#include "base/Observable.h"
#include "text/Rope.h"

#include <functional>
#include <memory>

namespace quillmark {

/// What an edit did, in the coordinates of the new text.
struct TextEdit {
    Range edited; ///< what was put in, in the new text
    int64_t changeInLength = 0; ///< new length minus old length

    Range replaced() const { return {edited.location, edited.length - changeInLength}; } ///< in the old text
    int64_t moved(int64_t offset) const; ///< where a place in the old text stands in the new one
    bool operator==(const TextEdit&) const = default;
};

/// Main thread only; give other threads a copy of text().
class TextStorage {
public:
    const Rope& text() const { return m_text; }
    int64_t length() const { return m_text.length(); }

    /// Replaces a range (cut to the text) and tells the observers, in the order in which they connected.
    /// Nothing put in the place of nothing is not an edit: nobody hears of it.
    void replace(Range range, std::u16string_view with);
    void replace(Range range, const Rope& with);

    /// Calls `slot(edit, oldText)` after each edit, when text() is already the new text. Observers must not
    /// edit the storage.
    template <class Slot> [[nodiscard]] Connection onEdit(Slot slot) const
    {
        return Connection(m_edited.connect(std::move(slot)));
    }

    /// Takes what is given up and would take long to free, to free it where nobody waits: on another thread.
    using LetGo = std::function<void(std::shared_ptr<void>)>;
    void setLetGo(LetGo letGo) { m_letGo = std::move(letGo); } ///< none: it is freed at once
    template <class Value> void letGo(Value value)
    {
        if (m_letGo)
            m_letGo(std::make_shared<Value>(std::move(value)));
    }

private:
    template <class Text> void edit(Range range, const Text& with, int64_t length);

    Rope m_text;
    mutable Signal<const TextEdit&, const Rope& /* old text */> m_edited; // to listen changes nothing
    LetGo m_letGo;
    bool m_isTelling = false; ///< observers are hearing of an edit
};

} // namespace quillmark
