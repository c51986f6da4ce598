#include "app/editor/EditorView.h"

#include "app/editor/EditorAccessible.h"
#include "app/editor/EditorKeys.h"
#include "app/look/Paint.h"
#include "desktop/Fonts.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
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

void drawUnderline(QPainter& painter, Composition::Underline style, const QRectF& line)
{
    using Underline = Composition::Underline;
    const QColor ink = color(ThemeColor::foreground);
    if (style == Underline::none || line.width() <= 0)
        return;
    if (style == Underline::solid)
        return painter.fillRect(line, ink);
    const double unit = line.height();
    if (style == Underline::wavy) {
        QPainterPath wave(line.topLeft());
        for (double x = line.left(), side = 2; x + 2 * unit <= line.right(); x += 2 * unit, side = 2 - side)
            wave.lineTo(x + 2 * unit, line.top() + side * unit);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.strokePath(wave, QPen(ink, unit));
        return painter.setRenderHint(QPainter::Antialiasing, false);
    }
    const double dash = style == Underline::dashed ? 4 * unit : unit;
    for (double x = line.left(); x < line.right(); x += dash + 2 * unit)
        painter.fillRect(QRectF(x, line.top(), std::min(dash, line.right() - x), unit), ink);
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
    setAcceptDrops(true);
    m_text.setVerticalInset(verticalInset);
    m_connections.emplace_back(m_text.onNeedsDisplay([this] { refreshLater(); }));
    m_connections.emplace_back(m_text.onFirstResponderRequested([this] { setFocus(); }));
    m_connections.emplace_back(m_text.onCommitRequested([this] { askInputMethodToCommit(); }));
    m_connections.emplace_back(m_text.onResetRequested([this] { resetInputMethod(); }));
    m_connections.emplace_back(
        m_text.storage().onEdit([this](const TextEdit&, const Rope&) { m_hasTextChanged = true; }));
    m_connections.emplace_back(m_text.onScrolled([this] { placeScrollBar(); }));
    m_connections.emplace_back(m_scrollBar->onScrollRequested([this](double top) { m_text.scrollTo(top); }));
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
    if (caretMoved)
        restartBlinking();
    tellInputMethod(caretMoved);
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

std::vector<Span> EditorView::selectedSpans(const FrameRow& row) const
{
    const auto& shaped = static_cast<const QtShapedText&>(*row.shaped);
    std::vector<Span> spans = shaped.spans(row.rowInShaped, row.selected);
    const double rightmost = std::max(0, width() - 2 * horizontalInset);
    const double lineFeed = m_shaper.metrics().averageAdvance;
    if (row.isLineFeedSelected) {
        const Span text = shaped.edges(row.rowInShaped);
        const double start = shaped.direction() == Direction::rightToLeft
            ? std::max(text.left - lineFeed, 0.0)
            : std::min(text.right, rightmost - lineFeed);
        spans.push_back({start, start + lineFeed});
    }
    for (Span& span : spans) { // spaces may hang over the edge of the text
        span = {horizontalInset + std::clamp(span.left, 0.0, rightmost),
            horizontalInset + std::clamp(span.right, 0.0, rightmost)};
    }
    return spans;
}

void EditorView::drawSelection(QPainter& painter, const FrameRow& row, const QRectF& place) const
{
    const auto fill = [&](double left, double right) {
        const QRectF span(left, place.top(), right - left, place.height());
        painter.fillRect(snapped(painter, span), color(ThemeColor::selection));
    };
    for (const Span& span : selectedSpans(row))
        fill(span.left, span.right);
    const auto& shaped = static_cast<const QtShapedText&>(*row.shaped);
    for (const Composition::Clause& clause : row.clauses) {
        if (!clause.isHighlighted)
            continue;
        for (const Span& span : shaped.spans(row.rowInShaped, clause.units))
            fill(horizontalInset + span.left, horizontalInset + span.right);
    }
}

/// The lines under what an input method composes, with a gap between clauses.
void EditorView::drawUnderlines(QPainter& painter, const FrameRow& row, const QRectF& place) const
{
    const QFontMetricsF metrics(m_shaper.font());
    const double pixel = 1 / painter.deviceTransform().m11();
    const double thin = std::max(pixel, std::round(metrics.lineWidth() / pixel) * pixel);
    // Below the descenders: characters that are still being chosen should be easy to read.
    const double top = place.top() + m_shaper.metrics().baseline + metrics.descent();
    const auto& shaped = static_cast<const QtShapedText&>(*row.shaped);
    for (const Composition::Clause& clause : row.clauses) {
        const double thickness = clause.isHighlighted ? 2 * thin : thin;
        for (const Span& span : shaped.spans(row.rowInShaped, clause.units)) {
            const QRectF line(
                horizontalInset + span.left, top, span.right - span.left - 2 * pixel, thickness);
            drawUnderline(painter, clause.underline, snapped(painter, line));
        }
    }
}

void EditorView::drawRow(QPainter& painter, const FrameRow& row) const
{
    const QRectF place = snapped(painter, QRectF(0, row.top, width(), m_frame.rowHeight));
    painter.setClipRect(place); // what sticks out of a row would be left behind when its neighbour is painted
    drawSelection(painter, row, place);
    const QRectF text = snapped(painter, place.adjusted(horizontalInset, 0, 0, 0));
    static_cast<const QtShapedText&>(*row.shaped).draw(painter, row.rowInShaped, text.topLeft());
    drawUnderlines(painter, row, place);
    painter.setClipping(false);
}

void EditorView::drawCaret(QPainter& painter) const
{
    if (!m_frame.caret || !(m_isCaretOn || m_dropPlace))
        return;
    const double scale = painter.deviceTransform().m11();
    QRectF place = snapped(painter, *m_frame.caret);
    // The same wherever it stands; a wider one at 125 % would touch the letters beside it.
    place.setWidth(std::max(1.0, std::floor(caretWidth * scale + 0.25)) / scale);
    painter.fillRect(place, color(ThemeColor::accent));
}

std::optional<QRectF> EditorView::caretRect()
{
    if (m_dropPlace) {
        const TextPosition drop = m_text.positionAt(m_dropPlace->x() - horizontalInset, m_dropPlace->y());
        return rectOf(m_text.placeOf(drop.offset, drop.affinity));
    }
    const CaretPlace place = m_text.caretPlace();
    const bool isHidden = m_text.composition() && !m_text.composition()->isCaretVisible;
    if (!hasFocus() || !place.isVisible || isHidden)
        return std::nullopt;
    return rectOf(place);
}

QRectF EditorView::rectOf(const CaretPlace& place) const
{
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
    if (event->timerId() == m_dropScroll.timerId()) {
        scrollTowardsDropPlace();
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
    m_text.commitComposition();
    m_text.breakUndoJoin();
    m_blink.stop();
    refreshLater();
}

} // namespace quillmark
