// Keeps one editor and the model in step without feedback loops: text goes from the model to the view only
// under a new load generation, and from the view to the model only by notice after an edit by the user.
#pragma once

#include "core/AppState.h"

namespace quillmark {

class EditorView;

/// Makes the view's text the model's live text for as long as it lives. Main thread only. The AppState, the
/// Scheduler and the view outlive it.
class Coordinator final : PlainTextView::Delegate {
public:
    Coordinator(AppState& app, Scheduler& scheduler, EditorView& view);
    ~Coordinator() override;
    Coordinator(const Coordinator&) = delete;
    Coordinator& operator=(const Coordinator&) = delete;

private:
    void textDidChange() override;
    void textViewDidChangeSelection() override;
    void textViewDidPaste(std::u16string_view text) override;
    void boundsChanged();
    void installText();
    bool isTypedElsewhere() const;
    void applyFont();
    void applyEditability();

    AppState& m_app;
    Scheduler& m_scheduler;
    EditorView& m_view;
    int64_t m_lastGeneration = 0; ///< whose text the view shows
    std::optional<Uuid> m_lastTab; ///< whose text it is
    std::string m_fontName; ///< as last applied
    double m_fontSize = 0;
    Task m_focus; ///< the focus comes in the turn after a text was installed, when the window is in order
    std::vector<Connection> m_connections;
};

} // namespace quillmark
