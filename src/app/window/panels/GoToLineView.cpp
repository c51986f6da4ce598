#include "app/window/panels/GoToLineView.h"

#include "app/look/Paint.h"
#include "app/look/TextField.h"

#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
#include <QPainter>

#include <charconv>

namespace quillmark {

namespace {

constexpr int viewWidth = 220;
constexpr int distanceFromTop = 74; ///< of the window
constexpr int horizontalPadding = 14;
constexpr int verticalPadding = 10;
constexpr int spacing = 8;
constexpr int symbolBox = 16;
constexpr double cornerRadius = 12;
constexpr double textSize = 14;
constexpr int shadowRadius = 20;
constexpr QPointF shadowOffset(0, 10);
constexpr double shadowOpacity = 0.2;

} // namespace

std::optional<int64_t> typedLine(const QString& text)
{
    std::string digits;
    for (const char32_t character : text.toUcs4()) {
        if (!QChar::isNumber(character))
            continue;
        if (character < U'0' || character > U'9')
            return std::nullopt;
        digits.push_back(char(character));
    }
    int64_t line = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), line);
    return error == std::errc() && line >= 1 ? std::optional(line) : std::nullopt;
}

GoToLineView::GoToLineView(AppState& app, QWidget* window)
    : QWidget(window)
    , m_app(app)
    , m_field(new TextField(this))
{
    auto* shadow = new QGraphicsDropShadowEffect(this);
    shadow->setBlurRadius(2 * shadowRadius); // the toolkit's is the whole width of the edge
    shadow->setOffset(shadowOffset);
    shadow->setColor(QColor::fromRgbF(0, 0, 0, float(shadowOpacity)));
    setGraphicsEffect(shadow);

    m_field->setFont(monospacedFont(textSize));
    m_field->setFrame(false);
    m_field->setPlaceholderText(QStringLiteral("Номер строки"));
    m_field->setAccessibleName(m_field->placeholderText());
    QPalette clear = m_field->palette();
    clear.setColor(QPalette::Base, Qt::transparent);
    m_field->setPalette(clear);
    setFocusProxy(m_field);
    place();
}

void GoToLineView::place()
{
    const int height = m_field->sizeHint().height() + 2 * verticalPadding;
    setGeometry((parentWidget()->width() - viewWidth) / 2, distanceFromTop, viewWidth, height);
    m_field->setGeometry(rect().adjusted(
        horizontalPadding + symbolBox + spacing, verticalPadding, -horizontalPadding, -verticalPadding));
}

void GoToLineView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        return m_app.setGoToLineVisible(false);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return submit();
    default:
        QWidget::keyPressEvent(event);
    }
}

void GoToLineView::submit()
{
    if (const auto line = typedLine(m_field->text()))
        m_app.goToLine(*line);
    else
        m_app.setGoToLineVisible(false);
}

void GoToLineView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    drawRounded(painter, rect(), cornerRadius, color(ThemeColor::separator),
        color(ThemeColor::background)); // words that shine through would only be in the way
    drawSymbol(painter, "arrow.right.to.line",
        {horizontalPadding, (height() - symbolBox) / 2.0, symbolBox, symbolBox}, color(ThemeColor::accent));
}

} // namespace quillmark
