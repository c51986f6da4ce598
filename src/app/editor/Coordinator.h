// Keeps one editor and the model in step without feedback loops: text goes from the model to the view only
// under a new load generation, and from the view to the model only by notice after an edit by the user.
#pragma once

#include "core/AppState.h"

#include <functional>

namespace quillmark {

class EditorView;

/// Makes the view's text the model's live text for as long as it lives. Main thread only. The AppState
/// and the view outlive it.
class Coordinator final : PlainTextView::Delegate {
public:
    Coordinator(AppState& app, EditorView& view);
    ~Coordinator() override;
    Coordinator(const Coordinator&) = delete;
    Coordinator& operator=(const Coordinator&) = delete;

    std::function<bool()> keepsKeyboard; ///< whoever loads a text goes on with the keyboard elsewhere

private:
    void textDidChange() override;
    void textViewDidChangeSelection() override;
    void textViewDidPaste(std::u16string_view text) override;
    void boundsChanged();
    void installText();
    bool hasUserAskedForIt() const;
    bool isKeyboardElsewhere() const;
    void applyFont();
    void applyEditability();

    AppState& m_app;
    EditorView& m_view;
    int64_t m_lastGeneration = 0; ///< whose text the view shows
    std::optional<Uuid> m_lastTab; ///< whose text it is
    std::optional<Uuid> m_lastNote; ///< … and which note that shows, if any
    std::string m_fontName; ///< as last applied
    double m_fontSize = 0;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
