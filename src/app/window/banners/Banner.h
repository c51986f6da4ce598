// What the banners above the editor have in common: one line of secondary text behind a symbol.
#pragma once

#include "editor/Theme.h"

#include <string_view>

class QWidget;

namespace quillmark {

class TextLabel;

/// Lays `banner` out as symbol and text; more may be added to its layout. The symbol is painted by
/// paintBanner.
TextLabel* layOutBanner(QWidget& banner);

/// Ground, symbol and the line that divides the banner from what is below.
void paintBanner(QWidget& banner, ThemeColor ground, std::string_view symbol);

} // namespace quillmark
