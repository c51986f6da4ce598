// The model with an editor on a world that obeys the test: what a user can do to it, and what is to be seen
// afterwards.
#pragma once

#include "support/FakeClipboard.h"
#include "support/FixedShaper.h"
#include "support/World.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace quillmark::test {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

struct AppTest : testing::Test, World, PlainTextView::Delegate {
    FixedShaper shaper;
    FakeClipboard clipboard;
    PlainTextView view{scheduler, shaper, clipboard};
    std::unique_ptr<AppState> app;
    Connection generation;

    AppTest()
    {
        view.setVisibleSize(40 * FixedShaper::cellWidth, 10 * FixedShaper::rowHeight);
        view.setDelegate(this);
    }

    ~AppTest() override { stop(); }

    void textDidChange() override { app->textDidChange(); }
    void textViewDidChangeSelection() override {}
    void textViewDidPaste(std::u16string_view text) override { app->detectLanguageAfterPaste(text, view); }

    AppState& start()
    {
        app = makeApp();
        generation = app->loadGeneration.onChange([this](int64_t) { view.setText(app->currentText()); });
        view.setText(app->currentText());
        app->setTextView(&view);
        return *app;
    }

    void stop()
    {
        generation = {};
        app.reset();
        scheduler.settle();
    }

    void quit()
    {
        app->willTerminate();
        stop();
    }

    AppState& restart()
    {
        quit();
        return start();
    }

    // The user.
    void type(const std::string& text) { view.insertText(utf16(text)); }
    void clear()
    {
        view.selectAll();
        view.deleteSelection();
    }
    void pasteLarge() { type(std::string(600 * 1024, 'x') + "\n"); } // written in the background
    void select(size_t index) { app->selectTab(app->tabs.get().at(index)->id); }
    void close(size_t index) { app->closeTab(app->tabs.get().at(index)->id); }
    void open(const Path& file) { app->openFile(file); }

    // What is to be seen.
    std::string shown() const { return utf8(view.text().text()); }
    Strings titles() const
    {
        Strings result;
        for (const auto& tab : *app->tabs)
            result.push_back(tab->title.get());
        return result;
    }
    size_t activeIndex() const
    {
        const auto& tabs = *app->tabs;
        return static_cast<size_t>(std::ranges::find(tabs, app->activeTab()) - tabs.begin());
    }
    Strings kept() const { return textsIn(recovered); }
    std::optional<std::string> noteText(const std::string& name) const { return disk.bytes(note(name)); }
};

} // namespace quillmark::test
