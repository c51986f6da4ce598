// Which font the editor's settings mean.
#pragma once

#include "base/Scheduler.h"

#include <QFont>
#include <QString>

#include <string_view>

namespace quillmark {

bool isFontInstalled(std::string_view name); ///< a family of exactly this name

/// The named font, or the desktop's monospaced one when the name is empty or not installed, `size`
/// device-independent pixels high.
QFont editorFont(std::string_view name, double size);

/// The family of the desktop's font of coloured emoji; empty when there is none. Looked up once.
const QString& emojiFamily();

QFont withPixelSize(QFont font, double size); ///< fractions included

/// Reads the list of installed fonts in the background, where it costs no time at start: the first text finds
/// it ready. May be called before there is a QApplication.
void readFontList(Scheduler& scheduler);

} // namespace quillmark
