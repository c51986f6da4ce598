// A model whose files other programs change.
#pragma once

#include "AppTest.h"

namespace quillmark::test {

struct ExternalChangesTest : AppTest {
    /// The other program's work is over and has been heard of.
    void hear(Duration later = 400ms)
    {
        watching.deliver();
        scheduler.advance(later);
        scheduler.settle();
    }
    void theyWrite(const Path& file, std::string_view bytes)
    {
        disk.erase(file); // as renaming over it does: another inode
        disk.putFile(file, bytes);
    }
    std::string noticeShown() const { return app->notice->value_or(""); }
    Strings conflictCopies() const
    {
        Strings texts;
        for (const std::string& name : disk.names(notes)) {
            if (name.find("(conflict ") != std::string::npos)
                texts.push_back(*noteText(name));
        }
        return texts;
    }
};

} // namespace quillmark::test
