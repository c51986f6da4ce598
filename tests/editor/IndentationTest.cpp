#include "support/MarkedText.h"
#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

const ViewCommand tab = &PlainTextView::insertTab;
const ViewCommand backtab = &PlainTextView::unindent;

TEST(Tab, IndentsTheLinesOfASelection)
{
    EXPECT_EDIT(tab, "«one\n\n  two»\nthree", "«\tone\n\n\t  two»\nthree");
    EXPECT_EDIT(tab, "o«|ne\ntw»o", "\to«|ne\n\ttw»o");
    EXPECT_EDIT(tab, "«one\n»two", "«\tone\n»two");
    EXPECT_EDIT(tab, "one\n«\n»\n", "one\n«\n»\n");
}

TEST(Tab, ReplacesASelectionWithinALine)
{
    EXPECT_EDIT(tab, "o«n»e\ntwo", "o\t|e\ntwo");
    EXPECT_EDIT(tab, "|one", "\t|one");
}

TEST(ShiftTab, TakesATabOrUpToFourSpaces)
{
    EXPECT_EDIT(backtab, "«\t\tone\n      two\n   three\nfour»", "«\tone\n  two\nthree\nfour»");
    EXPECT_EDIT(backtab, "  \tone|", "\tone|");
    EXPECT_EDIT(backtab, "  |  one", "|one");
    EXPECT_EDIT(backtab, "a\n    «|one\n\t»two", "a\n«|one\n»two");
    EXPECT_EDIT(backtab, "\ta\n \t«b»\n\tc", "\ta\n\t«b»\n\tc");
    EXPECT_EDIT(backtab, "one|", "one|");
    EXPECT_EDIT(backtab, "|", "|");
}

TEST(Tab, IsOneStepOfUndoAndOneEdit)
{
    TestEditor editor;
    const std::string before = "x\n«one\n  two\n»three";
    install(editor.view, before);
    int edits = 0;
    const Connection counted = editor.view.storage().onEdit([&](const TextEdit&, const Rope&) { ++edits; });
    editor.view.insertTab();
    EXPECT_EQ(edits, 1);
    editor.view.undo();
    EXPECT_EQ(marked(editor.view), before);
    editor.view.unindent();
    EXPECT_EQ(marked(editor.view), "x\n«one\ntwo\n»three");
    editor.view.undo();
    EXPECT_EQ(marked(editor.view), before);
    editor.view.setEditable(false);
    editor.view.unindent();
    EXPECT_EQ(marked(editor.view), before);
}

} // namespace
} // namespace quillmark::test
