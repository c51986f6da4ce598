// The editor as a screen reader knows it: its text, caret and selection, where characters stand on the
// screen, and edits as steps of undo. Offsets are UTF-16 units. No answer is longer than `longestAnswer`, and
// none takes longer in a longer text.
#pragma once

#include "app/editor/AccessibleText.h"

#include <QAccessibleWidget>

namespace quillmark {

class EditorView;

class EditorAccessible final : public QAccessibleWidget,
                               public QAccessibleTextInterface,
                               public QAccessibleEditableTextInterface {
public:
    /// Lets Qt make one for each EditorView that it is asked about. May be called again.
    static void install();

    explicit EditorAccessible(EditorView& view);

    bool isValid() const override; ///< no longer once the view is being destroyed
    void* interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;

    // Of an offset, -1 means the end of the text and -2 the caret; others are cut to the text.
    void selection(int index, int* start, int* end) const override; ///< there is one or none
    int selectionCount() const override;
    void addSelection(int start, int end) override; ///< replaces the one there is
    void removeSelection(int index) override; ///< the caret stays
    void setSelection(int index, int start, int end) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override; ///< scrolls there

    QString text(int start, int end) const override; ///< of a longer range, its beginning
    QString textBeforeOffset(
        int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const override;
    QString textAfterOffset(
        int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const override;
    QString textAtOffset(
        int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const override;
    int characterCount() const override;

    QRect characterRect(int offset) const override; ///< empty for a character that is not on the screen
    int offsetAtPoint(const QPoint& point) const override; ///< −1 beside the editor
    void scrollToSubstring(int start, int end) override; ///< to its start; the caret stays
    QString attributes(int offset, int* start, int* end) const override; ///< the same for the whole text

    // Nothing while the text is not editable.
    void deleteText(int start, int end) override;
    void insertText(int offset, const QString& text) override;
    void replaceText(int start, int end, const QString& text) override;

private:
    PlainTextView& model() const;
    int64_t resolved(int offset) const;
    QString answer(Range unit, int* start, int* end) const;

    EditorView& m_view;
};

/// Tells of edits, of the caret and of the selection as they change. Computes nothing while nobody listens.
class EditorAnnouncer final : QAccessible::ActivationObserver {
public:
    using Tell = void (*)(QAccessibleEvent*);

    explicit EditorAnnouncer(EditorView& view, Tell tell = &QAccessible::updateAccessibility);
    ~EditorAnnouncer();
    EditorAnnouncer(const EditorAnnouncer&) = delete;
    EditorAnnouncer& operator=(const EditorAnnouncer&) = delete;

    void editabilityChanged();

private:
    void accessibilityActiveChanged(bool isActive) override { m_isHeard = isActive; }
    void announceEdit(const TextEdit& edit, const Rope& oldText);
    void announceSelection();

    EditorView& m_view;
    const Tell m_tell;
    bool m_isHeard;
    Selection m_told;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
