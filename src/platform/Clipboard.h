#pragma once

#include "text/Rope.h"

#include <string>

namespace quillmark {

/// The clipboard and the primary selection, as plain text. Main thread only.
class Clipboard {
public:
    enum class Buffer { clipboard, primarySelection };

    virtual ~Clipboard() = default;
    virtual bool hasText(Buffer buffer = Buffer::clipboard) const = 0;
    virtual std::u16string text(Buffer buffer = Buffer::clipboard) const = 0; ///< empty when it holds no text
    /// Takes no time, however long the text is: its characters are asked for when somebody pastes.
    virtual void setText(Rope text, Buffer buffer = Buffer::clipboard) = 0;
};

} // namespace quillmark
