#include "app/window/tabs/TabStrip.h"

#include "app/look/Paint.h"

#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace quillmark {

namespace {

constexpr int itemGap = 2;
constexpr int fadeWidth = 18;

} // namespace

/// Lets tabs that go on beyond an edge fade into the bar.
class TabStrip::EdgeFade : public QWidget {
public:
    EdgeFade(Qt::Edge edge, QWidget* parent)
        : QWidget(parent)
        , m_edge(edge)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        const QColor bar = color(ThemeColor::barBackground);
        QColor clear = bar;
        clear.setAlpha(0);
        QLinearGradient gradient(0, 0, width(), 0);
        gradient.setColorAt(0, m_edge == Qt::LeftEdge ? bar : clear);
        gradient.setColorAt(1, m_edge == Qt::LeftEdge ? clear : bar);
        QPainter painter(this);
        painter.fillRect(rect(), gradient);
        drawHairline(painter, rect(), Qt::BottomEdge, color(ThemeColor::separator));
    }

private:
    const Qt::Edge m_edge;
};

TabStrip::TabStrip(AppState& app, QWidget* parent)
    : QWidget(parent)
    , m_app(app)
    , m_leftFade(new EdgeFade(Qt::LeftEdge, this))
    , m_rightFade(new EdgeFade(Qt::RightEdge, this))
{
    m_connections.push_back(m_app.tabs.onChange([this](const auto&) { tabsChanged(); }));
    m_connections.push_back(m_app.activeTabID.onChange([this](const auto&) { place(Reveal::active); }));
    tabsChanged();
}

QSize TabStrip::sizeHint() const
{
    return {contentWidth(), m_items.empty() ? 0 : m_items.front()->sizeHint().height()};
}

void TabStrip::tabsChanged()
{
    std::vector<TabItemView*> items;
    for (const auto& tab : m_app.tabs.get()) {
        TabItemView* known = takeItem(tab->id);
        items.push_back(known ? known : makeItem(tab));
    }
    for (TabItemView* gone : m_items) {
        gone->hide();
        gone->deleteLater(); // it may be what is just being clicked
    }
    m_items = std::move(items);
    place(Reveal::active);
}

TabItemView* TabStrip::takeItem(const Uuid& tabID)
{
    const auto found = std::ranges::find(m_items, tabID, &TabItemView::tabID);
    if (found == m_items.end())
        return nullptr;
    TabItemView* item = *found;
    m_items.erase(found);
    return item;
}

TabItemView* TabStrip::makeItem(const std::shared_ptr<EditorTab>& tab)
{
    auto* item = new TabItemView(m_app, tab, this);
    connect(item, &TabItemView::sizeHintChanged, this, [this, item] {
        const bool wasInView = rect().contains(item->geometry());
        place(item->isActive() && wasInView ? Reveal::active : Reveal::no);
    });
    item->show();
    return item;
}

int TabStrip::contentWidth() const
{
    int width = 0;
    for (const TabItemView* item : m_items)
        width += item->sizeHint().width() + itemGap;
    return std::max(width - itemGap, 0);
}

int TabStrip::offsetShowingActive(int offset) const
{
    int left = 0;
    for (const TabItemView* item : m_items) {
        const int right = left + item->sizeHint().width();
        if (item->isActive()) {
            // The fades lie outside what is shown of the active tab, except at the ends of the row.
            const int lowest = right + fadeWidth - width();
            return std::min(std::max(offset, lowest), std::max(left - fadeWidth, 0));
        }
        left = right + itemGap;
    }
    return offset;
}

void TabStrip::place(Reveal reveal)
{
    const int largest = std::max(contentWidth() - width(), 0);
    if (reveal == Reveal::active)
        m_offset = offsetShowingActive(m_offset);
    m_offset = std::clamp(m_offset, 0, largest);
    int left = -m_offset;
    for (TabItemView* item : m_items) {
        const int itemWidth = item->sizeHint().width();
        item->setGeometry(left, 0, itemWidth, height());
        left += itemWidth + itemGap;
    }
    m_leftFade->setGeometry(0, 0, fadeWidth, height());
    m_rightFade->setGeometry(width() - fadeWidth, 0, fadeWidth, height());
    m_leftFade->setVisible(m_offset > 0);
    m_rightFade->setVisible(m_offset < largest);
    m_leftFade->raise();
    m_rightFade->raise();
}

void TabStrip::resizeEvent(QResizeEvent*)
{
    place(Reveal::active);
}

void TabStrip::wheelEvent(QWheelEvent* event)
{
    const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    m_offset -= pixels.x() != 0 ? pixels.x() : pixels.y();
    place(Reveal::no);
    event->accept();
}

} // namespace quillmark
