// A borderless button showing a symbol and perhaps a text, with a quiet ground under the mouse.
#pragma once

#include "editor/Theme.h"

#include <QAbstractButton>

#include <string>

namespace quillmark {

class SymbolButton : public QAbstractButton {
    Q_OBJECT

public:
    SymbolButton(std::string symbol, double symbolSize, const QString& toolTip, QWidget* parent);

    /// A text behind the symbol; the button then fills its width from the left.
    void setLabel(const QString& label);
    void setTextColor(ThemeColor name);
    void setOpacity(double opacity); ///< of symbol and text

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    std::string m_symbol;
    double m_symbolSize;
    ThemeColor m_textColor = ThemeColor::secondaryText;
    double m_opacity = 1.0;
};

} // namespace quillmark
