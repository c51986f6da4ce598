#include "app/look/TextField.h"

#include <QFocusEvent>

namespace quillmark {

void TextField::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::MenuBarFocusReason)
        return QLineEdit::focusOutEvent(event);
    QFocusEvent asForAnyMenu(QEvent::FocusOut, Qt::PopupFocusReason);
    QLineEdit::focusOutEvent(&asForAnyMenu);
}

} // namespace quillmark
