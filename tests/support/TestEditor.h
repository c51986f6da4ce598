// A PlainTextView with everything around it that a test needs, and a record of what its delegate heard.
#pragma once

#include "editor/PlainTextView.h"
#include "support/FakeClipboard.h"
#include "support/FixedShaper.h"
#include "support/ManualScheduler.h"

#include <string>

namespace quillmark::test {

struct TestEditor final : PlainTextView::Delegate {
    explicit TestEditor(double columns = 20, double rows = 10)
    {
        view.setVisibleSize(columns * FixedShaper::cellWidth, rows * FixedShaper::rowHeight);
        view.setDelegate(this);
    }

    void textDidChange() override { heard += "text "; }
    void textViewDidChangeSelection() override { heard += "selection "; }

    ManualScheduler scheduler;
    FixedShaper shaper;
    FakeClipboard clipboard;
    PlainTextView view{scheduler, shaper, clipboard};
    std::string heard; ///< "text " and "selection ", in order
};

} // namespace quillmark::test
