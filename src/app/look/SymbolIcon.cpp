#include "app/look/SymbolIcon.h"

#include "app/look/Paint.h"

#include <QIconEngine>
#include <QPainter>

namespace quillmark {

namespace {

constexpr double disabledOpacity = 0.4;

class SymbolIconEngine : public QIconEngine {
public:
    explicit SymbolIconEngine(std::string symbol)
        : m_symbol(std::move(symbol))
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        QColor ink = color(ThemeColor::secondaryText);
        if (mode == QIcon::Disabled)
            ink.setAlphaF(float(disabledOpacity));
        drawSymbol(*painter, m_symbol, rect, ink);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new SymbolIconEngine(m_symbol); }

private:
    const std::string m_symbol;
};

} // namespace

QIcon symbolIcon(std::string symbol)
{
    return QIcon(new SymbolIconEngine(std::move(symbol)));
}

} // namespace quillmark
