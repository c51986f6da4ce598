// Tests that read like the screen: « and » mark a selection, | the caret. The caret stands at the end of a
// selection, unless | follows the «.
#pragma once

#include "editor/PlainTextView.h"

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace quillmark::test {

struct MarkedText {
    std::u16string text;
    Selection selection;
};

MarkedText parseMarks(std::string_view marked);
std::string withMarks(const std::u16string& text, const Selection& selection);

using ViewCommand = std::function<void(PlainTextView&)>;

void install(PlainTextView& view, std::string_view marked);
std::string marked(const PlainTextView& view);

/// What a command, such as &PlainTextView::deleteForward, makes of a text in a view of 20 × 10 characters.
std::string resultOf(const ViewCommand& command, std::string_view before);

} // namespace quillmark::test

#define EXPECT_EDIT(command, before, after) EXPECT_EQ(quillmark::test::resultOf(command, before), after)
#define EXPECT_NO_EDIT(command, text) EXPECT_EQ(quillmark::test::resultOf(command, text), text)
