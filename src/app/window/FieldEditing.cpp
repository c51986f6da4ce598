#include "app/window/FieldEditing.h"

#include <QLineEdit>

namespace quillmark {

bool canEdit(const QLineEdit& field, EditAction action)
{
    switch (action) {
    case EditAction::undo:
        return field.isUndoAvailable();
    case EditAction::redo:
        return field.isRedoAvailable();
    case EditAction::cut:
    case EditAction::remove:
        return field.hasSelectedText() && !field.isReadOnly();
    case EditAction::copy:
        return field.hasSelectedText();
    case EditAction::paste:
        return !field.isReadOnly();
    case EditAction::selectAll:
        return !field.text().isEmpty();
    }
    return false;
}

void edit(QLineEdit& field, EditAction action)
{
    if (!canEdit(field, action))
        return;
    switch (action) {
    case EditAction::undo:
        return field.undo();
    case EditAction::redo:
        return field.redo();
    case EditAction::cut:
        return field.cut();
    case EditAction::copy:
        return field.copy();
    case EditAction::paste:
        return field.paste();
    case EditAction::remove:
        return field.del();
    case EditAction::selectAll:
        return field.selectAll();
    }
}

} // namespace quillmark
