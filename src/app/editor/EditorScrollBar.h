// The thin vertical scroll bar over the right inset of the editor. It counts in doubles, since a long
// document is higher than an int can say, and is there only while there is something to scroll.
#pragma once

#include "base/Observable.h"

#include <QWidget>

namespace quillmark {

class EditorScrollBar : public QWidget {
public:
    static constexpr int thickness = 12; ///< of the strip that takes clicks; what is drawn is thinner

    explicit EditorScrollBar(QWidget* parent);

    /// What of the document is visible, in pixels.
    void setPlace(double top, double height, double documentHeight);
    /// Calls `slot(top)` with the wanted top.
    template <class Slot> [[nodiscard]] Connection onScrollRequested(Slot slot)
    {
        return Connection(m_scrollRequested.connect(std::move(slot)));
    }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QRectF thumb() const;
    void dragTo(double y);

    double m_top = 0;
    double m_height = 1;
    double m_documentHeight = 1;
    double m_grabbedAt = 0; ///< from the top of the thumb
    bool m_isDragging = false;
    Signal<double> m_scrollRequested;
};

} // namespace quillmark
