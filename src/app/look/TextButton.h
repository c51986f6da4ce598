// A borderless button that shows one line of text and nothing else.
#pragma once

#include <QAbstractButton>

namespace quillmark {

class TextButton : public QAbstractButton {
    Q_OBJECT

public:
    TextButton(const QFont& font, const QString& toolTip, QWidget* parent);

    void setLabel(const QString& label);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
};

} // namespace quillmark
