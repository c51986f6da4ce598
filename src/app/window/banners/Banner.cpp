#include "app/window/banners/Banner.h"

#include "app/look/Paint.h"
#include "app/look/SymbolButton.h"
#include "app/look/TextButton.h"
#include "app/look/TextLabel.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>

namespace quillmark {

namespace {

constexpr int horizontalInset = 10;
constexpr int verticalInset = 5;
constexpr int spacing = 6;
constexpr int symbolBox = 14;
constexpr double textSize = 11.5;

} // namespace

Banner::Banner(const BannerLook& look, QWidget* parent)
    : QWidget(parent)
    , m_look(look)
    , m_text(new TextLabel(systemFont(textSize), look.textColor, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(
        horizontalInset + symbolBox + spacing, verticalInset, horizontalInset, verticalInset);
    layout->setSpacing(spacing);
    layout->addWidget(m_text, 1);
}

void Banner::setText(const QString& text)
{
    if (m_text->text() == text)
        return;
    m_text->setText(text);
    m_text->setToolTip(text);
    setAccessibleName(text);
    if (isVisible())
        announce();
}

void Banner::setWraps()
{
    m_text->setWraps();
}

void Banner::addButton(const QString& title, std::function<void()> onClick)
{
    auto* button = new TextButton(systemFont(textSize), {}, this);
    button->setLabel(title);
    button->setTextColor(ThemeColor::accent);
    connect(button, &TextButton::clicked, this, std::move(onClick));
    layout()->addWidget(button);
}

void Banner::addCloseButton(std::function<void()> onClose)
{
    auto* close = new SymbolButton("xmark", 12, QStringLiteral("Закрыть"), this);
    close->setFixedSize(16, 16);
    connect(close, &SymbolButton::clicked, this, std::move(onClose));
    layout()->addWidget(close);
}

/// A screen reader speaks what appears; of a name that changes it says nothing.
void Banner::announce()
{
    QAccessibleEvent appeared(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&appeared);
}

void Banner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF rect(this->rect());
    painter.fillRect(rect, color(ThemeColor::background));
    painter.fillRect(rect, color(m_look.ground));
    const double middle = QRectF(m_text->geometry()).center().y();
    drawSymbol(painter, m_look.symbol, {horizontalInset, middle - symbolBox / 2.0, symbolBox, symbolBox},
        color(m_look.symbolColor));
    drawHairline(painter, rect, Qt::BottomEdge, color(ThemeColor::separator));
}

} // namespace quillmark
