#include "app/editor/EditorAccessible.h"

#include "app/editor/EditorView.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace quillmark {

namespace {

int toInt(int64_t offset)
{
    return static_cast<int>(std::min<int64_t>(offset, std::numeric_limits<int>::max()));
}

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* view = dynamic_cast<EditorView*>(object);
    return view ? new EditorAccessible(*view) : nullptr;
}

/// The visible row that holds the character at an offset, a line feed included.
const VisibleRow* visibleRowOf(int64_t offset, PlainTextView& model)
{
    const std::vector<VisibleRow>& rows = model.visibleRows();
    const auto next = std::ranges::upper_bound(
        rows, offset, {}, [](const VisibleRow& row) { return row.layout.range.location; });
    if (next == rows.begin())
        return nullptr;
    const RowLayout& row = std::prev(next)->layout;
    const bool isInside = offset < row.range.end() || (row.endsLine && offset == row.range.end());
    return isInside ? &*std::prev(next) : nullptr;
}

/// Where a character of a row stands, from the left edge of the row.
Span spanOf(const RowLayout& row, int64_t offset, const PlainTextView& model, double averageAdvance)
{
    const int64_t end = std::min(nextGrapheme(model.text(), offset), row.range.end());
    const auto& shaped = static_cast<const QtShapedText&>(*row.shaped);
    const std::vector<Span> spans
        = shaped.spans(row.rowInShaped, Range::between(offset - row.shapedStart, end - row.shapedStart));
    const double caret = row.xOfOffset(offset);
    const bool isRightToLeft = shaped.direction() == Direction::rightToLeft;
    if (spans.empty() || offset >= end)
        return isRightToLeft ? Span{caret - averageAdvance, caret} : Span{caret, caret + averageAdvance};
    return {spans.front().left, spans.back().right};
}

/// Text that comes in, up to its first NUL: no message carries one, but behind what it did carry Qt's bridge
/// puts NULs and worse when the sender counted bytes for characters.
std::u16string received(const QString& text)
{
    QString units = text.left(text.indexOf(QChar(QChar::Null)));
    units.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    units.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return units.toStdU16String();
}

} // namespace

void EditorAccessible::install()
{
    QAccessible::removeFactory(makeAccessible);
    QAccessible::installFactory(makeAccessible);
}

EditorAccessible::EditorAccessible(EditorView& view)
    : QAccessibleWidget(&view, QAccessible::EditableText)
    , m_view(view)
{
}

PlainTextView& EditorAccessible::model() const
{
    return m_view.textView();
}

bool EditorAccessible::isValid() const
{
    return dynamic_cast<EditorView*>(object());
}

void* EditorAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString EditorAccessible::text(QAccessible::Text kind) const
{
    if (kind == QAccessible::Value && isValid())
        return spokenText(model().text(), {0, longestAnswer});
    const QString given = QAccessibleWidget::text(kind);
    return kind == QAccessible::Name && given.isEmpty() ? QStringLiteral("Текст") : given;
}

QAccessible::State EditorAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    if (!isValid())
        return state;
    state.multiLine = true;
    state.selectableText = true;
    state.editable = model().isEditable();
    state.readOnly = !model().isEditable();
    return state;
}

int64_t EditorAccessible::resolved(int offset) const
{
    const int64_t length = model().text().length();
    if (offset == -1)
        return length;
    return offset == -2 ? model().selection().caret : std::clamp<int64_t>(offset, 0, length);
}

// The selection and the caret

void EditorAccessible::selection(int index, int* start, int* end) const
{
    const Range selected = model().selection().range();
    const bool exists = index == 0 && !selected.isEmpty();
    *start = exists ? toInt(selected.location) : -1;
    *end = exists ? toInt(selected.end()) : -1;
}

int EditorAccessible::selectionCount() const
{
    return model().selection().isEmpty() ? 0 : 1;
}

void EditorAccessible::addSelection(int start, int end)
{
    model().select({.anchor = resolved(start), .caret = resolved(end)});
    model().scrollToCaret();
}

void EditorAccessible::removeSelection(int index)
{
    if (index == 0)
        model().select(Selection::at(model().selection().position()));
}

void EditorAccessible::setSelection(int index, int start, int end)
{
    if (index == 0)
        addSelection(start, end);
}

int EditorAccessible::cursorPosition() const
{
    return toInt(model().selection().caret);
}

void EditorAccessible::setCursorPosition(int position)
{
    addSelection(position, position);
}

// The text

int EditorAccessible::characterCount() const
{
    return toInt(model().text().length());
}

QString EditorAccessible::text(int start, int end) const
{
    return spokenText(model().text(), Range::between(resolved(start), resolved(end)));
}

QString EditorAccessible::answer(Range unit, int* start, int* end) const
{
    *start = toInt(unit.location);
    *end = toInt(unit.end());
    return spokenText(model().text(), unit);
}

