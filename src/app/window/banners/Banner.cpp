#include "app/window/banners/Banner.h"

#include "app/look/Paint.h"
#include "app/look/TextLabel.h"

#include <QHBoxLayout>
#include <QPainter>

namespace quillmark {

namespace {

constexpr int horizontalInset = 10;
constexpr int verticalInset = 5;
constexpr int spacing = 6;
constexpr int symbolBox = 14;

} // namespace

TextLabel* layOutBanner(QWidget& banner)
{
    auto* layout = new QHBoxLayout(&banner);
    layout->setContentsMargins(
        horizontalInset + symbolBox + spacing, verticalInset, horizontalInset, verticalInset);
    layout->setSpacing(spacing);
    auto* text = new TextLabel(systemFont(11.5), ThemeColor::secondaryText, &banner);
    layout->addWidget(text, 1);
    return text;
}

void paintBanner(QWidget& banner, ThemeColor ground, std::string_view symbol)
{
    QPainter painter(&banner);
    const QRectF rect(banner.rect());
    painter.fillRect(rect, color(ThemeColor::background));
    painter.fillRect(rect, color(ground));
    drawSymbol(painter, symbol, {horizontalInset, (rect.height() - symbolBox) / 2, symbolBox, symbolBox},
        color(ThemeColor::secondaryText));
    drawHairline(painter, rect, Qt::BottomEdge, color(ThemeColor::separator));
}

} // namespace quillmark
