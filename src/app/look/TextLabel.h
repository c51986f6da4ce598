// A text in a theme colour, on one line unless it wraps; cut at its end when there is no room for it.
#pragma once

#include "editor/Theme.h"

#include <QWidget>

namespace quillmark {

class TextLabel : public QWidget {
    Q_OBJECT

public:
    TextLabel(const QFont& font, ThemeColor textColor, QWidget* parent);

    void setText(const QString& text);
    void setWraps(); ///< at words, into as many lines as it needs
    const QString& text() const { return m_text; }
    static int widthOf(const QString& text, const QFont& font);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    int m_textWidth = 0;
    ThemeColor m_textColor;
    bool m_wraps = false;
};

} // namespace quillmark
