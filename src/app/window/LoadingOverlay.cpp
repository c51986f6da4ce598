#include "app/window/LoadingOverlay.h"

#include "app/look/Paint.h"

#include <QPainter>

namespace quillmark {

namespace {

using namespace std::chrono_literals;

constexpr Duration period = 350ms;
constexpr WallTime epoch
    = std::chrono::sys_days(std::chrono::year(2001) / 1 / 1); ///< phases are counted from here

constexpr QSizeF caretSize(10, 26);
constexpr double caretRadius = 2;
constexpr double dotsWidth = 24;
constexpr double spacing = 8;

} // namespace

LoadingOverlay::LoadingOverlay(Scheduler& scheduler, QWidget* parent)
    : QWidget(parent)
    , m_scheduler(scheduler)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFont(monospacedFont(13));
    setAccessibleName(QStringLiteral("Загрузка"));
}

LoadingPhase LoadingOverlay::phaseAt(WallTime time)
{
    const int64_t phase = (time - epoch) / period;
    return {.caretOpacity = phase % 3 == 2 ? 0.15 : 1.0, .dots = int(phase % 4)};
}

void LoadingOverlay::paintEvent(QPaintEvent*)
{
    const LoadingPhase phase = phaseAt(m_scheduler.wallNow());
    const QString text = QStringLiteral("Загрузка");
    const double textWidth = QFontMetricsF(font()).horizontalAdvance(text);
    const double lineWidth = caretSize.width() + spacing + textWidth + spacing + dotsWidth;
    QRectF caret(QPointF((width() - lineWidth) / 2, (height() - caretSize.height()) / 2), caretSize);

    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::background));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(phase.caretOpacity);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(ThemeColor::accent));
    painter.drawRoundedRect(snapped(painter, caret), caretRadius, caretRadius);
    painter.setOpacity(1);

    painter.setPen(color(ThemeColor::secondaryText));
    QRectF box(caret.right() + spacing, 0, textWidth + 1, height());
    painter.drawText(box, Qt::AlignVCenter | Qt::AlignLeft, text);
    box.translate(textWidth + spacing, 0);
    painter.drawText(box, Qt::AlignVCenter | Qt::AlignLeft, QString(phase.dots, QLatin1Char('.')));
}

void LoadingOverlay::showEvent(QShowEvent*)
{
    tickLater();
}

void LoadingOverlay::hideEvent(QHideEvent*)
{
    m_tick.cancel();
}

void LoadingOverlay::tickLater()
{
    const Duration sincePhase = (m_scheduler.wallNow() - epoch) % period;
    m_tick = m_scheduler.after(period - sincePhase, [this] {
        update();
        tickLater();
    });
}

} // namespace quillmark
