#include "app/editor/AccessibleText.h"

#include "editor/SegmentCuts.h"
#include "text/Unicode.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace quillmark {

namespace {

constexpr int64_t longestSentenceContext = 4096; ///< units; a longer line is looked at in pieces

/// The piece of a range that holds an offset, where the range is longer than `size`.
Range pieceAt(const Rope& text, Range range, int64_t offset, int64_t size)
{
    if (range.length <= size)
        return range;
    const auto edge = [&](int64_t index) {
        return std::min(range.end(), characterBoundaryAtOrBefore(text, range.location + index * size));
    };
    int64_t index = (offset - range.location) / size;
    if (offset >= edge(index + 1) && edge(index + 1) < range.end())
        ++index; // the edge was moved before the offset
    return Range::between(edge(index), edge(index + 1));
}

/// The line that holds an offset, with its line feed.
Range paragraphAt(const Rope& text, int64_t offset)
{
    const Range line = text.lineRange(text.lineAt(offset));
    return Range::between(line.location, std::min(line.end() + 1, text.length()));
}

Range rowAt(LayoutManager& layout, int64_t offset)
{
    const Segment segment = layout.segmentAt(offset);
    const RowLayout row = segment.row(segment.rowOf(offset, Affinity::downstream));
    const int64_t end = row.endsLine ? row.range.end() + 1 : row.range.end();
    return Range::between(row.range.location, std::min(end, layout.text().length()));
}

Range sentenceAt(const Rope& text, int64_t offset)
{
    const Range context = pieceAt(text, paragraphAt(text, offset), offset, longestSentenceContext);
    const QString units = spokenText(text, context);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Sentence, units);
    finder.setPosition(static_cast<int>(offset - context.location));
    if (offset == context.end() || !finder.isAtBoundary())
        finder.toPreviousBoundary();
    const int64_t start = std::max<int64_t>(0, finder.position());
    const int64_t end = finder.toNextBoundary();
    return {context.location + start, (end < 0 ? context.length : end) - start};
}

Range characterAt(const Rope& text, int64_t offset)
{
    const int64_t start = characterBoundaryAtOrBefore(text, offset);
    return Range::between(start, nextGrapheme(text, start));
}

Range wordHolding(const Rope& text, int64_t offset)
{
    return offset < text.length() && text.at(offset) == u'\n' ? Range{offset, 1} : wordAt(text, offset);
}

} // namespace

QString spokenText(const Rope& text, Range range)
{
    range = intersection(range, {0, text.length()});
    range.length = std::min(range.length, longestAnswer);
    const std::u16string units = text.text(range);
    QString spoken = QString::fromUtf16(units.data(), static_cast<qsizetype>(units.size()));
    for (qsizetype i = 0; i < spoken.size(); ++i) {
        const QChar unit = spoken.at(i);
        if (unit.isHighSurrogate() && i + 1 < spoken.size() && spoken.at(i + 1).isLowSurrogate())
            ++i;
        else if (unit.isSurrogate() || unit.isNull() || unit == QChar::ObjectReplacementCharacter)
            spoken[i] = QChar::ReplacementCharacter;
    }
    return spoken;
}

Range unitAt(QAccessible::TextBoundaryType boundary, int64_t offset, PlainTextView& view)
{
    const Rope& text = view.text();
    offset = std::clamp<int64_t>(offset, 0, text.length());
    const bool isBehindLineFeed = offset == 0 || text.at(offset - 1) == u'\n';
    if (offset == text.length() && (isBehindLineFeed || boundary == QAccessible::CharBoundary))
        return {offset, 0};
    switch (boundary) {
    case QAccessible::CharBoundary:
        return characterAt(text, offset);
    case QAccessible::WordBoundary:
        return wordHolding(text, offset);
    case QAccessible::SentenceBoundary:
        return sentenceAt(text, offset);
    case QAccessible::LineBoundary:
        return rowAt(view.layoutManager(), offset);
    case QAccessible::ParagraphBoundary:
        return pieceAt(text, paragraphAt(text, offset), offset, longestAnswer);
    case QAccessible::NoBoundary:
        return pieceAt(text, {0, text.length()}, offset, longestAnswer);
    }
    Q_UNREACHABLE();
}

} // namespace quillmark
