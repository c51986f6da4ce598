#include "desktop/QtShaper.h"

#include "desktop/DisplayText.h"
#include "desktop/EmojiRuns.h"
#include "desktop/Fonts.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace quillmark {

namespace {

RowMetrics metricsOf(const QFont& font, double devicePixelRatio)
{
    const QFontMetricsF metrics(font);
    const double glyphs = metrics.ascent() + metrics.descent();
    const double height = std::max(1.0, std::round(QtShaper::lineHeightMultiple * glyphs * devicePixelRatio));
    const double baseline
        = std::round(((height / devicePixelRatio - glyphs) / 2 + metrics.ascent()) * devicePixelRatio);
    const double advance = metrics.horizontalAdvance(QLatin1Char('0'));
    return {height / devicePixelRatio, baseline / devicePixelRatio, advance > 0 ? advance : 1};
}

QTextOption optionsFor(const RowMetrics& metrics, Direction direction)
{
    const bool isRightToLeft = direction == Direction::rightToLeft;
    QTextOption options(isRightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    options.setTextDirection(isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    options.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    options.setTabStopDistance(QtShaper::tabColumns * metrics.averageAdvance);
    return options;
}

QString toQString(const std::u16string& text)
{
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

/// Emoji from their own font; other fonts of the desktop have some of them in black and white. What has a
/// selector gets no glyph from any other font: emoji fonts have none for the selector itself, and a character
/// shaped with two fonts falls to pieces.
QList<QTextLayout::FormatRange> emojiFormats(std::u16string_view text)
{
    const std::vector<Range> runs = emojiRuns(text);
    if (runs.empty() || emojiFamily().isEmpty())
        return {};
    QTextCharFormat mergeable;
    mergeable.setFontFamilies({emojiFamily()});
    QTextCharFormat whole = mergeable;
    whole.setFontStyleStrategy(QFont::NoFontMerging);
    QList<QTextLayout::FormatRange> formats;
    for (const Range& run : runs) {
        const auto units = text.substr(static_cast<size_t>(run.location), static_cast<size_t>(run.length));
        const bool hasSelector = units.find(u'\uFE0F') != units.npos;
        formats.append(
            {static_cast<int>(run.location), static_cast<int>(run.length), hasSelector ? whole : mergeable});
    }
    return formats;
}

/// Joins spans that touch, so that a selection has no seams.
std::vector<Span> joined(std::vector<Span> spans)
{
    std::ranges::sort(spans, {}, &Span::left);
    std::vector<Span> result;
    for (const Span& span : spans) {
        if (!result.empty() && span.left <= result.back().right + 0.01)
            result.back().right = std::max(result.back().right, span.right);
        else
            result.push_back(span);
    }
    return result;
}

} // namespace

QtShapedText::QtShapedText(std::u16string_view text, double wrapWidth, Direction direction, const QFont& font,
    const RowMetrics& metrics)
    : m_layout(toQString(displayText(text)), font)
    , m_width(std::max(1.0, wrapWidth))
    , m_direction(direction)
    , m_baseline(metrics.baseline)
    , m_mayBeBidirectional(direction == Direction::rightToLeft || mayBeBidirectional(text))
{
    m_layout.setCacheEnabled(true); // the layout is drawn again and again
    m_layout.setTextOption(optionsFor(metrics, direction));
    if (const auto formats = emojiFormats(text); !formats.isEmpty())
        m_layout.setFormats(formats);
    m_layout.beginLayout();
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        line.setLineWidth(m_width);
        line.setPosition({0, 0});
    }
    m_layout.endLayout();
}

Range QtShapedText::row(int row) const
{
    const QTextLine shaped = line(row);
    return {shaped.textStart(), shaped.textLength()};
}

Span QtShapedText::edges(int row) const
{
    const QTextLine shaped = line(row);
    const double end = shaped.cursorToX(shaped.textStart() + shaped.textLength()); // behind spaces at a wrap
    if (m_direction == Direction::rightToLeft)
        return {std::min(shaped.naturalTextRect().left(), end), m_width};
    return {0, std::max(shaped.horizontalAdvance(), end)};
}

double QtShapedText::xOfOffset(int row, int64_t offset) const
{
    const Range range = this->row(row);
    return line(row).cursorToX(static_cast<int>(std::clamp(offset, range.location, range.end())));
}

int64_t QtShapedText::offsetAtX(int row, double x) const
{
    return line(row).xToCursor(x, QTextLine::CursorBetweenCharacters);
}

/// The units of a row and one on either side, which it may be shaped with.
QStringView QtShapedText::withNeighbours(int row) const
{
    const QTextLine shaped = line(row);
    const int start = std::max(0, shaped.textStart() - 1);
    const int end = std::min<int>(int(m_layout.text().size()), shaped.textStart() + shaped.textLength() + 1);
    return QStringView(m_layout.text()).mid(start, end - start);
}

bool QtShapedText::isDrawnAlike(int row, const ShapedText& other, int otherRow) const
{
    const auto& text = static_cast<const QtShapedText&>(other);
    if (this == &text)
        return row == otherRow;
    // Where directions mix, a row depends on its whole line.
    return !m_mayBeBidirectional && !text.m_mayBeBidirectional && m_baseline == text.m_baseline
        && m_layout.font() == text.m_layout.font() && (row == 0) == (otherRow == 0)
        && withNeighbours(row) == text.withNeighbours(otherRow);
}

std::vector<Span> QtShapedText::spans(int row, Range range) const
{
    const Range part = intersection(range, this->row(row));
    if (part.isEmpty())
        return {};
    const auto ordered = [](double a, double b) { return Span{std::min(a, b), std::max(a, b)}; };
    if (!m_mayBeBidirectional)
        return {ordered(xOfOffset(row, part.location), xOfOffset(row, part.end()))};

    // Carets at the border of two directions say nothing about where the characters stand: ask the glyphs.
    // Tabs have none.
    std::vector<Span> spans;
    const QTextLine shaped = line(row);
    const int first = static_cast<int>(part.location);
    const int length = static_cast<int>(part.length);
    for (const QGlyphRun& run : shaped.glyphRuns(first, length))
        spans.push_back({run.boundingRect().left(), run.boundingRect().right()});
    for (int unit = first; unit < first + length; ++unit) {
        if (m_layout.text().at(unit) == QLatin1Char('\t'))
            spans.push_back(ordered(
                shaped.cursorToX(unit, QTextLine::Leading), shaped.cursorToX(unit, QTextLine::Trailing)));
    }
    return joined(std::move(spans));
}

void QtShapedText::draw(QPainter& painter, int row, QPointF topLeft) const
{
    const QTextLine shaped = line(row);
    // A fallback font may be taller than the font: its ascent must not push the baseline.
    shaped.draw(&painter, topLeft + QPointF(0, m_baseline - shaped.ascent()));
}

QtShaper::QtShaper(const QFont& font, double devicePixelRatio)
{
    setFont(font, devicePixelRatio);
}

void QtShaper::setFont(const QFont& font, double devicePixelRatio)
{
    m_font = font;
    m_devicePixelRatio = std::max(0.1, devicePixelRatio);
    m_metrics = metricsOf(m_font, m_devicePixelRatio);
}

std::unique_ptr<ShapedText> QtShaper::shape(std::u16string_view text, double wrapWidth, Direction direction)
{
    return std::make_unique<QtShapedText>(text, wrapWidth, direction, m_font, m_metrics);
}

} // namespace quillmark
