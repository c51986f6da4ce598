#pragma once

#include "platform/Clipboard.h"

#include <array>
#include <optional>
#include <utility>

namespace quillmark::test {

/// A clipboard and a primary selection of the test's own, both without text at first.
class FakeClipboard final : public Clipboard {
public:
    bool hasText(Buffer buffer) const override { return slot(buffer).has_value(); }
    std::u16string text(Buffer buffer) const override { return slot(buffer).value_or(Rope()).text(); }
    void setText(Rope text, Buffer buffer) override { slot(buffer) = std::move(text); }
    void setText(std::u16string_view text, Buffer buffer) { setText(Rope(text), buffer); }

    /// Something that is not text was copied, or the owner of the text went away.
    void clear(Buffer buffer) { slot(buffer).reset(); }

private:
    using Slot = std::optional<Rope>;

    const Slot& slot(Buffer buffer) const { return m_slots[buffer == Buffer::clipboard ? 0 : 1]; }
    Slot& slot(Buffer buffer) { return m_slots[buffer == Buffer::clipboard ? 0 : 1]; }

    std::array<Slot, 2> m_slots;
};

} // namespace quillmark::test
