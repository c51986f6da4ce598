// The desktop's clipboard and primary selection.
#pragma once

#include "platform/Clipboard.h"

namespace quillmark {

/// Needs a QApplication. Where the desktop has no primary selection, that one stays empty.
class QtClipboard final : public Clipboard {
public:
    bool hasText(Buffer buffer = Buffer::clipboard) const override;
    std::u16string text(Buffer buffer = Buffer::clipboard) const override;
    void setText(Rope text, Buffer buffer = Buffer::clipboard) override;
};

} // namespace quillmark
