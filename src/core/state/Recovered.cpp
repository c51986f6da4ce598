// Texts of the recovery folder become notes again.
#include "core/state/Impl.h"

namespace quillmark {

void AppState::openRecovered(const RecoveredEntry& entry)
{
    if (entry.size > largestEditableFile)
        return openFile(entry.path); // to read and to save elsewhere
    recovered.read(entry.path, [this](const Result<Rope>& text) {
        if (!text)
            return showNotice("Не удалось открыть восстановленный текст: " + text.error().message);
        newNote();
        PlainTextView* const view = textView();
        if (!view || !view->isEditable())
            return;
        view->insertText(text->text()); // as if it were typed: then it is saved as words are that were typed
        view->select(Selection::at({0}));
        view->scrollToCaret();
        view->becomeFirstResponder();
    });
}

} // namespace quillmark
