// One line of text in a theme colour; cut at its end when there is no room for it.
#pragma once

#include "editor/Theme.h"

#include <QWidget>

namespace quillmark {

class TextLabel : public QWidget {
    Q_OBJECT

public:
    TextLabel(const QFont& font, ThemeColor textColor, QWidget* parent);

    void setText(const QString& text);
    const QString& text() const { return m_text; }
    static int widthOf(const QString& text, const QFont& font);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    int m_textWidth = 0;
    ThemeColor m_textColor;
};

} // namespace quillmark
