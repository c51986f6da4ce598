// A passing word to the user, with a button that sends it away.
#pragma once

#include <QWidget>

#include <functional>

namespace quillmark {

class TextLabel;

class NoticeBanner : public QWidget {
    Q_OBJECT

public:
    NoticeBanner(std::function<void()> onClose, QWidget* parent);

    void setText(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    TextLabel* m_text;
};

} // namespace quillmark
