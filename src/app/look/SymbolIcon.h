// A symbol as an icon for the toolkit's own controls. Takes the colour of the appearance at each drawing.
#pragma once

#include <QIcon>

#include <string>

namespace quillmark {

QIcon symbolIcon(std::string symbol);

} // namespace quillmark
