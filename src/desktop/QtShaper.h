// Qt's text shaping behind Shaper. Font sizes are device-independent pixels, whatever the screen's dpi says;
// rows are whole device pixels high, and fallback fonts never change their height or baseline.
#pragma once

#include "platform/Shaper.h"

#include <QFont>
#include <QTextLayout>

#include <vector>

class QPainter;

namespace quillmark {

class QtShapedText final : public ShapedText {
public:
    QtShapedText(std::u16string_view text, double wrapWidth, Direction direction, const QFont& font,
        const RowMetrics& metrics);

    int rowCount() const override { return m_layout.lineCount(); }
    Range row(int row) const override;
    Direction direction() const override { return m_direction; }
    Span edges(int row) const override;
    double xOfOffset(int row, int64_t offset) const override;
    int64_t offsetAtX(int row, double x) const override;
    bool isDrawnAlike(int row, const ShapedText& other, int otherRow) const override;

    /// Where the units of `range` stand on the row, from left to right; several spans where directions mix.
    std::vector<Span> spans(int row, Range range) const;

    /// Draws a row with the top left corner of its width at the point, in the painter's pen. Does not clip.
    void draw(QPainter& painter, int row, QPointF topLeft) const;

private:
    QTextLine line(int row) const { return m_layout.lineAt(row); }
    QStringView withNeighbours(int row) const;

    QTextLayout m_layout;
    const double m_width;
    const Direction m_direction;
    const double m_baseline;
    const bool m_mayBeBidirectional;
};

class QtShaper final : public Shaper {
public:
    static constexpr double lineHeightMultiple = 1.5;
    static constexpr int tabColumns = 4;

    QtShaper(const QFont& font, double devicePixelRatio);

    /// What is shaped from now on; texts that were shaped before stay as they are.
    void setFont(const QFont& font, double devicePixelRatio);
    const QFont& font() const { return m_font; }
    double devicePixelRatio() const { return m_devicePixelRatio; }

    RowMetrics metrics() const override { return m_metrics; }
    std::unique_ptr<ShapedText> shape(
        std::u16string_view text, double wrapWidth, Direction direction) override;

private:
    QFont m_font;
    double m_devicePixelRatio = 1;
    RowMetrics m_metrics;
};

} // namespace quillmark
