// The pixels of the editor: paints the visible rows, the selection and the caret of a PlainTextView and hands
// keys, input methods, mouse, drag and drop to it. It knows no document and no settings; the Coordinator
// connects it with AppState.
#pragma once

#include "app/editor/EditorFrame.h"
#include "app/editor/EditorScrollBar.h"
#include "desktop/QtShaper.h"

#include <QBasicTimer>
#include <QWidget>

class QDrag;
class QMenu;

namespace quillmark {

class EditorAnnouncer;

class EditorView : public QWidget {
public:
    static constexpr int horizontalInset = 20;
    static constexpr int verticalInset = 16; ///< scrolls with the text

    EditorView(Scheduler& scheduler, Clipboard& clipboard, QWidget* parent = nullptr);
    ~EditorView() override;

    PlainTextView& textView() { return m_text; }
    void setEditorFont(const QFont& font); ///< of existing and of new text; the text itself is not touched
    const QFont& textFont() const { return m_shaper.font(); }
    void setEditable(bool editable);
    /// Calls `slot()` after every scroll and resize.
    template <class Slot> [[nodiscard]] Connection onBoundsChanged(Slot slot)
    {
        return Connection(m_boundsChanged.connect(std::move(slot)));
    }

    /// An event of the input method is then the answer to what the editor asked of it.
    bool isTalkingToInputMethod() const { return m_isResettingInputMethod || m_isCommittingInputMethod; }

    QSize sizeHint() const override { return {800, 600}; }
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    /// Lets the user drag; returns where it ended, and by which action. Blocks.
    virtual Qt::DropAction execute(QDrag& drag, Qt::DropActions actions);
    bool focusNextPrevChild(bool) override { return false; } ///< Tab is a character here

private:
    struct DoubleClick {
        ulong time = 0; ///< milliseconds, of the event
        QPointF place;
    };

    // Painting.
    void refreshLater();
    void refresh(MayScroll mayScroll);
    void screenChanged();
    std::vector<Span> selectedSpans(const FrameRow& row) const; ///< from the corner of the view
    void drawSelection(QPainter& painter, const FrameRow& row, const QRectF& place) const;
    void drawUnderlines(QPainter& painter, const FrameRow& row, const QRectF& place) const;
    void drawRow(QPainter& painter, const FrameRow& row) const;
    void drawCaret(QPainter& painter) const;
    std::optional<QRectF> caretRect();
    QRectF rectOf(const CaretPlace& place) const;
    QRect textArea() const; ///< without the strip of the scroll bar
    void restartBlinking();
    void placeScrollBar();

    // Input methods.
    void askInputMethodToCommit();
    void resetInputMethod();
    void tellInputMethod(bool hasCaretMoved);

    // Drag and drop.
    bool isOnSelection(QPointF place);
    void startDrag();
    bool mayDrop(const QDropEvent& event) const;
    void showDropPlace(QPointF place);
    void hideDropPlace();
    void scrollTowardsDropPlace();

    // The mouse.
    void pressAt(QPointF place, Granularity granularity, Extend extend);
    void drag();
    void pastePrimarySelectionAt(QPointF place);
    bool isThirdClick(const QMouseEvent& event) const;
    QMenu* makeContextMenu();

    QtShaper m_shaper;
    PlainTextView m_text;
    Clipboard& m_clipboard;
    EditorScrollBar* const m_scrollBar;
    EditorFrame m_frame; ///< what is on the screen once all updates are painted
    bool m_isRefreshPending = false;
    bool m_isCaretOn = false;
    QBasicTimer m_blink;

    Selection m_toldSelection; ///< that the input method knows of
    bool m_hasTextChanged = false; ///< since then
    bool m_isResettingInputMethod = false;
    bool m_isCommittingInputMethod = false;

    std::optional<QPointF> m_pressOnSelection; ///< which becomes a drag or a click
    std::optional<QPointF> m_dropPlace; ///< where what is dragged over the view would be dropped
    bool m_isDroppedHere = false;
    QBasicTimer m_dropScroll;

    bool m_isSelecting = false;
    QPointF m_dragPlace;
    QBasicTimer m_autoscroll;
    std::optional<DoubleClick> m_doubleClick;
    double m_wheelRest = 0; ///< pixels that were asked for and are less than one of the device's

    Signal<> m_boundsChanged;
    std::vector<Connection> m_connections;
    std::unique_ptr<EditorAnnouncer> m_announcer;
};

} // namespace quillmark
