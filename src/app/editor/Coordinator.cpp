#include "app/editor/Coordinator.h"

#include "app/editor/EditorView.h"
#include "desktop/Fonts.h"

#include <algorithm>

namespace quillmark {

namespace {

/// Texts of at least this length show line 1 and the offset as the column.
constexpr int64_t longText = 500'000;

} // namespace

Coordinator::Coordinator(AppState& app, EditorView& view)
    : m_app(app)
    , m_view(view)
{
    m_connections.emplace_back(app.settings.fontName.onChange([this](const auto&) { applyFont(); }));
    m_connections.emplace_back(app.settings.fontSize.onChange([this](double) { applyFont(); }));
    m_connections.emplace_back(app.isReadOnly.onChange([this](bool) { applyEditability(); }));
    m_connections.emplace_back(app.isLoading.onChange([this](bool) { applyEditability(); }));
    m_connections.emplace_back(app.loadGeneration.onChange([this](int64_t generation) {
        if (generation != m_lastGeneration)
            installText();
    }));
    m_connections.emplace_back(view.onBoundsChanged([this] { boundsChanged(); }));

    PlainTextView& text = view.textView();
    text.setDelegate(this);
    applyFont();
    applyEditability();
    installText();
    app.setTextView(&text);
}

Coordinator::~Coordinator()
{
    if (m_app.textView() == &m_view.textView())
        m_app.setTextView(nullptr);
    m_view.textView().setDelegate(nullptr);
}

void Coordinator::textDidChange()
{
    m_app.textDidChange();
}

void Coordinator::textViewDidChangeSelection()
{
    const PlainTextView& view = m_view.textView();
    const Rope& text = view.text();
    const int64_t caret = std::min(text.length(), view.selection().range().location);
    const Line line = text.length() < longText ? text.lineAt(caret) : Line{0};
    m_app.setCursor(number(line) + 1, caret - text.startOf(line) + 1);
}

void Coordinator::textViewDidPaste(std::u16string_view text)
{
    m_app.detectLanguageAfterPaste(text, m_view.textView());
}

void Coordinator::boundsChanged()
{
    const PlainTextView& view = m_view.textView();
    const double visible = m_view.height();
    const double document = std::max(visible, view.contentHeight());
    if (document <= 0)
        return;
    m_app.setViewport(std::max(view.scrollTop() / document, 0.0), std::min(visible / document, 1.0));
}

void Coordinator::installText()
{
    m_lastGeneration = m_app.loadGeneration.get();
    m_view.textView().setText(m_app.currentText());
    // At once: what is typed after a key that loads a text is meant for that text.
    const bool isKept = keepsKeyboard && keepsKeyboard();
    if (!isKept && (hasUserAskedForIt() || !isKeyboardElsewhere()))
        m_view.setFocus();
    m_lastTab = m_app.activeTabID.get();
    m_lastNote = m_app.activeNoteID();
}

/// Not so when other programs changed the text, or took the note away that was shown.
bool Coordinator::hasUserAskedForIt() const
{
    const bool isRemoved = m_lastNote && !m_app.store.find(*m_lastNote);
    return !isRemoved && m_lastTab != m_app.activeTabID.get();
}

bool Coordinator::isKeyboardElsewhere() const
{
    const QWidget* const holder = m_view.window()->focusWidget();
    return holder && holder != &m_view && holder->isVisible();
}

void Coordinator::applyFont()
{
    const std::string& name = m_app.settings.fontName.get();
    const double size = m_app.settings.fontSize.get();
    if (name == m_fontName && size == m_fontSize)
        return;
    m_fontName = name;
    m_fontSize = size;
    m_view.setEditorFont(editorFont(name, size));
}

void Coordinator::applyEditability()
{
    m_view.setEditable(!m_app.isReadOnly.get() && !m_app.isLoading.get());
}

} // namespace quillmark
