#include "app/window/SplitView.h"

#include "app/look/Paint.h"

#include <QPainter>

namespace quillmark {

namespace {

constexpr int smallestSidebar = 180;
constexpr int largestSidebar = 400;
constexpr int defaultSidebar = 240;

class Handle : public QSplitterHandle {
public:
    using QSplitterHandle::QSplitterHandle;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRectF line(contentsRect());
        painter.fillRect(line, color(ThemeColor::panelBackground));
        drawHairline(painter, line, Qt::RightEdge, color(ThemeColor::separator));
    }
};

} // namespace

SplitView::SplitView(QWidget* sidebar, QWidget* detail, QWidget* parent)
    : QSplitter(Qt::Horizontal, parent)
{
    setHandleWidth(1); // Qt makes the part that can be grabbed wider by itself
    setChildrenCollapsible(false);
    sidebar->setMinimumWidth(smallestSidebar);
    sidebar->setMaximumWidth(largestSidebar);
    addWidget(sidebar);
    addWidget(detail);
    setStretchFactor(0, 0);
    setStretchFactor(1, 1);
    setSizes({defaultSidebar, 3 * defaultSidebar});
}

QSplitterHandle* SplitView::createHandle()
{
    return new Handle(orientation(), this);
}

} // namespace quillmark
