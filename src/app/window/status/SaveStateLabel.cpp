#include "app/window/status/SaveStateLabel.h"

#include "app/look/Paint.h"

#include <QPainter>

#include <cmath>

namespace quillmark {

namespace {

constexpr double dotSize = 6;

QString savedText()
{
    return QStringLiteral("Сохранено");
}

QString dirtyText()
{
    return QStringLiteral("Есть несохранённые изменения");
}

} // namespace

SaveStateLabel::SaveStateLabel(const QFont& font, QWidget* parent)
    : QWidget(parent)
{
    setFont(font);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    setAccessibleName(savedText());
}

void SaveStateLabel::setDirty(bool isDirty)
{
    m_isDirty = isDirty;
    setToolTip(isDirty ? dirtyText() : QString());
    setAccessibleName(isDirty ? dirtyText() : savedText());
    update();
}

QSize SaveStateLabel::sizeHint() const
{
    const QFontMetricsF metrics(font());
    return {int(std::ceil(metrics.horizontalAdvance(savedText()))), int(std::ceil(metrics.height()))};
}

void SaveStateLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_isDirty) {
        drawDot(
            painter, {width() - dotSize, 0, dotSize, double(height())}, dotSize, color(ThemeColor::accent));
        return;
    }
    painter.setPen(color(ThemeColor::success));
    painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignRight, savedText());
}

} // namespace quillmark
