// What types into the EditorView: keys and input methods.
#include "app/editor/EditorKeys.h"
#include "app/editor/EditorView.h"

#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QTextCharFormat>

#include <algorithm>
#include <limits>

namespace quillmark {

namespace {

using Clause = Composition::Clause;
using Underline = Composition::Underline;

Underline underlineOf(const QTextCharFormat& format)
{
    switch (format.underlineStyle()) {
    case QTextCharFormat::DashUnderline:
    case QTextCharFormat::DashDotLine:
    case QTextCharFormat::DashDotDotLine:
        return Underline::dashed;
    case QTextCharFormat::DotLine:
        return Underline::dotted;
    case QTextCharFormat::WaveUnderline:
    case QTextCharFormat::SpellCheckUnderline:
        return Underline::wavy;
    case QTextCharFormat::NoUnderline:
    case QTextCharFormat::SingleUnderline:
        break;
    }
    return Underline::solid; // one can always tell what is not typed yet
}

/// The input method's own colours are made for another background: only what they mean is kept.
Clause clauseOf(const QTextCharFormat& format)
{
    return {.units = {},
        .underline = underlineOf(format),
        .isHighlighted = format.background().style() != Qt::NoBrush};
}

bool looksLike(const Clause& a, const Clause& b)
{
    return a.underline == b.underline && a.isHighlighted == b.isHighlighted;
}

/// Attributes may overlap, leave gaps and lie outside of the text; clauses do not.
std::vector<Clause> clausesOf(const QInputMethodEvent& event)
{
    const int64_t length = event.preeditString().size();
    std::vector<Clause> clauses;
    for (int64_t unit = 0; unit < length; ++unit) {
        Clause clause{.units = {unit, 1}};
        for (const QInputMethodEvent::Attribute& attribute : event.attributes()) {
            const Range range{attribute.start, attribute.length};
            if (attribute.type == QInputMethodEvent::TextFormat && range.contains(unit)) {
                clause = clauseOf(qvariant_cast<QTextFormat>(attribute.value).toCharFormat());
                clause.units = {unit, 1};
            }
        }
        const bool startsAnother = std::ranges::any_of(event.attributes(), [&](const auto& attribute) {
            return attribute.type == QInputMethodEvent::TextFormat && attribute.start == unit;
        });
        if (!clauses.empty() && !startsAnother && looksLike(clauses.back(), clause))
            ++clauses.back().units.length;
        else
            clauses.push_back(clause);
    }
    return clauses;
}

Composition compositionOf(const QInputMethodEvent& event)
{
    Composition composition{.text = event.preeditString().toStdU16String(),
        .caret = event.preeditString().size(),
        .isCaretVisible = true,
        .clauses = clausesOf(event)};
    for (const QInputMethodEvent::Attribute& attribute : event.attributes()) {
        if (attribute.type != QInputMethodEvent::Cursor)
            continue;
        composition.caret = attribute.start;
        composition.isCaretVisible = attribute.length != 0;
    }
    return composition;
}

QString toQString(const std::u16string& text)
{
    return QString::fromStdU16String(text);
}

} // namespace

void EditorView::keyPressEvent(QKeyEvent* event)
{
    if (const auto action = actionFor(*event))
        run(*action, m_text);
    else if (const QString text = typedText(*event); !text.isEmpty())
        m_text.insertText(text.toStdU16String());
    else
        return event->ignore();
    event->accept();
    restartBlinking();
}

void EditorView::inputMethodEvent(QInputMethodEvent* event)
{
    event->accept();
    if (m_isResettingInputMethod) // it lets go of what is in the text already
        return;
    const QString& typed = event->commitString();
    if (!typed.isEmpty() || event->replacementLength() > 0)
        m_text.insertComposed(
            typed.toStdU16String(), {event->replacementStart(), event->replacementLength()});
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type != QInputMethodEvent::Selection)
            continue;
        const int64_t anchor = m_text.inputContext().location + attribute.start;
        m_text.select({.anchor = anchor, .caret = anchor + attribute.length});
    }
    m_text.compose(compositionOf(*event));
    restartBlinking();
}

QVariant EditorView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    const Selection& selection = m_text.selection();
    const Range context = m_text.inputContext();
    const auto textOf = [&](Range range) { return toQString(m_text.text().text(range)); };
    const auto inContext = [&](int64_t offset) {
        return static_cast<int>(std::clamp(offset, context.location, context.end()) - context.location);
    };
    switch (query) {
    case Qt::ImEnabled:
        return m_text.isEditable();
    case Qt::ImReadOnly:
        return !m_text.isEditable();
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhMultiLine);
    case Qt::ImFont:
        return m_shaper.font();
    case Qt::ImCursorRectangle:
        return rectOf(m_text.caretPlace());
    case Qt::ImAnchorRectangle:
        return rectOf(m_text.placeOf(selection.anchor));
    case Qt::ImInputItemClipRectangle:
        return QRectF(textArea());
    case Qt::ImCursorPosition:
        return inContext(selection.caret);
    case Qt::ImAnchorPosition:
        return inContext(selection.anchor);
    case Qt::ImAbsolutePosition:
        return static_cast<int>(std::min<int64_t>(selection.caret, std::numeric_limits<int>::max()));
    case Qt::ImSurroundingText:
        return textOf(context);
    case Qt::ImTextBeforeCursor:
        return textOf(Range::between(context.location, selection.caret));
    case Qt::ImTextAfterCursor:
        return textOf(Range::between(selection.caret, context.end()));
    case Qt::ImCurrentSelection:
        return textOf(intersection(selection.range(), context));
    default:
        return QWidget::inputMethodQuery(query);
    }
}

/// One that can commit does so at once, by an event.
void EditorView::askInputMethodToCommit()
{
    if (QGuiApplication::focusObject() != this)
        return;
    m_isCommittingInputMethod = true;
    QGuiApplication::inputMethod()->commit();
    m_isCommittingInputMethod = false;
}

void EditorView::resetInputMethod()
{
    if (QGuiApplication::focusObject() != this)
        return;
    m_isResettingInputMethod = true;
    QGuiApplication::inputMethod()->reset();
    m_isResettingInputMethod = false;
}

/// Once for all that happened in an event.
void EditorView::tellInputMethod(bool hasCaretMoved)
{
    const Selection& selection = m_text.selection();
    if (!hasCaretMoved && !m_hasTextChanged && selection == m_toldSelection)
        return;
    m_hasTextChanged = false;
    m_toldSelection = selection;
    if (QGuiApplication::focusObject() == this)
        QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle | Qt::ImAnchorRectangle
            | Qt::ImCursorPosition | Qt::ImAnchorPosition | Qt::ImSurroundingText | Qt::ImCurrentSelection);
}

} // namespace quillmark
