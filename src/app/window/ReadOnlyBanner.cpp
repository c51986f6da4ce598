#include "app/window/ReadOnlyBanner.h"

#include "app/window/Banner.h"
#include "app/window/TextLabel.h"

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
