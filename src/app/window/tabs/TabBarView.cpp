#include "app/window/tabs/TabBarView.h"

#include "app/look/Paint.h"
#include "app/look/SymbolButton.h"
#include "app/window/MainMenu.h"

#include <QHBoxLayout>
#include <QPainter>

namespace quillmark {

namespace {

constexpr double plusSymbolBox = 14;

} // namespace

TabBarView::TabBarView(AppState& app, QWidget* parent)
    : QWidget(parent)
    , m_strip(new TabStrip(app, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_strip->setFixedHeight(m_strip->sizeHint().height());
    auto* plus = new SymbolButton("plus", plusSymbolBox, toolTipOf("file.newTab"), this);
    plus->setFixedSize(24, 24);
    connect(plus, &SymbolButton::clicked, this, [&app] { app.newNote(); });

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 5, 8, 0);
    layout->setSpacing(4);
    layout->addWidget(m_strip, 1);
    layout->addWidget(plus);
}

void TabBarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::barBackground));
    // The active tab is drawn over the line: there the bar is open to the page.
    drawHairline(painter, rect(), Qt::BottomEdge, color(ThemeColor::separator));
}

} // namespace quillmark
