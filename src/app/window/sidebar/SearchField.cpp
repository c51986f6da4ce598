#include "app/window/sidebar/SearchField.h"

#include "app/look/Paint.h"
#include "app/look/SymbolIcon.h"

#include <QAbstractButton>
#include <QAction>
#include <QKeyEvent>

namespace quillmark {

namespace {

constexpr int fieldHeight = 26;
constexpr double textSize = 13;

} // namespace

SearchField::SearchField(QWidget* parent)
    : TextField(parent)
{
    setFont(systemFont(textSize));
    setPlaceholderText(QStringLiteral("Поиск"));
    setAccessibleName(placeholderText());
    addAction(symbolIcon("magnifyingglass"), LeadingPosition)->setText(placeholderText());
    setClearButtonEnabled(true);
    for (auto* button : findChildren<QAbstractButton*>()) { // a screen reader asks them what they are
        if (button->text().isEmpty())
            button->setAccessibleName(QStringLiteral("Очистить"));
    }
}

void SearchField::setQuery(std::string_view query)
{
    const QString shown = QString::fromUtf8(query);
    if (text() != shown)
        setText(shown);
}

QSize SearchField::sizeHint() const
{
    return {QLineEdit::sizeHint().width(), fieldHeight};
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        if (text().isEmpty())
            return left();
        clear();
        return textEdited({});
    case Qt::Key_Down:
        return wentDown();
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return accepted();
    default:
        TextField::keyPressEvent(event);
    }
}

} // namespace quillmark
