// A borderless button that shows one line of text, underlined while it has the keyboard.
#pragma once

#include "editor/Theme.h"

#include <QAbstractButton>

namespace quillmark {

class TextButton : public QAbstractButton {
    Q_OBJECT

public:
    TextButton(const QFont& font, const QString& toolTip, QWidget* parent);

    void setLabel(const QString& label);
    void setTextColor(ThemeColor name); ///< while the mouse is elsewhere

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    ThemeColor m_textColor = ThemeColor::secondaryText;
};

} // namespace quillmark
