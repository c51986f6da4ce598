#include "app/editor/EditorView.h"

#include "app/Paint.h"
#include "app/editor/EditorAccessible.h"
#include "app/editor/EditorKeys.h"
#include "desktop/Fonts.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QStyleHints>

#include <algorithm>
#include <cmath>

namespace quillmark {

namespace {

constexpr double caretWidth = 2;
constexpr double caretInset = 2; ///< at the top and the bottom of its row
constexpr double defaultFontSize = 13;

QEvent::Type refreshEventType()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

EditorView::EditorView(Scheduler& scheduler, Clipboard& clipboard, QWidget* parent)
    : QWidget(parent)
    , m_shaper(editorFont({}, defaultFontSize), devicePixelRatioF())
    , m_text(scheduler, m_shaper, clipboard)
    , m_clipboard(clipboard)
    , m_scrollBar(new EditorScrollBar(this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_InputMethodEnabled);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::IBeamCursor);
    m_text.setVerticalInset(verticalInset);
    m_connections.emplace_back(m_text.needsDisplay().connect([this] { refreshLater(); }));
    m_connections.emplace_back(m_text.becomeFirstResponder().connect([this] { setFocus(); }));
    m_connections.emplace_back(m_text.scrolled().connect([this] { placeScrollBar(); }));
    m_connections.emplace_back(
        m_scrollBar->scrollRequested().connect([this](double top) { m_text.scrollTo(top); }));
    m_announcer = std::make_unique<EditorAnnouncer>(*this);
}

EditorView::~EditorView() = default;

void EditorView::setEditorFont(const QFont& font)
{
    m_shaper.setFont(font, devicePixelRatioF());
    m_text.fontChanged();
}

void EditorView::setEditable(bool editable)
{
    if (editable == m_text.isEditable())
        return;
    m_text.setEditable(editable);
    updateMicroFocus(Qt::ImEnabled);
    m_announcer->editabilityChanged();
}

bool EditorView::event(QEvent* event)
{
    if (event->type() == refreshEventType()) {
        refresh(MayScroll::yes);
        return true;
    }
    switch (event->type()) {
    case QEvent::ShortcutOverride: { // what the editor does itself goes before the shortcuts of the window
        const auto& key = *static_cast<QKeyEvent*>(event);
        event->setAccepted(actionFor(key) || !typedText(key).isEmpty());
        return true;
    }
    case QEvent::ScreenChangeInternal:
    case QEvent::Show:
        screenChanged();
        break;
    case QEvent::PaletteChange:
        update();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void EditorView::screenChanged()
{
    if (devicePixelRatioF() != m_shaper.devicePixelRatio())
        setEditorFont(m_shaper.font());
}

void EditorView::resizeEvent(QResizeEvent*)
{
    m_scrollBar->setGeometry(width() - EditorScrollBar::thickness, 0, EditorScrollBar::thickness, height());
    m_text.setVisibleSize(std::max(1, width() - 2 * horizontalInset), height());
    placeScrollBar();
    refreshLater();
}

void EditorView::placeScrollBar()
{
    const double height = this->height();
    m_scrollBar->setPlace(m_text.scrollTop(), height, std::max(height, m_text.contentHeight()));
    m_boundsChanged.emit();
}

QRect EditorView::textArea() const
{
    return rect().adjusted(0, 0, -EditorScrollBar::thickness, 0);
}

void EditorView::refreshLater()
{
    if (m_isRefreshPending)
        return;
    m_isRefreshPending = true; // many changes of one event make one picture
    QCoreApplication::postEvent(this, new QEvent(refreshEventType()));
}

void EditorView::refresh(MayScroll mayScroll)
{
    m_isRefreshPending = false;
    EditorFrame next = frameOf(m_text);
    next.caret = caretRect();
    const double ratio = devicePixelRatioF();
    const bool isWholeRatio = ratio == std::round(ratio);
    const FrameChange change = changeBetween(m_frame, next, size(), isWholeRatio ? mayScroll : MayScroll::no);
    const bool caretMoved = m_frame.caret != next.caret;
    m_frame = std::move(next);
    if (change.scroll != 0)
        scroll(0, change.scroll, textArea());
    update(change.dirty);
    if (caretMoved) {
        restartBlinking();
        updateMicroFocus(Qt::ImCursorRectangle);
    }
}

void EditorView::paintEvent(QPaintEvent* event)
{
    screenChanged(); // a screen may change its scale without a word
    if (m_isRefreshPending)
        refresh(MayScroll::no);
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::background)); // cut to the region, to the pixel
    painter.setPen(color(ThemeColor::foreground));
    for (const FrameRow& row : m_frame.rows) {
        // At fractional scales the region reaches a part of a pixel further than it says.
        const QRectF place(0, row.top - 1, width(), m_frame.rowHeight + 2);
        if (event->region().intersects(place.toAlignedRect()))
            drawRow(painter, row);
    }
    drawCaret(painter);
}

void EditorView::drawSelection(QPainter& painter, const FrameRow& row, const QRectF& place) const
{
    const auto& shaped = static_cast<const QtShapedText&>(*row.shaped);
    const QColor tint = color(ThemeColor::selection);
    const double rightmost = place.width() - 2 * horizontalInset;
    const auto fill = [&](double left, double right) {
        const double start = std::min(left, rightmost); // spaces may hang over the edge of the text
        const QRectF span(
            horizontalInset + start, place.top(), std::min(right, rightmost) - start, place.height());
        painter.fillRect(snapped(painter, span), tint);
    };
    for (const Span& span : shaped.spans(row.rowInShaped, row.selected))
        fill(span.left, span.right);
    if (row.isLineFeedSelected) {
        const double end
            = std::min(shaped.width(row.rowInShaped), rightmost - m_shaper.metrics().averageAdvance);
        fill(end, end + m_shaper.metrics().averageAdvance);
    }
}

void EditorView::drawRow(QPainter& painter, const FrameRow& row) const
{
    const QRectF place = snapped(painter, QRectF(0, row.top, width(), m_frame.rowHeight));
    painter.setClipRect(place); // what sticks out of a row would be left behind when its neighbour is painted
    drawSelection(painter, row, place);
    const QRectF text = snapped(painter, place.adjusted(horizontalInset, 0, 0, 0));
    static_cast<const QtShapedText&>(*row.shaped).draw(painter, row.rowInShaped, text.topLeft());
    painter.setClipping(false);
}

void EditorView::drawCaret(QPainter& painter) const
{
    if (!m_isCaretOn || !m_frame.caret)
        return;
    const double scale = painter.deviceTransform().m11();
    QRectF place = snapped(painter, *m_frame.caret);
    // The same wherever it stands; a wider one at 125 % would touch the letters beside it.
    place.setWidth(std::max(1.0, std::floor(caretWidth * scale + 0.25)) / scale);
    painter.fillRect(place, color(ThemeColor::accent));
}

std::optional<QRectF> EditorView::caretRect()
{
    const CaretPlace place = m_text.caretPlace();
    if (!hasFocus() || !place.isVisible)
        return std::nullopt;
    const double x = std::clamp(place.x, 0.0, std::max(0.0, width() - 2.0 * horizontalInset));
    return QRectF(horizontalInset + x - caretWidth / 2, place.top + caretInset, caretWidth,
        place.height - 2 * caretInset);
}

void EditorView::restartBlinking()
{
    m_isCaretOn = true;
    const int flash = QGuiApplication::styleHints()->cursorFlashTime();
    if (hasFocus() && flash > 1)
        m_blink.start(flash / 2, this);
    else
        m_blink.stop(); // without a flash time the caret stands still
    if (m_frame.caret)
        update(m_frame.caret->toAlignedRect().adjusted(-1, -1, 1, 1));
}

void EditorView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_autoscroll.timerId()) {
        drag();
        return;
    }
    if (event->timerId() != m_blink.timerId())
        return QWidget::timerEvent(event);
    m_isCaretOn = !m_isCaretOn;
    if (m_frame.caret)
        update(m_frame.caret->toAlignedRect().adjusted(-1, -1, 1, 1));
}

void EditorView::focusInEvent(QFocusEvent*)
{
    refreshLater();
    restartBlinking();
}

void EditorView::focusOutEvent(QFocusEvent*)
{
    m_text.breakUndoJoin();
    m_blink.stop();
    refreshLater();
}

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
    const std::u16string committed = event->commitString().toStdU16String();
    if (event->replacementLength() > 0)
        m_text.replace(
            {m_text.selection().caret + event->replacementStart(), event->replacementLength()}, committed);
    else if (!committed.empty())
        m_text.insertText(committed);
    event->accept();
}

QVariant EditorView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImEnabled:
        return m_text.isEditable();
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhMultiLine);
    case Qt::ImCursorRectangle:
        return m_frame.caret.value_or(QRectF());
    default:
        return QWidget::inputMethodQuery(query);
    }
}

} // namespace quillmark
