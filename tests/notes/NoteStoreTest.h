// A notes store on a disk that obeys the test.
#pragma once

#include "support/Repeated.h"
#include "support/World.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace quillmark::test {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct NoteStoreTest : testing::Test, World {
    WriteQueue queue{scheduler, writer, log, [](const WriteQueue::Outcome&) {}};
    std::unique_ptr<NoteStore> store;

    NoteStore& open()
    {
        store.reset();
        store = std::make_unique<NoteStore>(noteStoreServices(*this, queue, notes));
        return *store;
    }

    const Note& only() const { return store->notes->front(); }

    Note noteCalled(const std::string& name) const
    {
        const auto found = std::ranges::find(*store->notes, note(name), &Note::url);
        return found != store->notes->end() ? *found : Note();
    }

    Names listed() const
    {
        Names names;
        for (const Note& note : *store->notes)
            names.push_back(note.url.filename());
        return names;
    }

    /// Writes a text into the note's file as the model does.
    void save(const Note& note, const std::string& text)
    {
        const auto written = queue.writeNow({.target = note.url, .text = Rope::fromUtf8(text)});
        ASSERT_TRUE(written);
        store->noteDidSave(note.id, Rope::fromUtf8(text), written->bytes);
    }
};

} // namespace quillmark::test
