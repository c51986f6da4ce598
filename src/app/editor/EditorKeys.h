// What a key does in the editor alone, motions and deletions, and what it types. Commands that a menu has too
// are in the command table.
#pragma once

#include "editor/PlainTextView.h"

#include <QString>

#include <optional>
#include <variant>

class QKeyEvent;

namespace quillmark {

struct KeyMotion {
    Motion motion{};
    Extend extend = Extend::no;
    bool operator==(const KeyMotion&) const = default;
};
using KeyCommand = void (*)(PlainTextView&);
using KeyAction = std::variant<KeyMotion, KeyCommand>;

/// What the editor does at a key, if anything.
std::optional<KeyAction> actionFor(const QKeyEvent& event);
void run(const KeyAction& action, PlainTextView& text);

/// The characters that a key types; empty when it types none.
QString typedText(const QKeyEvent& event);

} // namespace quillmark
