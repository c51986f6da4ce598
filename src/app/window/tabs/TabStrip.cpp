#include "app/window/tabs/TabStrip.h"

#include "app/look/Paint.h"

#include <QContextMenuEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace quillmark {

namespace {

constexpr int itemGap = 2;
constexpr int widestFade = 18;
constexpr int narrowestTab = 64;

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
    setFocusPolicy(Qt::TabFocus);
    m_connections.push_back(m_app.tabs.onChange([this](const auto&) { tabsChanged(); }));
    m_connections.push_back(m_app.activeTabID.onChange([this](const auto&) {
        m_revealsWhenLeft |= m_isClosingByMouse;
        place(m_isClosingByMouse ? Reveal::no : Reveal::active);
    }));
    tabsChanged();
}

QSize TabStrip::sizeHint() const
{
    return {contentWidth(), m_items.empty() ? 0 : m_items.front()->sizeHint().height()};
}

void TabStrip::tabsChanged()
{
    const std::vector<TabItemView*> before = m_items;
    std::vector<TabItemView*> items;
    for (const auto& tab : m_app.tabs.get()) {
        TabItemView* known = takeItem(tab->id);
        items.push_back(known ? known : makeItem(tab));
    }
    const std::vector<TabItemView*> gone = std::exchange(m_items, std::move(items));
    // The first tab in view that stays keeps its place.
    const auto kept = std::ranges::find_if(before, [&](const TabItemView* item) {
        return item->geometry().right() >= 0 && std::ranges::find(m_items, item) != m_items.end();
    });
    if (kept != before.end())
        m_offset = leftOf(**kept) - (*kept)->x();
    place(Reveal::no);
    for (TabItemView* item : gone) {
        item->hide(); // only now: the toolkit looks what is under the mouse instead
        item->deleteLater(); // it may be what is just being clicked
    }
}

void TabStrip::closeByMouse(const TabItemView& item, Under under)
{
    const auto next = std::ranges::find(m_items, &item) + 1;
    const bool isLast = next == m_items.end(); // then those before it come under the mouse by themselves
    const int growth = isLast || under == Under::tab ? 0 : widthOf(**next) - widthOf(item);
    const int offset = m_offset;
    m_isClosingByMouse = true;
    m_app.closeTab(item.tabID());
    m_isClosingByMouse = false;
    if (isLast)
        return;
    m_heldOffset = offset;
    m_offset = offset + growth;
    place(Reveal::no);
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
    connect(
        item, &TabItemView::closeClicked, this, [this, item] { closeByMouse(*item, Under::closeButton); });
    connect(item, &TabItemView::closeMiddleClicked, this, [this, item] { closeByMouse(*item, Under::tab); });
    item->show();
    return item;
}

int TabStrip::widthOf(const TabItemView& item) const
{
    return std::min(item.sizeHint().width(), std::max(width(), narrowestTab));
}

int TabStrip::leftOf(const TabItemView& item) const
{
    int left = 0;
    for (const TabItemView* each : m_items) {
        if (each == &item)
            break;
        left += widthOf(*each) + itemGap;
    }
    return left;
}

int TabStrip::contentWidth() const
{
    int width = 0;
    for (const TabItemView* item : m_items)
        width += widthOf(*item) + itemGap;
    return std::max(width - itemGap, 0);
}

TabItemView* TabStrip::activeItem() const
{
    const auto active = std::ranges::find_if(m_items, &TabItemView::isActive);
    return active == m_items.end() ? nullptr : *active;
}

/// Where there is room for them beside the active tab, the fades lie outside it.
int TabStrip::fadeWidth() const
{
    const TabItemView* const active = activeItem();
    return active ? std::clamp((width() - widthOf(*active)) / 2, 0, widestFade) : widestFade;
}

int TabStrip::offsetShowingActive(int offset) const
{
    const TabItemView* const active = activeItem();
    if (!active)
        return offset;
    const int left = leftOf(*active);
    const int lowest = left + widthOf(*active) + fadeWidth() - width();
    return std::min(std::max(offset, lowest), std::max(left - fadeWidth(), 0));
}

void TabStrip::place(Reveal reveal)
{
    const int largest = std::max(contentWidth() - width(), 0);
    if (reveal == Reveal::active)
        m_offset = std::min(offsetShowingActive(m_offset), largest);
    m_offset = std::clamp(m_offset, 0, std::max(largest, m_heldOffset));
    int left = -m_offset;
    for (TabItemView* item : m_items) {
        const int itemWidth = widthOf(*item);
        item->setGeometry(left, 0, itemWidth, height());
        left += itemWidth + itemGap;
    }
    const int fade = fadeWidth();
    m_leftFade->setGeometry(0, 0, fade, height());
    m_rightFade->setGeometry(width() - fade, 0, fade, height());
    m_leftFade->setVisible(m_offset > 0);
    m_rightFade->setVisible(m_offset < largest);
    m_leftFade->raise();
    m_rightFade->raise();
}

void TabStrip::resizeEvent(QResizeEvent*)
{
    m_heldOffset = 0;
    place(Reveal::active);
}

void TabStrip::leaveEvent(QEvent*)
{
    m_heldOffset = 0;
    place(std::exchange(m_revealsWhenLeft, false) ? Reveal::active : Reveal::no);
}

void TabStrip::wheelEvent(QWheelEvent* event)
{
    const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    m_offset -= pixels.x() != 0 ? pixels.x() : pixels.y();
    place(Reveal::no);
    event->accept();
}

void TabStrip::walk(int offset)
{
    const QScopedValueRollback walking(m_isWalking, true);
    m_app.selectAdjacentTab(offset);
}

void TabStrip::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Left)
        walk(-1);
    else if (event->key() == Qt::Key_Right)
        walk(+1);
    else
        QWidget::keyPressEvent(event);
}

void TabStrip::focusInEvent(QFocusEvent*)
{
    if (TabItemView* active = activeItem())
        active->update();
}

void TabStrip::focusOutEvent(QFocusEvent* event)
{
    focusInEvent(event);
}

void TabStrip::contextMenuEvent(QContextMenuEvent* event)
{
    TabItemView* const active = activeItem();
    if (event->reason() == QContextMenuEvent::Keyboard && active)
        active->openMenu(active->mapToGlobal(active->rect().bottomLeft()));
}

} // namespace quillmark
