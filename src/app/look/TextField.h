// A text field of one line whose selection is still there for the edit menu when that has taken the keyboard.
#pragma once

#include <QLineEdit>

namespace quillmark {

class TextField : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

protected:
    void focusOutEvent(QFocusEvent* event) override;
};

} // namespace quillmark