QString EditorAccessible::textAtOffset(
    int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const
{
    return answer(unitAt(boundary, resolved(offset), model()), start, end);
}

QString EditorAccessible::textBeforeOffset(
    int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const
{
    const Range unit = unitAt(boundary, resolved(offset), model());
    const bool isFirst = unit.location == 0;
    return answer(isFirst ? Range{} : unitAt(boundary, unit.location - 1, model()), start, end);
}

QString EditorAccessible::textAfterOffset(
    int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const
{
    const int64_t behind = unitAt(boundary, resolved(offset), model()).end();
    const bool isLast = behind == model().text().length();
    return answer(isLast ? Range{behind, 0} : unitAt(boundary, behind, model()), start, end);
}

QString EditorAccessible::attributes(int, int* start, int* end) const
{
    *start = 0;
    *end = characterCount();
    const QFont& font = m_view.textFont();
    QString family = font.family();
    family.replace(QLatin1Char(';'), QLatin1Char(' ')).replace(QLatin1Char(':'), QLatin1Char(' '));
    const double points = font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * 0.75;
    return QStringLiteral("font-family:%1;font-size:%2pt;").arg(family).arg(points);
}

// The screen

QRect EditorAccessible::characterRect(int offset) const
{
    const int64_t character = resolved(offset);
    const VisibleRow* row = visibleRowOf(character, model());
    if (!row)
        return {};
    const RowMetrics metrics = model().layoutManager().metrics();
    const Span span = spanOf(row->layout, character, model(), metrics.averageAdvance);
    const QRectF place(
        EditorView::horizontalInset + span.left, row->top, span.right - span.left, metrics.height);
    return place.toAlignedRect().translated(m_view.mapToGlobal(QPoint()));
}

int EditorAccessible::offsetAtPoint(const QPoint& point) const
{
    const QPoint place = m_view.mapFromGlobal(point);
    if (!m_view.rect().contains(place))
        return -1;
    const int64_t nearest = model().offsetAt(place.x() - EditorView::horizontalInset, place.y());
    const int64_t before = previousGrapheme(model().text(), nearest);
    const bool isBefore = characterRect(toInt(before)).contains(point); // the left half of a character
    return toInt(isBefore ? before : nearest);
}

void EditorAccessible::scrollToSubstring(int start, int)
{
    model().bringIntoView(resolved(start));
}

// Editing

void EditorAccessible::replaceText(int start, int end, const QString& text)
{
    model().replace(Range::between(resolved(start), resolved(end)), received(text));
}

void EditorAccessible::deleteText(int start, int end)
{
    replaceText(start, end, {});
}

void EditorAccessible::insertText(int offset, const QString& text)
{
    replaceText(offset, offset, text);
}

// Announcements

EditorAnnouncer::EditorAnnouncer(EditorView& view, Tell tell)
    : m_view(view)
    , m_tell(tell)
    , m_isHeard(QAccessible::isActive())
{
    EditorAccessible::install();
    QAccessible::installActivationObserver(this);
    PlainTextView& model = view.textView();
    m_connections.emplace_back(model.storage().onEdit(
        [this](const TextEdit& edit, const Rope& oldText) { announceEdit(edit, oldText); }));
    m_connections.emplace_back(model.onNeedsDisplay([this] { announceSelection(); }));
}

EditorAnnouncer::~EditorAnnouncer()
{
    QAccessible::removeActivationObserver(this);
}

void EditorAnnouncer::announceEdit(const TextEdit& edit, const Rope& oldText)
{
    if (!m_isHeard)
        return;
    const QString removed = spokenText(oldText, edit.replaced());
    const QString inserted = spokenText(m_view.textView().text(), edit.edited);
    const int place = toInt(edit.edited.location);
    const auto announce = [this](auto event) {
        event.setCursorPosition(toInt(m_view.textView().selection().caret));
        m_tell(&event);
    };
    if (inserted.isEmpty())
        announce(QAccessibleTextRemoveEvent(&m_view, place, removed));
    else if (removed.isEmpty())
        announce(QAccessibleTextInsertEvent(&m_view, place, inserted));
    else
        announce(QAccessibleTextUpdateEvent(&m_view, place, removed, inserted));
}

void EditorAnnouncer::announceSelection()
{
    const Selection now = m_view.textView().selection();
    const Selection before = std::exchange(m_told, now);
    if (now == before || !m_isHeard)
        return;
    if (now.caret != before.caret) {
        QAccessibleTextCursorEvent event(&m_view, toInt(now.caret));
        m_tell(&event);
    }
    if (now.range() == before.range() || (now.isEmpty() && before.isEmpty()))
        return;
    QAccessibleTextSelectionEvent event(&m_view, toInt(now.range().location), toInt(now.range().end()));
    event.setCursorPosition(toInt(now.caret));
    m_tell(&event);
}

void EditorAnnouncer::editabilityChanged()
{
    if (!m_isHeard)
        return;
    QAccessible::State changed;
    changed.editable = true;
    changed.readOnly = true;
    QAccessibleStateChangeEvent event(&m_view, changed);
    m_tell(&event);
}

} // namespace quillmark
