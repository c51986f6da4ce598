#include "app/window/banners/ReadOnlyBanner.h"

#include "app/look/TextLabel.h"
#include "app/window/banners/Banner.h"

namespace quillmark {

ReadOnlyBanner::ReadOnlyBanner(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    layOutBanner(*this)->setText(QStringLiteral("Файл больше 20 МБ — открыт только для чтения"));
}

void ReadOnlyBanner::paintEvent(QPaintEvent*)
{
    paintBanner(*this, ThemeColor::panelBackground, "lock.fill");
}

} // namespace quillmark
