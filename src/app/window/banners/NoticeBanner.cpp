#include "app/window/banners/NoticeBanner.h"

#include "app/look/SymbolButton.h"
#include "app/look/TextLabel.h"
#include "app/window/banners/Banner.h"

#include <QLayout>

namespace quillmark {

NoticeBanner::NoticeBanner(std::function<void()> onClose, QWidget* parent)
    : QWidget(parent)
    , m_text(layOutBanner(*this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    auto* close = new SymbolButton("xmark", 12, QStringLiteral("Закрыть"), this);
    close->setFixedSize(16, 16);
    connect(close, &SymbolButton::clicked, this, std::move(onClose));
    layout()->addWidget(close);
}

void NoticeBanner::setText(const QString& text)
{
    m_text->setText(text);
    m_text->setToolTip(text); // the line may be cut
}

void NoticeBanner::paintEvent(QPaintEvent*)
{
    paintBanner(*this, ThemeColor::accentTint, "info.circle");
}

} // namespace quillmark
