// The edit menu's commands in a text field of one line.
#pragma once

#include "core/Commands.h"

class QLineEdit;

namespace quillmark {

bool canEdit(const QLineEdit& field, EditAction action);
void edit(QLineEdit& field, EditAction action); ///< nothing where it cannot

} // namespace quillmark
